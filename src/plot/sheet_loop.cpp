#include "plot/sheet_loop.h"

#include <filesystem>
#include <system_error>

#include "host/editor.h"
#include "host/notices.h"
#include "host/run_files.h"
#include "host/wrappers.h"
#include "paper/layout_plot_setting.h"
#include "paper/plotter_writer.h"
#include "plot/dwf_merge.h"
#include "plot/interrupt_flag.h"
#include "plot/output_paths.h"
#include "plot/pdf_merge.h"
#include "plot/plot_job.h"
#include "plot/sheet_export.h"

namespace tv::plot {

namespace {

namespace fs = std::filesystem;

void EndRun(SheetLoop& loop, ObjectId home) {
  host::CurrentEditor().progressEnd();
  if (loop.finish) loop.finish();
  host::ActivateLayoutOf(home);
  host::SetVar("FILEDIA", std::int32_t{1});
}

std::string PathOf(const SheetLoop& loop, const std::string& folder, std::size_t row, std::int32_t mergeNumber) {
  if (!Job().MergedPdfPath.empty()) return MergeSheetPath(folder, mergeNumber, loop.setting.format);
  return SheetPath(folder, loop.rows[row].fileName, loop.setting.format);
}

// A merge joins what the loop plotted into the job's target; its numbered files go either way.
void EndMerge(const SheetLoop& loop, const std::string& folder, bool join) {
  if (Job().MergedPdfPath.empty()) return;
  if (join && (loop.merge || loop.setting.format == settings::kFormatDwf)) {
    std::vector<std::string> names;
    names.reserve(loop.rows.size());
    for (const SheetToPlot& row : loop.rows) names.push_back(row.fileName);
    if (loop.setting.format == settings::kFormatDwf) MergeDwfs(folder, names);
    else loop.merge(folder, names);
  }
  EmptyMergeFolder(folder);
}

enum class RowResult { Plotted, Missed, Refused };

RowResult PlotRow(SheetLoop& loop, std::size_t row, const std::string& path, bool forceLayout) {
  // The drawings of the run are read, never written: a name that would land on one is refused.
  if (host::IsDrawingFileRead(path)) {
    host::Notify(OutputIsDrawingMessage(path, row + 1));
    return RowResult::Refused;
  }
  const bool inLayout = PrepareSheet(loop.rows[row], loop.setting, Job().PlotStyleIndex);
  if (loop.beforePlot) loop.beforePlot(row);
  const bool done = PlotOne(forceLayout || inLayout, path, loop.setting.plot_signatures != 0, loop.rows[row].rotated);
  if (loop.afterPlot) loop.afterPlot(row);
  return done ? RowResult::Plotted : RowResult::Missed;
}

}  // namespace

bool PrepareSheet(const SheetToPlot& row, const settings::PlotSettingRec& setting, std::int32_t styleIndex) {
  if (!row.spaceId.isNull()) host::ActivateLayoutOf(row.spaceId);
  const bool inLayout = host::IsPaperSpace();
  paper::LayoutPlotSetting layout(&setting);
  layout.ReadStyleList();
  layout.ReadMediaList();
  layout.SetDevice(paper::PrivatePlotterName(setting.format));
  layout.SetPaper(row.paperName, row.rotated);
  layout.SetPlotStyle(styleIndex);
  layout.SetWindow(row.min, row.max, row.scale);
  layout.SetRotation(row.rotated);
  return inLayout;
}

bool RunSheetLoop(SheetLoop& loop, std::string folderOut) {
  if (loop.setting.format == settings::kFormatDwg) return SplitToDwgFiles(loop, folderOut);
  JobState& job = Job();
  const bool merging = !job.MergedPdfPath.empty();
  if (folderOut.empty())
    folderOut = merging ? TempFolder() : OutputFolder(loop.setting.path_mode, loop.setting.format, loop.setting.custom_path);
  std::error_code ec;
  fs::create_directories(folderOut, ec);  // a folder that can't be made shows when the first file fails
  // The numbered files of a merge go to a folder of this run's own: another run's stay untouched.
  if (merging) {
    if (std::string own = host::MakeRunFolder(folderOut); !own.empty()) folderOut = std::move(own);
    else EmptyMergeFolder(folderOut);  // the working folder itself: its files go, the folder stays
  }
  job.LastFolder = folderOut;

  host::Editor& editor = host::CurrentEditor();
  host::SetVar("FILEDIA", std::int32_t{0});
  const ObjectId home = host::OpenCurrentSpace();
  const PlotRunScope running;
  editor.progressBegin("正在打印", static_cast<int>(loop.rows.size()));

  std::vector<std::int32_t> retry;
  for (std::size_t i = 0; i < loop.rows.size(); ++i) {
    if (loop.cancelRequested && CancelAsked(*loop.cancelRequested)) {
      *loop.cancelRequested = false;
      if (editor.messageBox(kCancelQuestion, kPlotCaption, host::MessageButtons::YesNo) == host::MessageAnswer::Yes) {
        EndRun(loop, home);
        EndMerge(loop, folderOut, false);
        return false;
      }
    }
    editor.progressSet(static_cast<int>(i) + 1);
    if (PlotRow(loop, i, PathOf(loop, folderOut, i, static_cast<std::int32_t>(i) + 1), false) == RowResult::Missed)
      retry.push_back(static_cast<std::int32_t>(i));
  }

  if (!retry.empty()) {
    job.RetryFolder = folderOut;
    job.RetryLayoutId = home;
    job.RetryIndices = std::move(retry);
    editor.sendStringToExecute("\x03\x03");
    editor.sendStringToExecute(loop.standbyCommand);
    host::SetVar("FILEDIA", std::int32_t{1});
    return true;
  }
  EndRun(loop, home);
  EndMerge(loop, folderOut, true);
  return true;
}

void RunStandbyLoop(SheetLoop& loop) {
  JobState& job = Job();
  if (job.RetryIndices.empty()) return;
  host::Editor& editor = host::CurrentEditor();
  host::SetVar("FILEDIA", std::int32_t{0});
  editor.progressBegin("正在打印", static_cast<int>(job.RetryIndices.size()));
  std::int32_t running = 0;
  for (const std::int32_t i : job.RetryIndices) {
    ++running;
    editor.progressSet(running);
    if (i < 0 || static_cast<std::size_t>(i) >= loop.rows.size()) continue;
    // Plotted as from a layout whatever the space, and not looked at: a sheet gets two tries.
    PlotRow(loop, static_cast<std::size_t>(i), PathOf(loop, job.RetryFolder, static_cast<std::size_t>(i), running), true);
  }
  job.RetryIndices.clear();
  EndRun(loop, job.RetryLayoutId);
  EndMerge(loop, job.RetryFolder, true);
}

}  // namespace tv::plot
