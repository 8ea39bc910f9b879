#include "plot/plot_job.h"

#include <algorithm>
#include <filesystem>
#include <optional>

#include "host/command_prologue.h"
#include "host/editor.h"
#include "host/run_files.h"
#include "host/wrappers.h"
#include "paper/ctb_writer.h"
#include "paper/layout_plot_setting.h"
#include "paper/plotter_writer.h"
#include "paper/saved_plotter.h"
#include "paper/scale_fitting.h"
#include "plot/dwf_merge.h"
#include "plot/output_paths.h"
#include "plot/pdf_merge.h"
#include "plot/pdf_rotation.h"
#include "plot/plotter_lock.h"
#include "plot/review_forms.h"
#include "plot/review_list.h"
#include "plot/run_checks.h"
#include "plot/sheet_loop.h"
#include "recognition/sheet_geometry.h"
#include "recognition/sheet_traversal.h"
#include "settings/config.h"
#include "settings/folders.h"
#include "signing/sign_globals.h"

namespace tv::plot {

namespace {

// Hosts before this version may return from a model-space plot before the file is there.
constexpr double kSynchronousPlotVersion = 20.1;

settings::PlotSettingRec& ActiveSetting() {
  return Job().ActivePlotSetting ? *Job().ActivePlotSetting : settings::CurrentPlotSetting();
}

void Message(std::string_view text) { host::CurrentEditor().messageBox(text, kPlotCaption, host::MessageButtons::Ok); }

// The plotter files follow the papers of the list: the private device is written again and the
// current layout takes it.
void RefreshPrivatePlotter(const paper::PaperList& papers) {
  HoldPlotterFiles();
  if (!paper::WritePrivatePlotter(papers)) return;
  paper::LayoutPlotSetting layout(Job().ActivePlotSetting);
  layout.SetDevice(paper::PrivatePlotterName(ActiveSetting().format));
}

// The generic form's rows as the sheet loop takes them.
SheetLoop GenericLoop(Dlg_BPlot1& form) {
  SheetLoop loop;
  loop.setting = form.setting;
  loop.cancelRequested = &form.cancel_requested;
  loop.finish = [&form] { FinishBatch(form); };
  loop.standbyCommand = "Plot_BaseFun1_Standby\n";
  loop.merge = MergePdfs;
  for (const recognition::Plot_Drawing1* sheet : form.job.keptSheets)
    loop.rows.push_back({sheet->spaceId, sheet->paperName, sheet->rotated, {sheet->minX, sheet->minY},
                         {sheet->maxX, sheet->maxY}, sheet->scale, sheet->fileName});
  return loop;
}

// The target of a PDF merge, offered in the folder of the path mode under the drawing's name.
// Empty when the user cancelled, or chose a drawing the run reads (which is never written).
std::optional<std::string> AskMergedPdfPath(settings::PlotSettingRec& setting) {
  const std::string folder = OutputFolder(setting.path_mode, setting.format, setting.custom_path);
  std::error_code ec;
  std::filesystem::create_directories(folder, ec);
  const bool dwf = setting.format == settings::kFormatDwf;
  std::optional<std::string> target = host::CurrentEditor().askSavePath(
      dwf ? kMergedDwfTitle : kMergedPdfTitle, folder + "/" + DrawingTitle() + (dwf ? ".dwf" : ".pdf"), dwf ? "dwf" : "pdf");
  if (target && host::IsDrawingFileRead(*target)) {
    Message(OutputIsDrawingMessage(*target, 1));
    return std::nullopt;
  }
  return target;
}

}  // namespace

std::int32_t LastStyleIndex() {
  const std::string& name = settings::GlobalConfig().last_plot_style;
  paper::LayoutPlotSetting layout;
  const auto it = std::find(layout.styleList.begin(), layout.styleList.end(), name);
  return it == layout.styleList.end() ? 0 : static_cast<std::int32_t>(it - layout.styleList.begin());
}

std::optional<double>& FixedListScale() {
  static std::optional<double> scale;
  return scale;
}

JobState& Job() {
  static JobState state;
  return state;
}

std::vector<std::string> PlotAnswers(std::int32_t format, bool inLayout, const std::string& path) {
  std::vector<std::string> a{"-plot", "y", "", "", "", "M", "", "N", "W", "", "", "F", "C", "Y", "", ""};
  if (inLayout) a.insert(a.end(), {"N", "N", "N"});
  else a.emplace_back("A");
  if (format == settings::kFormatPlt || format == settings::kFormatEps) a.emplace_back("Y");
  a.push_back(path);
  a.insert(a.end(), {"N", "Y"});
  return a;
}

std::vector<std::string> PaperAnswers(bool inLayout, bool rotated, const std::string& path) {
  std::vector<std::string> a{"-plot", "y", "", "", "", "", rotated ? "P" : "L", "N", "W", "", "", "F", "C", "Y", "", ""};
  if (inLayout) a.insert(a.end(), {"N", "N", "N"});
  else a.emplace_back("A");
  if (path.empty()) {
    a.emplace_back("N");
  } else {
    a.emplace_back("Y");
    a.push_back(path);
  }
  a.insert(a.end(), {"N", "Y"});
  return a;
}

void EnterPlotCommand() {
  host::Editor& editor = host::CurrentEditor();
  // Sheets are found and plotted in the working coordinates of the current UCS, with the view
  // turned to its plan, so that frames drawn in a turned UCS plot upright.
  recognition::RefreshUcs(true);
  host::SetVar("PDFSHX", std::int32_t{0});
  host::SetVar("EPDFSHX", std::int32_t{0});
  host::SetVar("BACKGROUNDPLOT", std::int32_t{0});
  editor.setEnv("AutomaticPlotLog", "0");
  host::ReadLayerStates();
  paper::EnsurePlotStyleTables();
  paper::LayoutPlotSetting::SavePlotter(paper::GlobalSavedPlotter());
  paper::SetPlotterRefresh(RefreshPrivatePlotter);
  DestroyReviewForms();
  Job() = JobState{};
  settings::LoadDwgPlotSetting(settings::CurrentPlotSetting());
}

bool PlotOne(bool inLayout, const std::string& path, bool plotSignatures, bool rotated) {
  CheckOutputPathLength(path);
  JobState& job = Job();
  job.PlotSignaturesVisible = plotSignatures;
  job.InPlot = true;
  std::optional<signing::PlotSignScope> signs(std::in_place, plotSignatures);
  const std::int32_t format = ActiveSetting().format;
  // An old file stays until the new one replaces it whole, so whether the plot wrote is told by
  // a file fresher than the one that was there.
  const std::optional<FileStamp> before = StampOf(path);
  host::CurrentEditor().command(PlotAnswers(format, inLayout, path));
  bool done = true;
  if (!inLayout && settings::HostVersion() < kSynchronousPlotVersion) done = IsFreshOutput(path, before);
  job.InPlot = false;
  job.PlotSignaturesVisible = true;
  signs.reset();
  if (!done) return false;

  const settings::Config& config = settings::GlobalConfig();
  if (format == settings::kFormatPdf && config.pdf_orientation != 0) {
    const bool turn = (rotated && config.pdf_orientation == 1) || (!rotated && config.pdf_orientation == 2);
    if (turn) RotatePdf(path, config.pdf_rotate_side == 0 ? 90 : 270);
  }
  return true;
}

bool PlotSheets(std::string folderOut, std::int32_t count) {
  Dlg_BPlot1* form = GenericReview();
  if (!form) return false;
  SheetLoop loop = GenericLoop(*form);
  if (count >= 0 && static_cast<std::size_t>(count) < loop.rows.size()) loop.rows.resize(static_cast<std::size_t>(count));
  const bool done = RunSheetLoop(loop, std::move(folderOut));
  // A custom folder that was gone fell back to the drawing's; the form shows that next time.
  if (Dlg_BPlot1* still = GenericReview()) still->setting.custom_path = loop.setting.custom_path;
  return done;
}

void StandbyGeneric() {
  Dlg_BPlot1* form = GenericReview();
  if (!form) return;
  SheetLoop loop = GenericLoop(*form);
  RunStandbyLoop(loop);
}

bool StartFileRun(settings::PlotSettingRec& setting, std::int32_t styleIndex, const paper::PaperList& papers,
                  std::string_view privateCommand) {
  host::Editor& editor = host::CurrentEditor();

  JobState& job = Job();
  job.ActivePlotSetting = &setting;
  job.PlotStyleIndex = styleIndex;
  {
    paper::LayoutPlotSetting layout(&setting);
    settings::GlobalConfig().last_plot_style = layout.StyleNameAt(styleIndex);
  }
  job.MergedPdfPath.clear();
  const bool mergeable = setting.format == settings::kFormatPdf || setting.format == settings::kFormatDwf;
  if (mergeable && settings::GlobalConfig().merge_pdf != 0) {
    std::optional<std::string> target = AskMergedPdfPath(setting);
    if (!target) return false;
    job.MergedPdfPath = std::move(*target);
  }

  editor.sendStringToExecute("\x03\x03");
  editor.sendStringToExecute(privateCommand);
  settings::CurrentPlotSetting() = setting;
  settings::SaveCurrentPlotSetting();
  // The plotter files carry the margin and the background: written with the settings of the run.
  HoldPlotterFiles();
  paper::WritePrivatePlotter(papers);
  return true;
}

bool RunBatch(Dlg_BPlot1& form) {
  if (!paper::CheckPaperSizes(form.job.keptSheets, form.job.paperList, form.setting.format)) return false;
  if (!SignatureCheckPasses(form.setting)) return false;
  if (!StartFileRun(form.setting, form.styleIndex, form.job.paperList, "Plot_Temp1\n")) return false;
  Job().ActiveSheetJob = &form;
  paper::WriteScInfor(form.job.keptSheets);
  for (recognition::Plot_Drawing1* sheet : form.job.keptSheets) recognition::EraseMarker(sheet->markerId);
  form.plot_started = true;
  return true;
}

void EndFileRun() {
  // Putting the user's plotter back removes the private plotter files: never while another run
  // plots with them.
  if (!paper::GlobalSavedPlotter().pc3Folder.empty()) HoldPlotterFiles();
  paper::LayoutPlotSetting::RestorePlotter(paper::GlobalSavedPlotter());
  Job().ActivePlotSetting = nullptr;
  ReleasePlotterFiles();
}

void FinishBatch(Dlg_BPlot1& form) {
  if (!form.plot_started) return;
  form.plot_started = false;
  EndFileRun();
  Job().ActiveSheetJob = nullptr;
  DestroyGenericReview();
}

void RunPrivateCommand(const std::function<bool()>& firstPass, std::string_view again) {
  const bool merging = !Job().MergedPdfPath.empty();
  const bool done = firstPass();
  if (done && !merging && settings::GlobalConfig().open_folder_after != 0)
    host::CurrentEditor().shellOpen(Job().LastFolder);
  host::CurrentEditor().sendStringToExecute(again);
}

void Plot_Temp1() {
  Dlg_BPlot1* form = GenericReview();
  if (!form || !form->plot_started) return;  // nothing waits to be plotted
  const auto count = static_cast<std::int32_t>(form->job.keptSheets.size());
  RunPrivateCommand([count] { return PlotSheets({}, count); }, "TV_BatchPlot_2\n\x03\x03");
}

void GenericPlotCommand() {
  EnterPlotCommand();
  ShowBatchList(RecogniseGenericBatch(true, FixedListScale()), &WorkGenericList, &DestroyGenericReview);
}

}  // namespace tv::plot
