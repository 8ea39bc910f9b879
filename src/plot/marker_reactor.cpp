#include "plot/marker_reactor.h"

#include <algorithm>

#include "plot/generic_review.h"
#include "plot/title_review.h"
#include "recognition/sheet_geometry.h"
#include "titleblock/file_naming.h"

namespace tv::plot {

namespace {

bool RemoveGenericRow(Dlg_BPlot1& form, ObjectId markerId) {
  const auto it = std::find_if(form.rows.begin(), form.rows.end(),
                               [&](const BPlot1Row& row) { return row.sheet->markerId == markerId; });
  if (it == form.rows.end()) return false;
  recognition::Plot_Drawing1* sheet = it->sheet;
  sheet->markerId = ObjectId{};  // erased already: nothing left to take out
  const auto index = static_cast<std::size_t>(it - form.rows.begin());
  form.rows.erase(it);
  std::erase(form.job.keptSheets, sheet);
  // Gone for good: a later filter of the job must not bring it back.
  std::erase_if(form.job.allSheets, [sheet](const auto& owned) { return owned.get() == sheet; });
  // The rows below move up: their markers and serial names follow their new numbers.
  for (std::size_t i = index; i < form.rows.size(); ++i) {
    recognition::SetMarker(*form.rows[i].sheet, static_cast<std::int32_t>(i + 1), -1);
    titleblock::ExpandGenericName(form.setting, *form.rows[i].sheet, form.job.paperList, static_cast<std::int32_t>(i));
  }
  return true;
}

bool RemoveTitleRow(Dlg_BPlot2& form, ObjectId markerId) {
  const auto it = std::find_if(form.rows.begin(), form.rows.end(),
                               [&](const BPlot2Row& row) { return row.sheet->rec_id == markerId; });
  if (it == form.rows.end()) return false;
  titleblock::Plot_Drawing2* sheet = it->sheet;
  sheet->rec_id = ObjectId{};
  const auto index = static_cast<std::size_t>(it - form.rows.begin());
  form.rows.erase(it);
  std::erase_if(form.job.sheets, [sheet](const auto& owned) { return owned.get() == sheet; });
  for (std::size_t i = index; i < form.rows.size(); ++i) {
    titleblock::Plot_Drawing2& s = *form.rows[i].sheet;
    s.number = static_cast<std::int32_t>(i + 1);
    recognition::SetMarker(s.rec_id, s.number, -1);
  }
  return true;
}

}  // namespace

bool RemoveRowOfMarker(ObjectId markerId) {
  if (markerId.isNull()) return false;
  if (Dlg_BPlot1* form = GenericReview(); form && !form->plot_started && RemoveGenericRow(*form, markerId)) return true;
  if (Dlg_BPlot2* form = TitleReview(); form && !form->plot_started && RemoveTitleRow(*form, markerId)) return true;
  return false;
}

}  // namespace tv::plot
