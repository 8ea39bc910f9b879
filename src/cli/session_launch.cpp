#include "cli/session_launch.h"

#include <filesystem>
#include <system_error>

#include "cad/drawing_file.h"
#include "cad/dxf_writer.h"
#include "cli/xref_loading.h"
#include "console/answer_source.h"
#include "console/text_table.h"
#include "host/module_entry.h"
#include "host/wrappers.h"

namespace tv::cli {

using console::Printable;
using console::OneLine;
using console::SessionOptions;
using console::ReadAnswersFile;

void DefineLaunchOptions(CLI::App& app, const std::string& saveAs) {
  AddValue(app, "--answers", "文件", "依次回答提示的应答，每行一条（UTF-8）");
  AddValue(app, "--answer", "文本", "一条应答，可重复；排在应答文件之前");
  AddFlag(app, "--timings", "显示各阶段耗时");
  AddValue(app, "--save-as", "文件", saveAs);
}

std::optional<LaunchRequest> ParseLaunch(const ParsedArgs& a, std::size_t positionalCount, CliStreams& io,
                                         int& exitCode) {
  if (a.positional.size() < positionalCount) {
    exitCode = a.usage(io, a.positional.empty() ? "缺少图纸文件" : "缺少命令");
    return std::nullopt;
  }
  if (a.positional.size() > positionalCount) {
    exitCode = a.usage(io, "多余的参数 " + Printable(a.positional[positionalCount]));
    return std::nullopt;
  }
  LaunchRequest request;
  request.positional = a.positional;
  if (auto target = a.value("--save-as")) {
    // The user's drawing is never written over; the result goes to a file of its own.
    std::error_code ec;
    const bool same = *target == a.positional[0] || std::filesystem::equivalent(*target, a.positional[0], ec);
    if (target->empty() || same) {
      exitCode = a.usage(io, "--save-as 须是另一个文件，不覆盖原图纸");
      return std::nullopt;
    }
    request.saveAs = *target;
  }
  request.timings = a.has("--timings");
  request.answers = a.values("--answer");
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

NoticesToErr::NoticesToErr(CliStreams& io)
    : scope_([&io](std::string_view text) {
        std::string line = OneLine(std::string(text));
        line.erase(0, line.find_first_not_of(' '));
        io.err << line << '\n';
      }) {}

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
  host::RegisterEntityReaders();
  cad::DxfReadResult result = cad::ReadDrawing(path);
  if (!result.ok()) {
    io.err << OneLine(result.error.empty() ? "图纸文件 " + path + " 无法读取" : result.error) << '\n';
    return std::nullopt;
  }
  LoadXrefsOf(*result.db, path, io);
  return std::move(*result.db);
}

bool SaveDrawingAs(const cad::Database& db, const std::string& path, CliStreams& io) {
  std::error_code ec;
  for (const std::string& xref : db.externalFiles)
    if (std::filesystem::equivalent(path, xref, ec)) {
      io.err << OneLine("图纸无法保存为 " + path + "：该文件是图纸的外部参照") << '\n';
      return false;
    }
  // The writer goes through a temporary file of its process and renames it over `path`.
  const cad::Status written = cad::WriteDxf(db, path);
  if (!written.ok) {
    io.err << OneLine("图纸无法保存为 " + path + "：" + written.message) << '\n';
    return false;
  }
  return true;
}

}  // namespace tv::cli
