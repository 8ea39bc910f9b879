#pragma once
// The paper statistics of a review list as its menu runs them: the rows as they stand, counted by
// paper and converted into one base size, saved where the list's files would go.
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "reports/paper_statistics.h"

namespace tv::plot {
struct Dlg_BPlot1;
struct Dlg_BPlot2;
}  // namespace tv::plot

namespace tv::reports {

// The five entries of the menu, "折合成A4" to "折合成A0", in the order of `BaseSize`.
const std::vector<std::string>& PaperStatisticsEntries();
// The base named by "A3", "折合成A3" or the entry's number 1 to 5; nullopt for anything else.
std::optional<BaseSize> BaseSizeOfText(std::string_view text);

// False when nothing was written; the user has been told why ("无纸张可统计 !" for no rows).
bool MakePaperStatisticsFromList(const plot::Dlg_BPlot1& form, BaseSize base);
bool MakePaperStatisticsFromList(const plot::Dlg_BPlot2& form, BaseSize base);

}  // namespace tv::reports
