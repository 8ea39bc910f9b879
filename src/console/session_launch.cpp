#include "console/session_launch.h"

#include <filesystem>
#include <system_error>

#include "cad/drawing_file.h"
#include "cad/dxf_writer.h"
#include "console/answer_source.h"
#include "console/args.h"
#include "console/text_table.h"
#include "host/wrappers.h"

namespace tv::console {

std::optional<LaunchRequest> ParseLaunch(std::string_view subcommand, std::string_view usage,
                                         const std::vector<std::string>& args, std::size_t positionalCount,
                                         CliStreams& io, int& exitCode) {
  const std::string who = "tvplot " + std::string(subcommand) + ": ";
  ArgParseResult parsed = ParseArgs(args, {.flags = {"--timings"}, .valueOptions = {"--answers", "--answer", "--save-as"}});
  if (!parsed.args) {
    io.err << who << parsed.error << '\n' << usage;
    exitCode = kExitUsage;
    return std::nullopt;
  }
  const ParsedArgs& a = *parsed.args;
  if (a.positional.size() < positionalCount) {
    io.err << who << (a.positional.empty() ? "缺少图纸文件" : "缺少命令") << '\n' << usage;
    exitCode = kExitUsage;
    return std::nullopt;
  }
  if (a.positional.size() > positionalCount) {
    io.err << who << "多余的参数 " << Printable(a.positional[positionalCount]) << '\n' << usage;
    exitCode = kExitUsage;
    return std::nullopt;
  }
  LaunchRequest request;
  request.positional = a.positional;
  if (auto target = a.value("--save-as")) {
    // The user's drawing is never written over; the result goes to a file of its own.
    std::error_code ec;
    const bool same = *target == a.positional[0] || std::filesystem::equivalent(*target, a.positional[0], ec);
    if (target->empty() || same) {
      io.err << who << "--save-as 须是另一个文件，不覆盖原图纸\n" << usage;
      exitCode = kExitUsage;
      return std::nullopt;
    }
    request.saveAs = *target;
  }
  request.timings = a.has("--timings");
  for (const auto& [option, value] : a.values)
    if (option == "--answer") request.answers.push_back(value);
  if (auto file = a.value("--answers")) {
    std::string error;
    auto lines = ReadAnswersFile(*file, error);
    if (!lines) {
      io.err << OneLine(error) << '\n';
      exitCode = kExitUnreadable;
      return std::nullopt;
    }
    request.answers.insert(request.answers.end(), lines->begin(), lines->end());
  }
  return request;
}

SessionOptions TranscriptOptions(std::ostringstream& transcript, CliStreams& io) {
  SessionOptions options;
  options.out = &transcript;
  options.err = &io.err;
  options.progress = io.errIsTerminal;
  return options;
}

std::map<ObjectId, std::string> LayoutNamesByBlock() {
  std::map<ObjectId, std::string> names;
  for (const host::LayoutFacts& l : host::ListLayouts())
    if (!l.blockId.isNull()) names.emplace(l.blockId, l.name);
  return names;
}

std::vector<std::string> RangeAnswers(const std::string& range, bool inLayout) {
  int item = 2;
  if (range == "model") item = 0;
  else if (range == "layouts") item = 1;
  else if (range == "current") item = inLayout ? 3 : 0;
  return {"", std::to_string(item + 1)};
}

std::optional<cad::Database> LoadDrawing(const std::string& path, CliStreams& io) {
  std::error_code ec;
  auto status = std::filesystem::status(path, ec);
  if (!std::filesystem::exists(status)) {
    io.err << OneLine("图纸文件 " + path + " 不存在") << '\n';
    return std::nullopt;
  }
  if (std::filesystem::is_directory(status)) {
    io.err << OneLine(path + " 是文件夹，不是图纸文件") << '\n';
    return std::nullopt;
  }
  cad::DxfReadResult result = cad::ReadDrawing(path);
  if (!result.ok()) {
    io.err << OneLine(result.error.empty() ? "图纸文件 " + path + " 无法读取" : result.error) << '\n';
    return std::nullopt;
  }
  return std::move(*result.db);
}

bool SaveDrawingAs(const cad::Database& db, const std::string& path, CliStreams& io) {
  namespace fs = std::filesystem;
  const std::string temporary = path + ".tvsave";
  const cad::Status written = cad::WriteDxf(db, temporary);
  std::error_code ec;
  if (!written.ok) {
    fs::remove(temporary, ec);
    io.err << OneLine("图纸无法保存为 " + path + "：" + written.message) << '\n';
    return false;
  }
  fs::rename(temporary, path, ec);
  if (ec) {
    fs::remove(temporary, ec);
    io.err << OneLine("图纸无法保存为 " + path) << '\n';
    return false;
  }
  return true;
}

}  // namespace tv::console
