#pragma once
// The paper batch: the reviewed sheets sent to a printer (or written as its PLT files), each as
// often as its copies say, collated or not. Like the file batches, the form's OK leaves the form
// through the command queue and the private command prints.
#include <cstdint>
#include <optional>
#include <string_view>

#include "plot/paper_review.h"

namespace tv::plot {

inline constexpr std::string_view kPltFolderTitle = "请选择放置PLT文件的目录：";

// Sets the plot settings of the sheet's layout for the paper batch (switching to it first): the
// form's device, the sheet's medium, the style and the window without margin correction. True
// when paper space is current; unset when the device can't be set.
std::optional<bool> PreparePaperSheet(const Dlg_BPlot3& form, const recognition::Plot_Drawing1& sheet);

// The OK of the paper form: a device and a medium for every row, the PLT folder picked when asked,
// the private command posted. False when the run can't start (the form stays open).
bool RunBatch(Dlg_BPlot3& form);
// Puts the user's plotter back and closes the form, once a run has started.
void FinishBatch(Dlg_BPlot3& form);
// The paper loop over the open paper form's first `count` rows. False when the user stopped the
// run or a printer refused a job.
bool PlotToDevice(std::int32_t count);
void Plot_Temp3();
// The paper batch command: recognition, the review list and, on its OK, the run.
void PaperPlotCommand();

}  // namespace tv::plot
