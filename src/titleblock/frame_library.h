#pragma once
// The folder of ready frames, one drawing file a frame, and the form "套图框设置" that shows them,
// adds, renames, deletes and redefines frames, previews one, and chooses how a frame is placed.
#include <array>
#include <optional>
#include <string>
#include <vector>

#include "host/object_id.h"

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

// A failed action's message box: its text and title.
struct FrameFailure {
  std::string text, caption;
};

// The four columns of the list: " 序号 ", " 图    框 ", " 删  除 ", " 重定义 ".
const std::vector<std::string>& FrameListColumns();
inline constexpr const char* kFrameListTip = "双击空白处录入新图框";

// The list of the form over one folder. Every action that fails leaves the entries and the folder
// as they were and says why; the actions that take a selection or a name are given them, the
// form asks for them.
class FrameLibrary {
 public:
  explicit FrameLibrary(std::string folder);

  const std::string& folder() const { return folder_; }
  const std::vector<FrameEntry>& entries() const { return entries_; }
  // One row an entry: number ("%2d"), shown name, "DEL", "REDEFINE".
  std::vector<std::array<std::string, 4>> rows() const;
  // The row of the preview, -1 for none.
  int selected = -1;
  // The entry shown by `name`, if any (case-sensitive).
  std::optional<std::size_t> find(const std::string& name) const;

  // Lists the folder again; the first row is selected.
  void FillFrameList();
  // Writes the entities as the new frame `name` in the folder and appends and selects its row.
  std::optional<FrameFailure> AddFrame(const ObjectIdArray& ids, const std::string& name);
  std::optional<FrameFailure> DeleteFrame(std::size_t index);
  // Writes the entities over the entry's file.
  std::optional<FrameFailure> RedefineFrame(std::size_t index, const ObjectIdArray& ids);
  // Renames the entry's file to `name` and its own extension; the same name does nothing.
  std::optional<FrameFailure> RenameFrame(std::size_t index, const std::string& name);
  // A folder other than the current one refills the list; true when it did.
  bool ChooseFrameFolder(const std::string& folder);
  // The selected frame drawn white on black into a PNG of `width` x `height`. False, silently,
  // when nothing is selected or its file can't be read or the picture written.
  bool DrawFramePreview(const std::string& pngPath, int width = 400, int height = 300) const;

 private:
  std::string pathFor(const std::string& fileName) const;
  std::string folder_;
  std::vector<FrameEntry> entries_;
};

// Dlg_Put_TK_Setting on the command line: the frames of the folder with their actions,
// "套图框方式：" and "图框所在文件夹："; OK stores put_frame_mode and frame_folder in the global
// configuration and writes it. False on cancel.
bool PutFrameSettingForm();

}  // namespace tv::titleblock
