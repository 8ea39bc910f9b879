// The title-block file batch from its review list to files: the checks of the OK, the private
// command that plots, the stand-by pass, and the command that shows the list again.
#include <array>
#include <cstdio>
#include <string>
#include <vector>

#include "host/editor.h"
#include "paper/scale_fitting.h"
#include "plot/output_paths.h"
#include "plot/plot_job.h"
#include "plot/review_list.h"
#include "plot/run_checks.h"
#include "plot/plotter_lock.h"
#include "plot/pdf_merge.h"
#include "plot/sheet_loop.h"
#include "plot/stored_choices.h"
#include "plot/title_review.h"
#include "recognition/sheet_geometry.h"
#include "settings/config.h"
#include "signing/stamp_choice.h"
#include "signing/stamp_placement.h"
#include "titleblock/title_sheets.h"

namespace tv::plot {

namespace {

std::string EmptyNameMessage(std::size_t row) {
  char text[96];
  std::snprintf(text, sizeof text, "第 %d 个文件的文件名为空，退出 !", static_cast<int>(row + 1));
  return text;
}

SheetLoop TitleLoop(Dlg_BPlot2& form) {
  SheetLoop loop;
  loop.setting = form.setting;
  loop.cancelRequested = &form.cancel_requested;
  loop.finish = [&form] { FinishTitleBatch(form); };
  loop.standbyCommand = "Plot_BaseFun2_Standby\n";
  loop.merge = MergeTitlePdfs;
  const std::vector<std::string> names = TitleFileNames(form);
  for (std::size_t i = 0; i < form.rows.size(); ++i) {
    const titleblock::Plot_Drawing2& s = *form.rows[i].sheet;
    loop.rows.push_back({s.space_id, form.rows[i].paperName, s.portrait, {s.min_x, s.min_y}, {s.max_x, s.max_y}, s.scale,
                         names[i]});
  }
  return loop;
}

// The stamps of a pass: put on before each sheet, all taken away when the pass ends however it ends.
void StampRows(SheetLoop& loop, Dlg_BPlot2& form, signing::StampRun& stamps) {
  loop.beforePlot = [&form, &stamps](std::size_t i) {
    if (i >= form.rows.size()) return;
    const titleblock::Plot_Drawing2& s = *form.rows[i].sheet;
    stamps.PutOn(s.stamp_point, s.scale, s.stamp_rotation);
  };
}

// Which of the four stamp positions any of the rows has.
std::array<bool, signing::kStampKindCount> StampPositions(const Dlg_BPlot2& form) {
  std::array<bool, signing::kStampKindCount> any{};
  for (const BPlot2Row& row : form.rows)
    for (std::size_t k = 0; k < any.size(); ++k)
      if (!titleblock::IsNoStampPoint(row.sheet->stamp_point[k])) any[k] = true;
  return any;
}

}  // namespace

bool PlotTitleSheets(std::string folderOut, std::int32_t count) {
  Dlg_BPlot2* form = TitleReview();
  if (!form) return false;
  SheetLoop loop = TitleLoop(*form);
  signing::StampRun stamps(loop.setting);
  StampRows(loop, *form, stamps);
  if (count >= 0 && static_cast<std::size_t>(count) < loop.rows.size()) loop.rows.resize(static_cast<std::size_t>(count));
  const bool done = RunSheetLoop(loop, std::move(folderOut));
  if (Dlg_BPlot2* still = TitleReview()) still->setting.custom_path = loop.setting.custom_path;
  return done;
}

void StandbyTitle() {
  Dlg_BPlot2* form = TitleReview();
  if (!form) return;
  SheetLoop loop = TitleLoop(*form);
  signing::StampRun stamps(loop.setting);
  StampRows(loop, *form, stamps);
  RunStandbyLoop(loop);
}

bool RunTitleBatch(Dlg_BPlot2& form) {
  // Every sheet needs a name, unless the pages go into one merged PDF, which numbers them.
  const bool merging = form.setting.format == settings::kFormatPdf && settings::GlobalConfig().merge_pdf != 0;
  for (std::size_t i = 0; i < form.rows.size() && !merging; ++i) {
    if (!IsEmptyFileName(form.rows[i].sheet->file_name)) continue;
    host::CurrentEditor().messageBox(EmptyNameMessage(i), kPlotCaption, host::MessageButtons::Ok);
    return false;
  }
  std::vector<std::string> papers;
  for (const BPlot2Row& row : form.rows) papers.push_back(row.paperName);
  if (!paper::CheckPaperCeiling(papers, form.job.paperList, form.setting.format)) return false;
  if (!SignatureCheckPasses(form.setting)) return false;
  bool stampsOff = false;
  if (!StampCheckPasses(form.setting, stampsOff)) return false;
  if (!stampsOff && form.setting.plot_stamps != 0 && signing::FormatTakesStamps(form.setting.format) &&
      !signing::ChooseStamps(StampPositions(form), form.setting))
    return false;
  if (!StartFileRun(form.setting, form.styleIndex, form.job.paperList, "Plot_Temp2\n")) return false;
  // The stored choice stays; this run goes without stamps.
  if (stampsOff) form.setting.plot_stamps = 0;

  Job().ActiveTitleSheetJob = &form;
  StoreChoices(form);
  for (const auto& sheet : form.job.sheets) recognition::EraseMarker(sheet->rec_id);
  form.plot_started = true;
  return true;
}

void FinishTitleBatch(Dlg_BPlot2& form) {
  if (!form.plot_started) return;
  form.plot_started = false;
  EndFileRun();
  Job().ActiveTitleSheetJob = nullptr;
  DestroyTitleReview();
}

void Plot_Temp2() {
  Dlg_BPlot2* form = TitleReview();
  if (!form || !form->plot_started) return;  // nothing waits to be plotted
  const auto count = static_cast<std::int32_t>(form->rows.size());
  RunPrivateCommand([count] { return PlotTitleSheets({}, count); }, "TV_BatchPlot_4\n\x03\x03");
}

void TitlePlotCommand() {
  EnterPlotCommand();
  ShowBatchList(RecogniseTitleBatch(), &WorkTitleList, &DestroyTitleReview);
}

}  // namespace tv::plot
