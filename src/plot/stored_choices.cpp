#include "plot/stored_choices.h"

#include <algorithm>
#include <memory>
#include <vector>

#include "paper/scale_fitting.h"
#include "titleblock/file_naming.h"

namespace tv::plot {

namespace {

// A title-block row as the stored records see a sheet: its rectangle, paper and scale.
std::unique_ptr<recognition::Plot_Drawing1> AsStoredSheet(const BPlot2Row& row) {
  const titleblock::Plot_Drawing2& s = *row.sheet;
  auto sheet = std::make_unique<recognition::Plot_Drawing1>();
  sheet->minX = s.min_x;
  sheet->minY = s.min_y;
  sheet->maxX = s.max_x;
  sheet->maxY = s.max_y;
  sheet->sizeX = s.width;
  sheet->sizeY = s.height;
  sheet->rotated = s.portrait;
  sheet->unitFactor = 1.0;
  sheet->scale = s.scale;
  sheet->paperName = row.paperName;
  return sheet;
}

template <class Row>
void PaintPaperCells(Row& row, const paper::MyPaper& p, bool rotated, double scale, std::int32_t format) {
  row.paper = p;
  row.paperText = paper::PaperDisplayName(p, true, rotated);
  row.scaleText = paper::ScaleText(scale);
  const paper::PaperNote note = paper::PaperSizeNote(p, format);
  row.note = note.text;
  row.warn = note.warn;
}

}  // namespace

int ApplyStoredChoices(Dlg_BPlot1& form) {
  std::vector<paper::InfoRow> info;
  if (!paper::ReadScInfor(info) || info.empty()) return 0;
  int changed = 0;
  bool added = false;
  for (std::size_t i = 0; i < form.rows.size(); ++i) {
    BPlot1Row& row = form.rows[i];
    if (paper::ApplyStoredChoices({row.sheet}, info, form.job.paperList, added) == 0) continue;
    ++changed;
    if (const paper::MyPaper* p = paper::FindPaperByName(form.job.paperList, row.sheet->paperName))
      PaintPaperCells(row, *p, row.sheet->rotated, row.sheet->scale, form.setting.format);
    // Names may hold the paper.
    titleblock::ExpandGenericName(form.setting, *row.sheet, form.job.paperList, static_cast<std::int32_t>(i));
  }
  if (added) paper::RefreshPlotterFiles(form.job.paperList);
  return changed;
}

int ApplyStoredChoices(Dlg_BPlot2& form) {
  std::vector<paper::InfoRow> info;
  if (!paper::ReadScInfor(info) || info.empty()) return 0;
  int changed = 0;
  bool added = false;
  for (BPlot2Row& row : form.rows) {
    const auto stored = AsStoredSheet(row);
    if (paper::ApplyStoredChoices({stored.get()}, info, form.job.paperList, added) == 0) continue;
    const paper::MyPaper* p = paper::FindPaperByName(form.job.paperList, stored->paperName);
    if (!p) continue;
    ++changed;
    row.sheet->scale = stored->scale;
    row.paperName = stored->paperName;
    PaintPaperCells(row, *p, row.sheet->portrait, row.sheet->scale, form.setting.format);
    titleblock::ExpandNameRule(*row.sheet);
  }
  if (added) paper::RefreshPlotterFiles(form.job.paperList);
  return changed;
}

int ApplyStoredChoices(Dlg_BPlot3& form) {
  std::vector<paper::InfoRow> info;
  if (!paper::ReadPaperInfor(info) || info.empty()) return 0;
  int changed = 0;
  for (BPlot3Row& row : form.rows) {
    const int at = paper::FindInfoRow(info, *row.sheet);
    if (at < 0) continue;
    const paper::InfoRow& stored = info[static_cast<std::size_t>(at)];
    ++changed;
    row.sheet->copies = std::max<std::int32_t>(stored.copies, 1);
    for (const host::DeviceMedium& m : form.media)
      if (m.canonical == stored.paperName) SetRowMedium(form, row, m);
  }
  return changed;
}

bool StoreChoices(const Dlg_BPlot2& form) {
  std::vector<std::unique_ptr<recognition::Plot_Drawing1>> owned;
  std::vector<recognition::Plot_Drawing1*> sheets;
  for (const BPlot2Row& row : form.rows) {
    owned.push_back(AsStoredSheet(row));
    sheets.push_back(owned.back().get());
  }
  return paper::WriteScInfor(sheets);
}

}  // namespace tv::plot
