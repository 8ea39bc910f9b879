#pragma once
// The private plotter files (T_PDF.pc3 and its model file …) lie in the user's plotter folders,
// which every run of this user shares, whatever process it is in. A run writes them with the
// papers of its own list and plots with them until its last sheet, so one run at a time holds
// them: from its first write to its end. Another run waits, and says so.
#include <string>

namespace tv::plot {

// "另一个打印任务正在使用打印设备文件，等待其完成…"
std::string PlotterBusyMessage();

// Takes the files for this run, waiting while a run of another process holds them. Holding them
// already, it does nothing.
void HoldPlotterFiles();
// Lets them go; nothing when not held.
void ReleasePlotterFiles();
bool PlotterFilesHeld();

}  // namespace tv::plot
