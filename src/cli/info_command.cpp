#include "cli/info_command.h"

#include <filesystem>
#include <system_error>

#include "cad/drawing_file.h"
#include "cli/command_line.h"
#include "cli/drawing_summary.h"
#include "cli/info_report.h"
#include "cli/xref_loading.h"
#include "console/progress_line.h"
#include "console/text_table.h"

namespace tv::cli {

using console::Printable;
using console::OneLine;
using console::ProgressLine;

namespace {

// Below this a read is over before a progress figure would be of any use.
constexpr std::uintmax_t kProgressThreshold = 20u * 1024 * 1024;

int Fail(CliStreams& io, const std::string& message) {
  io.err << OneLine(message) << '\n';
  return kExitUnreadable;
}

void DefineInfo(CLI::App& app) {
  Describe(app,
           "用法：tvplot info 图纸.dxf [--json]\n"
           "  显示图纸的版本、单位、各空间的实体数、图层、布局、块、词典和读取警告。\n");
  AddFlag(app, "--json", "以一个 JSON 对象输出");
}

int RunInfo(const ParsedArgs& args, CliStreams& io) {
  if (auto error = args.oneDrawingError()) return args.usage(io, *error);
  const std::string& path = args.positional.front();

  // The reader would also fail on these, but with a less direct message.
  std::error_code ec;
  auto status = std::filesystem::status(path, ec);
  if (!std::filesystem::exists(status)) return Fail(io, "图纸文件 " + path + " 不存在");
  if (std::filesystem::is_directory(status)) return Fail(io, path + " 是文件夹，不是图纸文件");
  std::uintmax_t size = std::filesystem::file_size(path, ec);

  cad::DxfReadResult result;
  {
    std::string name = std::filesystem::path(path).filename().string();
    ProgressLine progress(io.err, io.errIsTerminal && !ec && size > kProgressThreshold, "正在读取 " + Printable(name));
    cad::DxfReadOptions options;
    options.progress = [&](std::uint64_t done, std::uint64_t total) { progress.update(done, total); };
    result = cad::ReadDrawing(path, options);
  }
  if (!result.ok()) return Fail(io, result.error.empty() ? "图纸文件 " + path + " 无法读取" : result.error);

  const cad::XrefLoadResult xrefs = LoadXrefsOf(*result.db, path, io);
  DrawingSummary summary = SummarizeDrawing(*result.db, path, result.warnings);
  summary.source = result.source;
  summary.xrefs = XrefSummaries(xrefs);
  if (args.has("--json")) WriteInfoJson(summary, io.out);
  else WriteInfoText(summary, io.out);
  io.out.flush();
  return kExitOk;
}

}  // namespace

const Subcommand& InfoSubcommand() {
  static const Subcommand kInfo{"info", "显示图纸信息：版本、单位、实体、图层、布局、块、词典", &DefineInfo, &RunInfo};
  return kInfo;
}

}  // namespace tv::cli
