#pragma once
// The user's plot device at the start of a job, and where the job's private plotter files went,
// so that the end of the job can put the device back and remove the files.
#include <memory>
#include <string>
#include <vector>

#include "host/layout_plot.h"

namespace tv::paper {

struct SavedPlotter {
  std::string deviceName;  // plot device of the current layout at command start
  std::string mediaName;   // canonical media at command start
  std::string pc3Folder;   // folder of the private plotter configuration
  std::string pmpFolder;   // folder of its model file
  std::string pc3Path;     // full path of the private plotter configuration
  std::string pmpPath;     // full path of its model file

  // Every layout the job opened for plotting, with its plot settings as the job found them: a
  // run goes from layout to layout, and each gets its own plotter back at the end.
  struct LayoutCopy {
    host::LayoutPlotSettings layout;
    std::shared_ptr<const host::PlotSettingsCopy> settings;
  };
  bool recording = false;  // from command start until the settings are given back
  std::vector<LayoutCopy> layouts;

  // Keeps the settings of `layout` unless they are kept already.
  void remember(const host::LayoutPlotSettings& layout);
};

// The one record of the process, alive from load to unload.
SavedPlotter& GlobalSavedPlotter();

}  // namespace tv::paper
