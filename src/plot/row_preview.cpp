#include "plot/row_preview.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "host/doc_state.h"
#include "host/editor.h"
#include "paper/plotter_writer.h"
#include "paper/scale_fitting.h"
#include "plot/paper_job.h"
#include "plot/plot_job.h"
#include "plot/sheet_loop.h"
#include "settings/folders.h"
#include "signing/sign_globals.h"

namespace tv::plot {

namespace {

constexpr std::string_view kPreviewBackground = "Plot preview background";

bool AboveCeiling(const std::optional<paper::MyPaper>& p) {
  return p && (p->length > paper::kLargestSide || p->width > paper::kLargestSide);
}

bool HasBackground(std::int32_t format) {
  return format == settings::kFormatDwf || format == settings::kFormatJpg || format == settings::kFormatPng;
}

// Steps shared by both lists once the row is known: its layout set as the run would set it, the
// plot flags, the preview background of image formats, the preview, and everything put back.
// `kind` names the list for the preview's keys; `rows` is its length.
bool PreviewSheet(const std::function<void()>& prepare, const settings::PlotSettingRec& setting, std::int32_t kind,
                  std::size_t row, std::size_t rows) {
  host::Editor& editor = host::CurrentEditor();
  prepare();
  JobState& job = Job();
  job.PlotSignaturesVisible = setting.plot_signatures != 0;
  job.InPlot = true;
  // The preview shows the paper as the run will print it.
  const signing::PlotSignScope signs(setting.plot_signatures != 0);
  std::optional<std::string> keptBackground;
  const bool background = HasBackground(setting.format);
  if (background) {
    keptBackground = editor.getEnv(kPreviewBackground);
    paper::PlotterOptions colour;
    colour.red = setting.back_red;
    colour.green = setting.back_green;
    colour.blue = setting.back_blue;
    editor.setEnv(kPreviewBackground, std::to_string(paper::BgrOf(colour)));
  }
  host::reviewKind = kind;
  host::PreviewIndex = static_cast<std::int32_t>(row);
  const bool shown = editor.plotPreview(settings::TempFolder(), static_cast<int>(row), rows > 1);
  host::reviewKind = 0;
  if (background) editor.setEnv(kPreviewBackground, keptBackground.value_or(std::string()));
  job.InPlot = false;
  job.PlotSignaturesVisible = true;
  return shown;
}

// The preview again on the row its keys moved to, until it ends on the row it showed.
bool PreviewRows(std::size_t row, std::size_t rows, const std::function<bool(std::size_t)>& one) {
  bool shown = false;
  while (row < rows) {
    shown = one(row);
    const std::int32_t next = host::PreviewIndex;
    host::PreviewIndex = -1;
    if (!shown || next < 0 || static_cast<std::size_t>(next) == row) break;
    row = static_cast<std::size_t>(next);
  }
  return shown;
}

void TooLarge() {
  host::CurrentEditor().messageBox(kPreviewTooLarge, kPreviewCaption, host::MessageButtons::Ok);
}

}  // namespace

bool PreviewRow(Dlg_BPlot1& form, std::size_t row) {
  return PreviewRows(row, form.rows.size(), [&form](std::size_t i) {
    const BPlot1Row& r = form.rows[i];
    // Only a paper of the list is checked; an unknown one previews as it is.
    if (AboveCeiling(r.paper)) {
      TooLarge();
      return false;
    }
    const recognition::Plot_Drawing1& s = *r.sheet;
    const SheetToPlot sheet{s.spaceId, s.paperName, s.rotated, {s.minX, s.minY}, {s.maxX, s.maxY}, s.scale, s.fileName};
    return PreviewSheet([&] { PrepareSheet(sheet, form.setting, form.styleIndex); }, form.setting, 1, i, form.rows.size());
  });
}

bool PreviewRow(Dlg_BPlot2& form, std::size_t row) {
  return PreviewRows(row, form.rows.size(), [&form](std::size_t i) {
    const BPlot2Row& r = form.rows[i];
    if (AboveCeiling(r.paper)) {
      TooLarge();
      return false;
    }
    const titleblock::Plot_Drawing2& s = *r.sheet;
    const SheetToPlot sheet{s.space_id, r.paperName, s.portrait, {s.min_x, s.min_y}, {s.max_x, s.max_y}, s.scale,
                            s.file_name};
    return PreviewSheet([&] { PrepareSheet(sheet, form.setting, form.styleIndex); }, form.setting, 2, i, form.rows.size());
  });
}

bool PreviewRow(Dlg_BPlot3& form, std::size_t row) {
  return PreviewRows(row, form.rows.size(), [&form](std::size_t i) {
    // The medium is the printer's own: no ceiling of the private papers applies.
    return PreviewSheet([&] { PreparePaperSheet(form, *form.rows[i].sheet); }, form.setting, 3, i, form.rows.size());
  });
}

}  // namespace tv::plot
