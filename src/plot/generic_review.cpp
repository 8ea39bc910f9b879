#include "plot/generic_review.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>

#include "host/command_prologue.h"
#include "host/wrappers.h"
#include "paper/scale_fitting.h"
#include "plot/review_forms.h"
#include "plot/stored_choices.h"
#include "recognition/sheet_geometry.h"
#include "recognition/sheet_order.h"
#include "recognition/sheet_traversal.h"
#include "settings/config.h"
#include "titleblock/file_naming.h"

namespace tv::plot {

namespace {

std::unique_ptr<Dlg_BPlot1>& Slot() {
  static std::unique_ptr<Dlg_BPlot1> form;
  return form;
}

std::string Format(const char* format, double a, double b) {
  const int length = std::snprintf(nullptr, 0, format, a, b);
  std::string text(static_cast<std::size_t>(std::max(length, 0)), '\0');
  std::snprintf(text.data(), text.size() + 1, format, a, b);
  return text;
}

}  // namespace

Dlg_BPlot1* GenericReview() { return Slot().get(); }

Dlg_BPlot1& NewGenericReview() {
  DestroyReviewForms();
  Slot() = std::make_unique<Dlg_BPlot1>();
  Slot()->setting = settings::CurrentPlotSetting();
  return *Slot();
}

void DestroyGenericReview() { Slot().reset(); }

std::string SheetSizeText(double sizeX, double sizeY) {
  const double s = std::min(sizeX, sizeY);
  if (s >= 10.0) {
    // Whole units; a size past any integer (1e+308, inf) is shown as the number it is.
    const auto whole = [](double v) {
      char text[32];
      if (v < 1e15) std::snprintf(text, sizeof text, "%.0f", std::floor(v + 0.5));
      else std::snprintf(text, sizeof text, "%g", v);
      return std::string(text);
    };
    return whole(sizeX) + "x" + whole(sizeY);
  }
  if (s >= 1.0) return Format("%.1fx%.1f", sizeX, sizeY);
  if (s >= 0.1) return Format("%.2fx%.2f", sizeX, sizeY);
  if (s >= 0.01) return Format("%.3fx%.3f", sizeX, sizeY);
  return Format("%.4fx%.4f", sizeX, sizeY);
}

std::optional<double> RecogniseSheets(recognition::SheetJob& job, bool askScale, std::optional<double> scale) {
  if (!recognition::FindSheets(job)) return std::nullopt;
  SetPlotStamp();
  std::int64_t tick = host::StageClock();
  recognition::FilterSheets(job);
  tick = host::StageTimer(tick, "过滤图形");
  const double found = scale ? *scale : paper::ScaleOfSheets(job.keptSheets, askScale);
  tick = host::StageTimer(tick, "判断比例");
  // The form took the drawing's settings and the defaults when it was made.
  host::StageTimer(tick, "更新参数");
  return found;
}

Dlg_BPlot1* RecogniseGenericBatch(bool askScale, std::optional<double> scale) {
  host::ReadLayerStates();
  Dlg_BPlot1& form = NewGenericReview();
  const std::optional<double> found = RecogniseSheets(form.job, askScale, scale);
  if (!found) {
    DestroyGenericReview();
    return nullptr;
  }
  form.scale = *found;
  const std::int64_t tick = host::StageClock();
  FillList(form, true);
  ApplyStoredChoices(form);
  form.stageTick = host::StageTimer(tick, "更新对话框");
  return &form;
}

void FillList(Dlg_BPlot1& form, bool reorder) {
  if (reorder) recognition::OrderSheets(form.job, form.setting.sort_style);
  form.rows.clear();
  form.rows.reserve(form.job.keptSheets.size());
  for (std::size_t i = 0; i < form.job.keptSheets.size(); ++i) {
    recognition::Plot_Drawing1* sheet = form.job.keptSheets[i];
    recognition::SetMarker(*sheet, static_cast<std::int32_t>(i + 1), -1);
    BPlot1Row row;
    row.sheet = sheet;
    row.sizeText = SheetSizeText(sheet->sizeX, sheet->sizeY);
    form.rows.push_back(std::move(row));
  }
  RecomputeAll(form, form.scale);
}

void RecomputeAll(Dlg_BPlot1& form, double scale) {
  form.scale = scale;
  paper::RebuildPapers(form.job, scale, true, true);
  for (BPlot1Row& row : form.rows) {
    paper::MyPaper p;
    row.paper.reset();
    row.paperText.clear();
    row.note.clear();
    row.warn = false;
    if (paper::PaperOfSheet(*row.sheet, p, scale, true)) {
      paper::ApplyPaperToSheet(*row.sheet, p);
      row.paper = p;
      row.paperText = paper::PaperDisplayName(p, true, row.sheet->rotated);
      const paper::PaperNote note = paper::PaperSizeNote(p, form.setting.format);
      row.note = note.text;
      row.warn = note.warn;
    }
    row.scaleText = paper::ScaleText(row.sheet->scale);
  }
  // Names may hold the paper, so they follow it.
  for (std::size_t i = 0; i < form.rows.size(); ++i)
    titleblock::ExpandGenericName(form.setting, *form.rows[i].sheet, form.job.paperList, static_cast<std::int32_t>(i));
}

std::vector<std::string> BPlot1Columns() { return {"序 号", "纸张尺寸", "打印比例", "图面尺寸", "备 注"}; }

std::vector<std::vector<std::string>> BPlot1Cells(const Dlg_BPlot1& form) {
  std::vector<std::vector<std::string>> cells;
  cells.reserve(form.rows.size());
  for (std::size_t i = 0; i < form.rows.size(); ++i) {
    const BPlot1Row& row = form.rows[i];
    cells.push_back({RowNumberCell(i), row.paperText, row.scaleText, row.sizeText, row.note});
  }
  return cells;
}

}  // namespace tv::plot
