#pragma once
// The edits of a review list's rows: file names, papers, scales, copies and deleted rows. Each
// takes the rows it names and the typed value, or opens its form when nothing was typed; a value
// that is refused says why and leaves every row as it was. True when the rows changed.
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "paper/paper.h"
#include "plot/paper_choice.h"
#include "plot/review_list.h"

namespace tv::plot {

class RowEdits {
 public:
  explicit RowEdits(ListRows& rows) : rows_(rows) {}

  bool Rename(const std::vector<std::size_t>& rows, const std::string& typed);
  bool UnifyPaper(const std::vector<std::size_t>& rows, const std::string& typed);
  bool UnifyScale(const std::vector<std::size_t>& rows, const std::string& typed);
  bool UnifyCopies(const std::vector<std::size_t>& rows, const std::string& typed);
  bool Delete(const std::vector<std::size_t>& rows);

 private:
  // The custom paper form: the typed sides checked, or both asked; nullopt when cancelled or refused.
  std::optional<paper::MyPaper> NewPaper(std::optional<PaperRequest> typed);

  ListRows& rows_;
};

// A whole number as typed, a leading "+" allowed; nullopt for anything else.
std::optional<std::int32_t> WholeOfText(std::string_view text);

}  // namespace tv::plot
