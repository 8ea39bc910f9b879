#pragma once
// The paper choice of the review lists ("选  择  纸  张" / "统 一 修 改 纸 张"): the standard and
// lengthened A sizes, the custom papers the rows use, and "other", which opens the custom paper
// form. Also what a typed paper ("A2", "A3加长", "594x420") stands for.
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "paper/paper.h"

namespace tv::plot {

inline constexpr std::size_t kFixedPaperChoices = 10;  // A4 … A0, A4加长 … A0加长
inline constexpr std::string_view kOtherPaperChoice = "其它纸张…";

// The unified title when every row of at least two is selected.
std::string UnifyPaperTitle(std::size_t selected, std::size_t rows);

struct PaperChoiceList {
  std::vector<std::string> items;           // the last is "other"
  std::vector<paper::MyPaper> customPapers; // entry kFixedPaperChoices + k
  int preselected = -1;                     // none
};
// `rowPapers` are the rows' internal paper names in row order; `papers` the job's list;
// `clickedPaper` the paper of the row the edit started on.
PaperChoiceList PaperChoices(const std::vector<std::string>& rowPapers, const paper::PaperList& papers,
                             const std::string& clickedPaper);

// A typed paper: a choice of the fixed ten, or two sides in millimetres.
struct PaperRequest {
  int choice = -1;  // 0 to 9 when it names one of the fixed entries
  double sideA = 0.0, sideB = 0.0;
};
std::optional<PaperRequest> ParsePaperText(std::string_view text);

// The paper a request gives a sheet drawn `drawnX` by `drawnY`: a lengthened choice takes the
// sheet's proportion. Normalised, long side first; nullopt when it can't be made.
std::optional<paper::MyPaper> PaperForRequest(const PaperRequest& request, double drawnX, double drawnY);

}  // namespace tv::plot
