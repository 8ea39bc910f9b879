#pragma once
// The per-sheet records PAPER_INFOR and SC_INFOR as items, for a drawing other than the working
// one (a sheet file being made); see scale_fitting.h for the records of the working drawing.
#include <string_view>
#include <vector>

#include "host/xrecords.h"
#include "paper/scale_fitting.h"

namespace tv::paper {

inline constexpr std::string_view kPaperInforKey = "PAPER_INFOR";
inline constexpr std::string_view kScInforKey = "SC_INFOR";

// The records holding just these rows.
std::vector<host::XrecordItem> PaperInforItems(const std::vector<InfoRow>& rows);
std::vector<host::XrecordItem> ScInforItems(const std::vector<InfoRow>& rows);

}  // namespace tv::paper
