#include "titleblock/frame_library.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <system_error>

#include "host/editor.h"
#include "host/frame_files.h"
#include "host/sheet_files.h"

namespace tv::titleblock {

namespace fs = std::filesystem;

namespace {

constexpr const char* kClashText = "图框重名 !";
constexpr const char* kClashCaption = "图框重名报错";
constexpr const char* kNotWritten = "文件\n\n%s\n\n无法重新生成 !";
constexpr const char* kNotWrittenCaption = "文件报错";
constexpr const char* kNotDeleted = "文件\n\n%s\n\n无法删除 !";
constexpr const char* kNotDeletedCaption = "文件删除报错";
constexpr const char* kNotRenamed = "文件\n\n%s\n\n无法修改文件名 !";
constexpr const char* kNotRenamedCaption = "文件改名报错";

bool IsFrameFile(const fs::path& p) {
  std::string ext = p.extension().string();
  std::transform(ext.begin(), ext.end(), ext.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return ext == ".dwg" || ext == ".dxf";
}

std::string Number(std::size_t i) {
  char number[16];
  std::snprintf(number, sizeof number, "%2d", static_cast<int>(i));
  return number;
}

FrameFailure Failure(const char* format, const std::string& path, const char* caption) {
  std::string text = format;
  text.replace(text.find("%s"), 2, path);
  return {text, caption};
}

// A frame's name must stay a file of the folder: no folder separators, no "." or "..".
bool UsableName(const std::string& name) {
  return !name.empty() && name != "." && name != ".." && name.find_first_of("/\\") == std::string::npos &&
         name.find('\0') == std::string::npos;
}

}  // namespace

std::vector<FrameEntry> FillFrameList(const std::string& folder) {
  std::vector<FrameEntry> frames;
  std::error_code ec;
  for (fs::directory_iterator it(folder, ec), end; !ec && it != end; it.increment(ec)) {
    std::error_code kind;
    if (!it->is_regular_file(kind) || !IsFrameFile(it->path())) continue;
    frames.push_back({it->path().string(), it->path().filename().string()});
  }
  std::sort(frames.begin(), frames.end(), [](const FrameEntry& a, const FrameEntry& b) { return a.file_name < b.file_name; });
  return frames;
}

std::string ShownFrameName(const FrameEntry& entry) {
  return entry.file_name.size() > 4 ? entry.file_name.substr(0, entry.file_name.size() - 4) : std::string();
}

const std::vector<std::string>& FrameListColumns() {
  static const std::vector<std::string> kColumns{" 序号 ", " 图    框 ", " 删  除 ", " 重定义 "};
  return kColumns;
}

FrameLibrary::FrameLibrary(std::string folder) : folder_(std::move(folder)) { FillFrameList(); }

void FrameLibrary::FillFrameList() {
  entries_ = titleblock::FillFrameList(folder_);
  selected = entries_.empty() ? -1 : 0;
}

std::vector<std::array<std::string, 4>> FrameLibrary::rows() const {
  std::vector<std::array<std::string, 4>> rows;
  for (std::size_t i = 0; i < entries_.size(); ++i) rows.push_back({Number(i + 1), ShownFrameName(entries_[i]), "DEL", "REDEFINE"});
  return rows;
}

std::optional<std::size_t> FrameLibrary::find(const std::string& name) const {
  for (std::size_t i = 0; i < entries_.size(); ++i)
    if (ShownFrameName(entries_[i]) == name) return i;
  return std::nullopt;
}

std::string FrameLibrary::pathFor(const std::string& fileName) const { return (fs::path(folder_) / fileName).string(); }

std::optional<FrameFailure> FrameLibrary::AddFrame(const ObjectIdArray& ids, const std::string& name) {
  // Shown names are compared: a ".dwg" and a ".dxf" of one name would be two rows alike.
  if (find(name)) return FrameFailure{kClashText, kClashCaption};
  const std::string fileName = name + host::DrawingFileExtension();
  const std::string path = pathFor(fileName);
  std::error_code ec;
  if (!UsableName(name) || ids.empty() || fs::exists(fs::symlink_status(path, ec)) ||
      !host::WriteEntitiesToDrawingFile(ids, path))
    return Failure(kNotWritten, path, kNotWrittenCaption);
  entries_.push_back({path, fileName});
  selected = static_cast<int>(entries_.size()) - 1;
  return std::nullopt;
}

std::optional<FrameFailure> FrameLibrary::DeleteFrame(std::size_t index) {
  if (index >= entries_.size()) return std::nullopt;
  std::error_code ec;
  if (!fs::remove(entries_[index].path, ec) || ec) return Failure(kNotDeleted, entries_[index].path, kNotDeletedCaption);
  entries_.erase(entries_.begin() + static_cast<std::ptrdiff_t>(index));
  if (selected >= static_cast<int>(entries_.size())) selected = static_cast<int>(entries_.size()) - 1;
  return std::nullopt;
}

std::optional<FrameFailure> FrameLibrary::RedefineFrame(std::size_t index, const ObjectIdArray& ids) {
  if (index >= entries_.size() || ids.empty()) return std::nullopt;
  // The writer replaces the file only once the new one is complete.
  if (!host::WriteEntitiesToDrawingFile(ids, entries_[index].path))
    return Failure(kNotWritten, entries_[index].path, kNotWrittenCaption);
  selected = static_cast<int>(index);
  return std::nullopt;
}

std::optional<FrameFailure> FrameLibrary::RenameFrame(std::size_t index, const std::string& name) {
  if (index >= entries_.size()) return std::nullopt;
  FrameEntry& entry = entries_[index];
  const std::string extension = entry.file_name.size() >= 4 ? entry.file_name.substr(entry.file_name.size() - 4) : "";
  const std::string fileName = name + extension;
  if (fileName == entry.file_name) return std::nullopt;
  for (std::size_t i = 0; i < entries_.size(); ++i)
    if (i != index && ShownFrameName(entries_[i]) == name) return FrameFailure{kClashText, kClashCaption};
  const std::string path = pathFor(fileName);
  std::error_code ec;
  // A file of that name outside the list (another kind, or a folder) is never replaced.
  if (!UsableName(name) || fs::exists(fs::symlink_status(path, ec))) return Failure(kNotRenamed, entry.path, kNotRenamedCaption);
  fs::rename(entry.path, path, ec);
  if (ec) return Failure(kNotRenamed, entry.path, kNotRenamedCaption);
  entry = {path, fileName};
  return std::nullopt;
}

bool FrameLibrary::ChooseFrameFolder(const std::string& folder) {
  if (folder.empty() || folder == folder_) return false;
  folder_ = folder;
  FillFrameList();
  return true;
}

bool FrameLibrary::DrawFramePreview(const std::string& pngPath, int width, int height) const {
  if (selected < 0 || selected >= static_cast<int>(entries_.size())) return false;
  const std::optional<std::vector<host::FileSegment>> segments = host::DrawingFileSegments(entries_[selected].path);
  // The margin is a twentieth of the smaller side.
  return segments && host::WriteSegmentPicture(*segments, width, height, std::min(width, height) / 20, pngPath);
}

}  // namespace tv::titleblock
