#pragma once
// The plot job driver: from a reviewed sheet list to files, one `-plot` per sheet. The form's OK
// leaves the form through the command queue (a private command is posted), the private command
// plots, and at its end the batch command is posted again. The answers of `-plot` accept what the
// layout's plot settings hold, which the driver sets before each sheet.
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/object_id.h"
#include "paper/paper.h"
#include "plot/generic_review.h"
#include "plot/plotter_lock.h"
#include "plot/title_review.h"
#include "settings/plot_setting.h"

namespace tv::plot {

inline constexpr std::string_view kCancelQuestion = "是否中断打印 ？";
inline constexpr std::string_view kPlotCaption = "Tarvex批打印";
inline constexpr std::string_view kMergedPdfTitle = "合并后的PDF文件保存为...";

// What a run leaves for the private commands; it dies with the run.
struct JobState {
  settings::PlotSettingRec* ActivePlotSetting = nullptr;  // the open form's copy
  Dlg_BPlot1* ActiveSheetJob = nullptr;                   // the open generic form
  Dlg_BPlot2* ActiveTitleSheetJob = nullptr;              // the open title-block form
  std::int32_t PlotStyleIndex = 0;
  std::string MergedPdfPath;  // empty: no merge
  std::string RetryFolder;
  ObjectId RetryLayoutId;
  std::vector<std::int32_t> RetryIndices;
  std::string LastFolder;  // where the last pass wrote
  // Read by the signatures while a plot runs.
  bool InPlot = false;
  bool PlotSignaturesVisible = true;
};
JobState& Job();

// The answers of one `-plot` of the file batches: the layout's settings accepted with Enter, the
// file named. PLT and EPS devices are asked first whether to write a file.
std::vector<std::string> PlotAnswers(std::int32_t format, bool inLayout, const std::string& path);
// The answers of the paper batch: orientation by `rotated`; a file when `path` isn't empty.
std::vector<std::string> PaperAnswers(bool inLayout, bool rotated, const std::string& path);

// Steps 2 to 7 of every plotting command before recognition: the working coordinates, the plot
// variables, the layer states, the colour tables, the user's plotter saved, the drawing's
// settings read.
void EnterPlotCommand();

// One `-plot` of the current layout. True unless an old host showed that no file came out.
bool PlotOne(bool inLayout, const std::string& path, bool plotSignatures, bool rotated);

// The first pass over the open generic form's first `count` rows, into `folderOut` or, when it is
// empty, the folder of the settings. False when the user stopped the run.
bool PlotSheets(std::string folderOut, std::int32_t count);

// The OK of the generic form: the checks, the settings taken over, the private command posted.
// False when a check stopped the run (the form stays open).
bool RunBatch(Dlg_BPlot1& form);

// Puts the user's plotter back and closes the form, once a run has started.
void FinishBatch(Dlg_BPlot1& form);

// The place of the last style used in the list the forms offer; 0 when it isn't there.
std::int32_t LastStyleIndex();

// What both file families do once a run ends: the user's plotter back, the form's settings let go.
void EndFileRun();

// What every batch command does once recognition ran (`form` null: it found nothing or was
// cancelled, and the plotter files it may have written are let go): the list with the last style,
// and a list closed without a run gives the layouts their plotters back and lets the form go.
template <class Form>
void ShowBatchList(Form* form, bool (*work)(Form&), void (*destroy)()) {
  if (!form) {
    ReleasePlotterFiles();
    return;
  }
  form->styleIndex = LastStyleIndex();
  if (!work(*form)) {
    EndFileRun();
    destroy();
  }
}
// The body of both private commands: `firstPass` plots, the folder opens when asked (not after a
// merge), and `again` is posted so that the batch command shows its list again.
void RunPrivateCommand(const std::function<bool()>& firstPass, std::string_view again);

// What the OK of both file forms shares once their own checks passed: the formats this build
// can't write refused, the form's settings taken over and saved, the plotter files written and
// `privateCommand` posted. False when the run can't start.
bool StartFileRun(settings::PlotSettingRec& setting, std::int32_t styleIndex, const paper::PaperList& papers,
                  std::string_view privateCommand);

// The private commands of the generic family.
void Plot_Temp1();
void StandbyGeneric();

// ---- the title-block family ---------------------------------------------------------------------------

// The first pass over the open title-block form's first `count` rows; as PlotSheets.
bool PlotTitleSheets(std::string folderOut, std::int32_t count);
// The OK of the title-block form: no empty name, no paper above the ceiling, then the run.
bool RunTitleBatch(Dlg_BPlot2& form);
void FinishTitleBatch(Dlg_BPlot2& form);
void Plot_Temp2();
void StandbyTitle();
// The title-block batch command: recognition, the review list and, on its OK, the run.
void TitlePlotCommand();

// A scale the user fixed for the review list (the scale form with "自动识别" off); unset, the list
// takes the scale most sheets have.
std::optional<double>& FixedListScale();

// The generic batch command: recognition, the review list and, on its OK, the run.
void GenericPlotCommand();

}  // namespace tv::plot
