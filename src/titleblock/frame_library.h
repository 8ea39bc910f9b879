#pragma once
// The folder of ready frames, one drawing file a frame, and the form "套图框设置" that shows them
// and chooses how a frame is placed. This build lists the frames and keeps the two settings;
// adding, renaming, deleting and redefining frames and the preview are not offered yet.
#include <string>
#include <vector>

namespace tv::titleblock {

struct FrameEntry {
  std::string path;       // the whole path
  std::string file_name;  // the name with its extension
};

// The drawing files of the folder (".dwg", and ".dxf", this platform's own format), not descending,
// by name. Empty when the folder can't be read.
std::vector<FrameEntry> FillFrameList(const std::string& folder);
// The name a frame is shown by: its file name without the last four characters.
std::string ShownFrameName(const FrameEntry& entry);

// Dlg_Put_TK_Setting on the command line: the frames of the folder, "套图框方式：" and
// "图框所在文件夹："; OK stores put_frame_mode and frame_folder in the global configuration and
// writes it. False on cancel.
bool PutFrameSettingForm();

}  // namespace tv::titleblock
