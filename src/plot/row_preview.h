#pragma once
// The preview of one row of a review list: the row's sheet on its paper, through the host's plot
// preview, with the settings the run would plot it with.
#include <cstddef>
#include <string_view>

#include "plot/generic_review.h"
#include "plot/paper_review.h"
#include "plot/title_review.h"

namespace tv::plot {

inline constexpr std::string_view kPreviewCaption = "Tarvex打印预览";
inline constexpr std::string_view kPreviewTooLarge =
    "纸张尺寸过大，已超过 5080 mm (即200英寸)。\n\n请检查是否打印比例有误。\n\n打印预览退出 !";

// Previews row `row` (from 0), then the rows the preview moved to. False when the row doesn't
// exist, its paper is above the ceiling (said in a message) or the host showed nothing.
bool PreviewRow(Dlg_BPlot1& form, std::size_t row);
bool PreviewRow(Dlg_BPlot2& form, std::size_t row);
bool PreviewRow(Dlg_BPlot3& form, std::size_t row);

}  // namespace tv::plot
