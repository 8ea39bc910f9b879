#pragma once
// The user's plot device at the start of a job, and where the job's private plotter files went,
// so that the end of the job can put the device back and remove the files.
#include <string>

namespace tv::paper {

struct SavedPlotter {
  std::string deviceName;  // plot device of the current layout at command start
  std::string mediaName;   // canonical media at command start
  std::string pc3Folder;   // folder of the private plotter configuration
  std::string pmpFolder;   // folder of its model file
  std::string pc3Path;     // full path of the private plotter configuration
  std::string pmpPath;     // full path of its model file
};

// The one record of the process, alive from load to unload.
SavedPlotter& GlobalSavedPlotter();

}  // namespace tv::paper
