#include "cli/library_import.h"

#include "console/text_table.h"
#include "host/file_lock.h"

namespace tv::cli {

std::optional<std::string> LibraryFileArgument(const ParsedArgs& args, const std::string& what, std::string& error) {
  if (args.positional.size() < 2) {
    error = "缺少" + what;
    return std::nullopt;
  }
  if (args.positional.size() > 2) {
    error = "多余的参数 " + console::Printable(args.positional[2]);
    return std::nullopt;
  }
  return args.positional[1];
}

std::vector<std::string> KeepAnswers(const ParsedArgs& args) {
  if (args.has("--keep")) return {"Y"};
  if (args.has("--replace")) return {"N"};
  return {};
}

bool UnderFileLock(const std::string& path, const std::function<bool()>& change) {
  host::FileLock lock(path);
  return lock.held() && change();
}

}  // namespace tv::cli
