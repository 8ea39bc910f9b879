#pragma once
// Where a plotted file goes and what it is called: the folder by the drawing's settings, the path
// of each sheet, the numbered names of a merge and of the old paper batch, the host's limit on
// the length of a path and the file system's on a name, and what tells a file just written from
// an old one. Names come in as they are: cleaning them is the naming rules' work. An old output
// is never deleted before its sheet is plotted: the new file replaces it whole, once complete,
// so a plot that fails leaves the old one.
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "titleblock/field_extraction.h"

namespace tv::plot {

// The path modes of the settings' "存储路径".
inline constexpr std::int32_t kPathBesideDrawing = 0;
inline constexpr std::int32_t kPathFormatFolder = 1;
inline constexpr std::int32_t kPathCustom = 2;

// The host takes no output path longer than this many characters.
inline constexpr std::size_t kMaxOutputPathLength = 255;
// The file systems take no name (one component of a path) longer than this many bytes.
inline constexpr std::size_t kMaxFileNameBytes = 255;

// What stands in a title-block file name where several titles were joined.
using titleblock::kLineMark;

inline constexpr std::string_view kCustomFolderTitle = "请选择放置打印文件的目录：";

// The folder of the current drawing's file; the user's home for a drawing never saved.
std::string DrawingFolder();
// The drawing's file name without folder and extension; the host's "Drawing1" for a drawing
// never saved.
std::string DrawingTitle();

// "/PDF", "/DWF", "/JPG", "/PNG", "/PLT", "/EPS", "/DWG" for the formats 0 to 6; empty otherwise.
std::string FormatSubFolder(std::int32_t format);
// ".pdf", ".dwf", ".jpg", ".png", ".plt", ".eps" and the host's drawing files; empty otherwise.
std::string FormatExtension(std::int32_t format);
// The second row of the form's "存储路径" list (" 源文件路径\PDF" …); empty for an unknown format.
std::string FormatFolderRowText(std::int32_t format);

// The folder of a run's files by the path mode. A custom folder that no longer exists falls back
// to the drawing's folder, and `customPath` takes that folder, so that the form shows it next time.
// The folder itself is not created.
std::string OutputFolder(std::int32_t pathMode, std::int32_t format, std::string& customPath);

// The working folder of a PDF merge, created.
std::string TempFolder();

// The file of a sheet: folder, name, extension of the format.
std::string SheetPath(const std::string& folder, const std::string& fileName, std::int32_t format);
// The file of the `number`th sheet of a merge (from 1): a PDF, or a DWF for a DWF merge.
std::string MergeSheetPath(const std::string& folder, std::int32_t number, std::int32_t format = 0);
// The PLT file of the `number`th area of the old paper batch: "stem-001.plt", "stem-012.plt",
// "stem-123.plt".
std::string NumberedPltPath(const std::string& stem, std::int32_t number);

// A title-block name with its line marks replaced by the title separator, as the file is named.
std::string WithTitleSeparator(std::string name, std::string_view separator);
// True when nothing is left of a name once its line marks are gone.
bool IsEmptyFileName(std::string_view name);

// The length of a path as the host counts it: UTF-16 units.
std::size_t HostPathLength(std::string_view utf8Path);
// "输出文件的文件名长度（路径+文件名）超过了限值，出错 !\n\n" and the path.
std::string PathTooLongMessage(const std::string& path);
// Says so when a path is longer than the host takes. Only a message: the plot goes ahead and
// fails on its own if it must. True when the path is within the limit.
bool CheckOutputPathLength(const std::string& path);

// The bytes a name may have so that, with the extension of `format`, it stays within
// kMaxFileNameBytes.
std::size_t FileNameRoom(std::int32_t format);
// `name` cut to at most `maxBytes` bytes, between two UTF-8 characters.
std::string FitFileName(std::string_view name, std::size_t maxBytes);

// What tells the file at a path from another one there: its modification time and size.
struct FileStamp {
  std::filesystem::file_time_type time;
  std::uintmax_t size = 0;
  bool operator==(const FileStamp&) const = default;
};
// nullopt when no regular file is there.
std::optional<FileStamp> StampOf(const std::string& path);
// True when a file is at `path` and it isn't the one `before` stamped: a plot wrote it.
bool IsFreshOutput(const std::string& path, const std::optional<FileStamp>& before);

// The output of sheet `number` (from 1) would replace a drawing the run read: refused.
std::string OutputIsDrawingMessage(const std::string& path, std::size_t number);

}  // namespace tv::plot
