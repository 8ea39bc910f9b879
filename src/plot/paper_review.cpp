#include "plot/paper_review.h"

#include <algorithm>
#include <cmath>

#include "host/command_prologue.h"
#include "host/wrappers.h"
#include "paper/layout_plot_setting.h"
#include "paper/scale_fitting.h"
#include "plot/generic_review.h"
#include "plot/review_forms.h"
#include "plot/stored_choices.h"
#include "recognition/sheet_geometry.h"
#include "recognition/sheet_order.h"
#include "settings/config.h"
#include "titleblock/file_naming.h"

namespace tv::plot {

namespace {

std::unique_ptr<Dlg_BPlot3>& Slot() {
  static std::unique_ptr<Dlg_BPlot3> form;
  return form;
}

}  // namespace

Dlg_BPlot3* PaperReview() { return Slot().get(); }

Dlg_BPlot3& NewPaperReview() {
  DestroyReviewForms();
  Slot() = std::make_unique<Dlg_BPlot3>();
  Slot()->setting = settings::CurrentPlotSetting();
  return *Slot();
}

void DestroyPaperReview() { Slot().reset(); }

Dlg_BPlot3* RecognisePaperBatch(bool askScale, std::optional<double> scale) {
  host::ReadLayerStates();
  Dlg_BPlot3& form = NewPaperReview();
  const std::optional<double> found = RecogniseSheets(form.job, askScale, scale);
  if (!found) {
    DestroyPaperReview();
    return nullptr;
  }
  form.scale = *found;
  const std::int64_t tick = host::StageClock();
  paper::LayoutPlotSetting::ListDevices(form.devices);
  if (!form.devices.empty()) {
    form.device = form.devices.front();
    form.media = host::DeviceMedia(form.device);
  }
  form.openFolder = settings::GlobalConfig().open_folder_after != 0;
  FillPaperList(form, true);
  ApplyStoredChoices(form);
  form.stageTick = host::StageTimer(tick, "更新对话框");
  return &form;
}

void FillPaperList(Dlg_BPlot3& form, bool reorder) {
  if (reorder) recognition::OrderSheets(form.job, form.setting.sort_style);
  paper::RebuildPapers(form.job, form.scale, true, true);
  form.rows.clear();
  form.rows.reserve(form.job.keptSheets.size());
  for (std::size_t i = 0; i < form.job.keptSheets.size(); ++i) {
    recognition::Plot_Drawing1* sheet = form.job.keptSheets[i];
    recognition::SetMarker(*sheet, static_cast<std::int32_t>(i + 1), -1);
    BPlot3Row row;
    row.sheet = sheet;
    row.sizeText = SheetSizeText(sheet->sizeX, sheet->sizeY);
    if (paper::MyPaper p; paper::PaperOfSheet(*sheet, p, form.scale, true)) {
      paper::ApplyPaperToSheet(*sheet, p);
      row.paper = p;
    }
    // Jobs are named as the file batch names its files.
    titleblock::ExpandGenericName(form.setting, *sheet, form.job.paperList, static_cast<std::int32_t>(i));
    MatchRowMedium(form, row);
    form.rows.push_back(std::move(row));
  }
}

bool ChoosePaperDevice(Dlg_BPlot3& form, const std::string& device) {
  if (std::find(form.devices.begin(), form.devices.end(), device) == form.devices.end()) return false;
  if (device == form.device) return true;  // the media chosen stay
  form.device = device;
  form.media = host::DeviceMedia(device);
  for (BPlot3Row& row : form.rows) MatchRowMedium(form, row);
  return true;
}

void SetRowMedium(Dlg_BPlot3&, BPlot3Row& row, const host::DeviceMedium& medium) {
  row.sheet->paperName = medium.canonical;
  row.onDevice = true;
  row.paperText = medium.locale;
  row.note.clear();
}

const host::DeviceMedium* MediumOfSize(const std::vector<host::DeviceMedium>& media, double a, double b) {
  const auto near = [](double x, double y) { return std::fabs(x - y) <= 1.0; };
  for (const host::DeviceMedium& m : media)
    if ((near(m.widthMm, a) && near(m.heightMm, b)) || (near(m.widthMm, b) && near(m.heightMm, a))) return &m;
  return nullptr;
}

void MatchRowMedium(Dlg_BPlot3& form, BPlot3Row& row) {
  row.onDevice = false;
  row.paperText.clear();
  if (!row.paper) {
    row.note = "纸张无法确定";
    return;
  }
  const double l = row.paper->length, w = row.paper->width;
  if (const host::DeviceMedium* m = MediumOfSize(form.media, l, w)) return SetRowMedium(form, row, *m);
  const std::string size = std::to_string(row.paper->length) + "x" + std::to_string(row.paper->width);
  // The sheet is fitted to its medium, so a size the printer lacks goes on the smallest medium
  // that holds it whole, or shrunk onto the largest; the note says so.
  const host::DeviceMedium* best = nullptr;
  const auto area = [](const host::DeviceMedium& m) { return m.widthMm * m.heightMm; };
  const auto holds = [&](const host::DeviceMedium& m) {
    const double big = std::max(m.widthMm, m.heightMm), small = std::min(m.widthMm, m.heightMm);
    return big + 1.0 >= std::max(l, w) && small + 1.0 >= std::min(l, w);
  };
  for (const host::DeviceMedium& m : form.media)
    if (holds(m) && (!best || area(m) < area(*best))) best = &m;
  for (const host::DeviceMedium& m : form.media)
    if (!best || (!holds(*best) && area(m) > area(*best))) best = &m;
  if (best) {
    SetRowMedium(form, row, *best);
    row.note = "打印机“" + form.device + "”没有 " + size + " 的纸张，" + (holds(*best) ? "放大" : "缩小") + "打印到 " +
               best->locale;
    return;
  }
  row.paperText = size;
  row.note = form.device.empty() ? "没有可用的打印机" : "打印机“" + form.device + "”没有纸张";
}

std::vector<std::string> BPlot3Columns() {
  return {" 序 号", " 预 览 ", " 打印份数 ", " 删 除 ", " 纸 张 ", " 图面尺寸 ", " 备 注 "};
}

std::vector<std::vector<std::string>> BPlot3Cells(const Dlg_BPlot3& form) {
  std::vector<std::vector<std::string>> cells;
  cells.reserve(form.rows.size());
  for (std::size_t i = 0; i < form.rows.size(); ++i) {
    const BPlot3Row& row = form.rows[i];
    cells.push_back({RowNumberCell(i), "预览", std::to_string(row.sheet->copies), "删除", row.paperText, row.sizeText, row.note});
  }
  return cells;
}

}  // namespace tv::plot
