#include "plot/paper_job.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include "host/editor.h"
#include "host/print_queues.h"
#include "host/run_files.h"
#include "host/wrappers.h"
#include "paper/layout_plot_setting.h"
#include "paper/scale_fitting.h"
#include "plot/interrupt_flag.h"
#include "plot/output_paths.h"
#include "plot/paper_work_list.h"
#include "plot/plot_job.h"
#include "plot/plotter_lock.h"
#include "plot/review_list.h"
#include "plot/run_checks.h"
#include "recognition/sheet_geometry.h"
#include "settings/config.h"
#include "signing/sign_globals.h"

namespace tv::plot {

namespace {

namespace fs = std::filesystem;
using recognition::Plot_Drawing1;

void Box(std::string_view text) { host::CurrentEditor().messageBox(text, kPlotCaption, host::MessageButtons::Ok); }

std::string Formatted(const char* pattern, int a, int b = 0) {
  char text[256];
  std::snprintf(text, sizeof text, pattern, a, b);
  return text;
}

// The PLT file of entry `k` (from 0) of a work list of `entries`: the drawing's name, numbered
// when the list holds more than one.
std::string PltPath(const std::string& folder, std::size_t k, std::size_t entries) {
  if (entries == 1) return folder + "/" + DrawingTitle() + ".plt";
  return folder + "/" + DrawingTitle() + "_" + std::to_string(k + 1) + ".plt";
}

}  // namespace

std::optional<bool> PreparePaperSheet(const Dlg_BPlot3& form, const Plot_Drawing1& sheet) {
  if (!sheet.spaceId.isNull()) host::ActivateLayoutOf(sheet.spaceId);
  const bool inLayout = host::IsPaperSpace();
  paper::LayoutPlotSetting layout(&form.setting);
  if (!layout.SetDevice(form.device)) return std::nullopt;
  layout.ReadStyleList();
  layout.settings.setCanonicalMediaName(sheet.paperName);
  layout.SetPlotStyle(form.styleIndex);
  // The printer's medium has no private margin: the window is the sheet's rectangle.
  layout.SetWindow({sheet.minX, sheet.minY}, {sheet.maxX, sheet.maxY}, 0.0);
  layout.SetRotation(sheet.rotated);
  return inLayout;
}

bool RunBatch(Dlg_BPlot3& form) {
  host::Editor& editor = host::CurrentEditor();
  if (form.device.empty()) {
    Box("没有可打印到纸张的打印机 !");
    return false;
  }
  for (std::size_t i = 0; i < form.rows.size(); ++i) {
    const BPlot3Row& row = form.rows[i];
    if (row.onDevice) continue;
    Box(Formatted("第 %d 张图纸：", static_cast<int>(i + 1)) + row.note +
        " !\n\n请为该行选择打印机的纸张、删除该行或选择其他打印机。");
    return false;
  }
  if (!SignatureCheckPasses(form.setting)) return false;
  if (form.toPlt) {
    std::error_code ec;
    const std::string start = !form.pltFolder.empty() && fs::is_directory(form.pltFolder, ec) ? form.pltFolder : DrawingFolder();
    std::optional<std::string> folder = editor.askFolder(kPltFolderTitle, start);
    if (!folder) return false;
    while (folder->size() > 1 && (folder->back() == '\\' || folder->back() == '/')) folder->pop_back();
    if (!fs::is_directory(*folder, ec)) {
      Box("所选文件夹有误 !");
      return false;
    }
    form.pltFolder = *folder;
  }

  JobState& job = Job();
  job.ActivePlotSetting = &form.setting;
  job.PlotStyleIndex = form.styleIndex;
  {
    paper::LayoutPlotSetting layout(&form.setting);
    settings::GlobalConfig().last_plot_style = layout.StyleNameAt(form.styleIndex);
  }
  editor.sendStringToExecute("\x03\x03");
  editor.sendStringToExecute("Plot_Temp3\n");
  settings::CurrentPlotSetting() = form.setting;
  settings::SaveCurrentPlotSetting();
  paper::WritePaperInfor(form.job.keptSheets);
  for (Plot_Drawing1* sheet : form.job.keptSheets) recognition::EraseMarker(sheet->markerId);
  form.plot_started = true;
  return true;
}

void FinishBatch(Dlg_BPlot3& form) {
  if (!form.plot_started) return;
  form.plot_started = false;
  EndFileRun();
  DestroyPaperReview();
}

bool PlotToDevice(std::int32_t count) {
  Dlg_BPlot3* form = PaperReview();
  if (!form) return false;
  host::Editor& editor = host::CurrentEditor();
  std::vector<Plot_Drawing1*> sheets = form->job.keptSheets;
  if (count >= 0 && static_cast<std::size_t>(count) < sheets.size()) sheets.resize(static_cast<std::size_t>(count));
  if (form->toPlt) {
    std::error_code ec;
    fs::create_directories(form->pltFolder, ec);
  }
  host::SetVar("FILEDIA", std::int32_t{0});
  const ObjectId home = host::OpenCurrentSpace();

  std::vector<std::int32_t> copies;
  copies.reserve(sheets.size());
  for (const Plot_Drawing1* sheet : sheets) copies.push_back(sheet->copies);
  const std::vector<std::size_t> work = PaperWorkList(copies, form->collate, form->toPlt);
  const PlotRunScope running;
  editor.progressBegin("正在打印", static_cast<int>(work.size()));

  std::vector<int> copyOf(sheets.size(), 0);
  std::size_t sent = 0;
  std::string stop;  // why the run ended early
  bool cancelled = false;
  for (std::size_t k = 0; k < work.size(); ++k) {
    if (CancelAsked(form->cancel_requested)) {
      form->cancel_requested = false;
      if (editor.messageBox(kCancelQuestion, kPlotCaption, host::MessageButtons::YesNo) == host::MessageAnswer::Yes) {
        cancelled = true;
        break;
      }
    }
    editor.progressSet(static_cast<int>(k) + 1);
    const std::size_t i = work[k];
    const Plot_Drawing1& sheet = *sheets[i];
    const int copy = ++copyOf[i];
    std::string path;
    if (form->toPlt) {
      path = PltPath(form->pltFolder, k, work.size());
      // The drawings of the run are read, never written.
      if (host::IsDrawingFileRead(path)) {
        stop = OutputIsDrawingMessage(path, i + 1);
        break;
      }
      std::error_code ec;
      fs::permissions(path, fs::perms::owner_write, fs::perm_options::add, ec);
      fs::remove(path, ec);
      CheckOutputPathLength(path);
    }
    const std::optional<bool> inLayout = PreparePaperSheet(*form, sheet);
    if (!inLayout) {
      stop = "打印机“" + form->device + "”无法使用，批打印中止 !";
      break;
    }
    if (!form->toPlt) host::NameNextPrintJob(sheet.fileName);
    JobState& job = Job();
    job.PlotSignaturesVisible = form->setting.plot_signatures != 0;
    job.InPlot = true;
    int rc = host::RTNORM;
    {
      const signing::PlotSignScope signs(form->setting.plot_signatures != 0);
      rc = editor.command(PaperAnswers(*inLayout, sheet.rotated, path));
    }
    host::TakePrintJobName();  // a plot that never reached the printer leaves no name behind
    job.InPlot = false;
    job.PlotSignaturesVisible = true;
    if (rc != host::RTNORM) {
      stop = Formatted("第 %d 张图纸（第 %d 份）未能打印，批打印中止 !", static_cast<int>(i + 1), copy);
      break;
    }
    ++sent;
  }

  // Jobs go to the printer while the next sheets plot: a refusal may come after its sheet.
  if (!form->toPlt) {
    const std::vector<std::string> refused = editor.settlePrintJobs();
    sent -= std::min(sent, refused.size());
    if (!refused.empty()) stop = refused.front() + "批打印中止 !";
  }
  editor.progressEnd();
  if (!stop.empty())
    Box(stop + Formatted("\n\n已发送 %d 个，共 %d 个打印作业。", static_cast<int>(sent), static_cast<int>(work.size())));
  FinishBatch(*form);
  host::ActivateLayoutOf(home);
  host::SetVar("FILEDIA", std::int32_t{1});
  return stop.empty() && !cancelled;
}

void Plot_Temp3() {
  Dlg_BPlot3* form = PaperReview();
  if (!form || !form->plot_started) return;  // nothing waits to be printed
  const bool toPlt = form->toPlt, open = form->openFolder;
  const std::string folder = form->pltFolder;
  const auto count = static_cast<std::int32_t>(form->job.keptSheets.size());
  if (PlotToDevice(count) && toPlt && open) host::CurrentEditor().shellOpen(folder);
  host::CurrentEditor().sendStringToExecute("TV_BatchPlot_5\n\x03\x03");
}

void PaperPlotCommand() {
  EnterPlotCommand();
  ShowBatchList(RecognisePaperBatch(true, FixedListScale()), &WorkPaperList, &DestroyPaperReview);
}

}  // namespace tv::plot
