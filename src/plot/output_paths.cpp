#include "plot/output_paths.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "host/editor.h"
#include "host/sheet_files.h"
#include "settings/plot_setting.h"
#include "settings/folders.h"

namespace tv::plot {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kCaption = "Tarvex打印";
constexpr std::string_view kUnsavedTitle = "Drawing1";

struct FormatNames {
  std::string_view folder;
  std::string_view extension;
  std::string_view row;
};
constexpr std::array<FormatNames, 7> kFormats{{
    {"/PDF", ".pdf", " 源文件路径\\PDF"},
    {"/DWF", ".dwf", " 源文件路径\\DWF"},
    {"/JPG", ".jpg", " 源文件路径\\JPG"},
    {"/PNG", ".png", " 源文件路径\\PNG"},
    {"/PLT", ".plt", " 源文件路径\\PLT"},
    {"/EPS", ".eps", " 源文件路径\\EPS"},
    {"/DWG", ".dwg", " 源文件路径\\DWG"},
}};

const FormatNames* NamesOf(std::int32_t format) {
  if (format < 0 || format >= static_cast<std::int32_t>(kFormats.size())) return nullptr;
  return &kFormats[static_cast<std::size_t>(format)];
}

std::string DocumentPath() { return host::HasEditor() ? host::CurrentEditor().documentPath() : std::string{}; }

// The user's own folder, where a Windows host's USERPROFILE points.
std::string UserHome() {
  const char* home = std::getenv("HOME");
  if (home && *home) return home;
  return settings::DocumentsFolder();
}

void ReplaceAll(std::string& text, std::string_view from, std::string_view to) {
  for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
    text.replace(at, from.size(), to);
}

void ShowMessage(const std::string& text) {
  if (host::HasEditor()) host::CurrentEditor().messageBox(text, kCaption, host::MessageButtons::Ok);
}

}  // namespace

std::string DrawingFolder() {
  const std::string path = DocumentPath();
  if (path.empty()) return UserHome();
  // A host names a saved document by its full path; a relative name stands for the working folder.
  std::error_code ec;
  fs::path full = fs::absolute(path, ec);
  if (ec) full = path;
  return full.parent_path().string();
}

std::string DrawingTitle() {
  const std::string path = DocumentPath();
  if (path.empty()) return std::string(kUnsavedTitle);
  return fs::path(path).stem().string();
}

std::string FormatSubFolder(std::int32_t format) {
  const FormatNames* names = NamesOf(format);
  return names ? std::string(names->folder) : std::string{};
}

std::string FormatExtension(std::int32_t format) {
  // Sheets cut to drawing files take the host's own drawing format.
  if (format == settings::kFormatDwg) return host::DrawingFileExtension();
  const FormatNames* names = NamesOf(format);
  return names ? std::string(names->extension) : std::string{};
}

std::string FormatFolderRowText(std::int32_t format) {
  const FormatNames* names = NamesOf(format);
  return names ? std::string(names->row) : std::string{};
}

std::string OutputFolder(std::int32_t pathMode, std::int32_t format, std::string& customPath) {
  const std::string base = DrawingFolder();
  switch (pathMode) {
    case kPathFormatFolder:
      return base + FormatSubFolder(format);
    case kPathCustom:
      if (settings::FolderExists(customPath)) return customPath;
      customPath = base;
      return base;
    default:
      return base;
  }
}

std::string TempFolder() {
  const std::string folder = settings::TempFolder();
  std::error_code ec;
  fs::create_directory(folder, ec);  // a failure shows when the first file is written there
  return folder;
}

std::string SheetPath(const std::string& folder, const std::string& fileName, std::int32_t format) {
  return folder + "/" + fileName + FormatExtension(format);
}

std::string MergeSheetPath(const std::string& folder, std::int32_t number, std::int32_t format) {
  return folder + "/" + std::to_string(number) + (format == settings::kFormatDwf ? ".dwf" : ".pdf");
}

std::string NumberedPltPath(const std::string& stem, std::int32_t number) {
  const char* pattern = number < 10 ? "%s-00%d.%s" : number < 100 ? "%s-0%d.%s" : "%s-%d.%s";
  const int size = std::snprintf(nullptr, 0, pattern, stem.c_str(), number, "plt");
  std::string out(static_cast<std::size_t>(size), '\0');
  std::snprintf(out.data(), out.size() + 1, pattern, stem.c_str(), number, "plt");
  return out;
}

std::string WithTitleSeparator(std::string name, std::string_view separator) {
  ReplaceAll(name, kLineMark, separator);
  return name;
}

bool IsEmptyFileName(std::string_view name) { return WithTitleSeparator(std::string(name), "").empty(); }

std::size_t HostPathLength(std::string_view utf8Path) {
  std::size_t units = 0;
  for (std::size_t i = 0; i < utf8Path.size(); ++i) {
    const auto c = static_cast<unsigned char>(utf8Path[i]);
    if ((c & 0xC0) == 0x80) continue;  // continuation byte
    units += c >= 0xF0 ? 2 : 1;        // beyond the basic plane: a surrogate pair
  }
  return units;
}

std::string PathTooLongMessage(const std::string& path) {
  return "输出文件的文件名长度（路径+文件名）超过了限值，出错 !\n\n" + path;
}

bool CheckOutputPathLength(const std::string& path) {
  if (HostPathLength(path) <= kMaxOutputPathLength) return true;
  ShowMessage(PathTooLongMessage(path));
  return false;
}

std::size_t FileNameRoom(std::int32_t format) {
  const std::size_t extension = FormatExtension(format).size();
  return extension < kMaxFileNameBytes ? kMaxFileNameBytes - extension : 0;
}

std::string FitFileName(std::string_view name, std::size_t maxBytes) {
  if (name.size() <= maxBytes) return std::string(name);
  std::size_t cut = maxBytes;
  // Back over continuation bytes to the start of the character that would be split.
  while (cut > 0 && (static_cast<unsigned char>(name[cut]) & 0xC0) == 0x80) --cut;
  return std::string(name.substr(0, cut));
}

std::optional<FileStamp> StampOf(const std::string& path) {
  std::error_code ec;
  if (!fs::is_regular_file(path, ec)) return std::nullopt;
  FileStamp stamp;
  stamp.time = fs::last_write_time(path, ec);
  if (ec) return std::nullopt;
  stamp.size = fs::file_size(path, ec);
  if (ec) return std::nullopt;
  return stamp;
}

bool IsFreshOutput(const std::string& path, const std::optional<FileStamp>& before) {
  const std::optional<FileStamp> now = StampOf(path);
  return now && now != before;
}

std::string OutputIsDrawingMessage(const std::string& path, std::size_t number) {
  return "\n输出文件 < " + path + " > 是本次打印读取的图纸文件，不能覆盖，第 " + std::to_string(number) +
         " 张图纸未打印 !";
}

}  // namespace tv::plot
