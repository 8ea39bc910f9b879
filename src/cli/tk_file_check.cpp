#include "cli/tk_file_check.h"

#include <filesystem>
#include <system_error>

#include "console/text_table.h"
#include "titleblock/tk_library.h"

namespace tv::cli {

std::optional<std::string> TkFileRefusal(const std::string& path) {
  std::error_code ec;
  const std::optional<titleblock::TkFileFacts> facts =
      std::filesystem::is_regular_file(path, ec) ? titleblock::InspectTkFile(path) : std::nullopt;
  if (!facts) return "无法读取文件 " + console::Printable(path);
  if (!facts->complete) return console::Printable(path) + " 不是完整的图框信息配置文件";
  return std::nullopt;
}

std::optional<std::string> ReadTkOption(const std::string& path) {
  if (std::optional<std::string> refusal = TkFileRefusal(path)) return refusal;
  if (!titleblock::ReadTkFileInto(titleblock::GlobalTkLibrary(), path, true))
    return "无法读取文件 " + console::Printable(path);
  return std::nullopt;
}

}  // namespace tv::cli
