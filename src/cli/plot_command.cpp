#include "cli/plot_command.h"

#include <unistd.h>

#include <cctype>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <optional>
#include <set>
#include <sstream>
#include <string>

#include "cli/command_line.h"
#include "cli/drawing_list.h"
#include "cli/option_values.h"
#include "cli/report_command.h"
#include "cli/session_launch.h"
#include "cli/window_option.h"
#include "console/console_editor.h"
#include "console/session.h"
#include "console/text_table.h"
#include "host/command_prologue.h"
#include "host/layout_plot.h"
#include "host/module_entry.h"
#include "host/wrappers.h"
#include "plot/output_paths.h"
#include "plot/pdf_merge.h"
#include "plot/plot_job.h"
#include "settings/config.h"
#include "settings/folders.h"
#include "settings/plot_setting.h"

namespace tv::cli {

using console::Printable;
using console::OneLine;
using console::Session;
using console::SessionOptions;
using console::ConsoleEditor;

namespace {

namespace fs = std::filesystem;

constexpr int kExitNoSheets = 4;
constexpr int kExitNotAllWritten = 5;

struct Options : SheetOptions {
  std::optional<std::int32_t> format;
  std::optional<std::string> out;
  std::optional<std::int32_t> pathMode;
  std::optional<std::string> style;
  std::optional<std::int32_t> margin;
  std::optional<std::string> merge;  // one PDF of all sheets, absolute
  std::optional<PlotWindow> window;  // one rectangle by the single plot
  std::vector<std::string> reports;  // workbooks written beside the files: list, index, papers
  std::optional<std::int32_t> signatures;  // "打印签名"
  bool no = false;
  bool timings = false;
  bool verbose = false;
};

std::optional<std::int32_t> FormatCode(std::string_view name) {
  static constexpr std::pair<std::string_view, std::int32_t> kFormats[] = {
      {"pdf", settings::kFormatPdf}, {"dwf", settings::kFormatDwf}, {"jpg", settings::kFormatJpg}, {"png", settings::kFormatPng},
      {"plt", settings::kFormatPlt}, {"eps", settings::kFormatEps}, {"dwg", settings::kFormatDwg}};
  for (const auto& [n, code] : kFormats)
    if (n == name) return code;
  return std::nullopt;
}

std::optional<std::string> ReadOptions(const ParsedArgs& args, Options& options) {
  if (auto error = ReadSheetOptions(args, options)) return error;
  if (auto v = args.value("--format")) {
    options.format = FormatCode(*v);
    if (!options.format) return "输出格式 " + Printable(*v) + " 无效，应为 pdf、dwf、png、jpg、eps、plt 或 dwg";
  }
  if (auto v = args.value("--out")) {
    if (v->empty()) return "输出文件夹不能为空";
    options.out = *v;
  }
  if (auto v = args.value("--path-mode")) {
    options.pathMode = ParseWhole(*v, 0, 2);
    if (!options.pathMode) return "存储路径 " + Printable(*v) + " 无效，应为 0、1 或 2";
  }
  if (options.out && options.pathMode) return "--out 与 --path-mode 只能选一个";
  if (auto v = args.value("--style")) {
    if (v->empty()) return "打印样式不能为空";
    options.style = *v;
  }
  if (auto v = args.value("--margin")) {
    options.margin = ParseWhole(*v, -100, 100);
    if (!options.margin) return "周边留白 " + Printable(*v) + " 无效，应为 -100 到 100 的整数（毫米）";
  }
  if (auto v = args.value("--merge")) {
    if (v->empty()) return "合并后的文件名不能为空";
    const bool dwf = options.format == settings::kFormatDwf;
    if (options.format && *options.format != settings::kFormatPdf && !dwf) return "--merge 只用于 PDF 或 DWF 格式";
    std::error_code ec;
    fs::path target = fs::absolute(*v, ec).lexically_normal();
    const std::string ext = dwf ? ".dwf" : ".pdf";
    std::string given = target.extension().string();
    for (char& c : given) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    if (given != ext) target += ext;
    options.merge = target.string();
  }
  if (auto v = args.value("--report"))
    if (auto error = ReadReportKinds(*v, options.reports)) return error;
  if (auto v = args.value("--signatures")) {
    if (*v != "yes" && *v != "no") return "--signatures " + Printable(*v) + " 无效，应为 yes 或 no";
    options.signatures = *v == "yes" ? 1 : 0;
  }
  if (args.has("--yes") && args.has("--no")) return "--yes 与 --no 只能选一个";
  options.no = args.has("--no");
  options.timings = args.has("--timings");
  options.verbose = args.has("--verbose");
  return std::nullopt;
}

// Proves by writing that files can be made in `folder`, creating it first.
bool FolderTakesFiles(const std::string& folder, std::string& why) {
  std::error_code ec;
  fs::create_directories(folder, ec);
  if (!fs::is_directory(folder, ec)) {
    why = "输出文件夹 " + folder + " 无法创建";
    return false;
  }
  const fs::path probe = fs::path(folder) / (".tvplot-probe-" + std::to_string(::getpid()));
  {
    std::ofstream file(probe);
    file << "probe";
    if (!file.good()) {
      why = "输出文件夹 " + folder + " 无法写入";
      fs::remove(probe, ec);
      return false;
    }
  }
  fs::remove(probe, ec);
  return true;
}

// The style table chosen: one of the system's own by its word, a table of the host's style
// folders by name, or a table file brought into the first style folder. Empty name on failure.
std::string StyleTableName(const std::string& style, std::string& why) {
  for (std::string_view word : {"黑白", "彩色", "蓝白"})
    if (style == word) return style + ".ctb";
  const fs::path given(style);
  std::error_code ec;
  if (!fs::is_regular_file(given, ec)) {
    // A table the host already has.
    for (const std::string& name : host::PlotStyleSheetList())
      if (name == style) return name;
    why = "打印样式表 " + style + " 不存在";
    return {};
  }
  if (given.extension() != ".ctb") {
    why = "打印样式表 " + style + " 不是 .ctb 文件";
    return {};
  }
  const std::string folder = settings::FirstUsableFolder(settings::PrinterStyleFolders());
  const fs::path target = fs::path(folder) / given.filename();
  if (fs::exists(target, ec)) {
    if (fs::equivalent(target, given, ec)) return given.filename().string();
    std::ifstream a(target, std::ios::binary), b(given, std::ios::binary);
    std::ostringstream ta, tb;
    ta << a.rdbuf();
    tb << b.rdbuf();
    if (ta.str() != tb.str()) {
      why = "打印样式文件夹中已有另一个同名的样式表 " + target.string();
      return {};
    }
    return given.filename().string();
  }
  fs::copy_file(given, target, ec);
  if (ec) {
    why = "打印样式表无法复制到 " + folder;
    return {};
  }
  return given.filename().string();
}

// The file of a window plot: the drawing's name in the output folder.
std::string SingleFilePath(const std::string& folder, const std::string& drawing, std::int32_t format) {
  const std::string stem = fs::path(drawing).stem().string();
  const std::string ext = plot::FormatExtension(format);
  if (format == settings::kFormatDwg) return (fs::path(folder) / (stem + "_单页" + ext)).string();
  return (fs::path(folder) / (stem + ext)).string();
}

std::string Seconds(double s) {
  char text[32];
  std::snprintf(text, sizeof text, "%.2f", s);
  return text;
}

}  // namespace

void DefinePlotOutputOptions(CLI::App& app) {
  AddValue(app, "--format", "F", "输出格式，默认取图纸的打印设置（tvplot config show）");
  AddValue(app, "--out", "文件夹", "输出到该文件夹（不存在时创建）");
  AddValue(app, "--path-mode", "N", "0 图纸所在文件夹，1 图纸所在文件夹下按格式命名的子文件夹，2 设置中的自选文件夹");
  AddValue(app, "--style", "S", "打印样式：黑白、彩色、蓝白，或一个 .ctb 样式表文件");
  AddValue(app, "--margin", "M", "周边留白（毫米，-100 到 100）：正数加大纸张，负数缩小可打印区域");
  AddValue(app, "--merge", "文件.pdf", "全部图纸合并为这一个 PDF 文件，每张图纸一个书签；与 --format dwf 一起则合并为一个多页 DWF 文件");
  AddFlag(app, "--yes", "对打印过程中的是/否提问一律回答“是”（默认）");
  AddFlag(app, "--no", "对打印过程中的是/否提问一律回答“否”");
  AddFlag(app, "--verbose", "显示命令行的全部过程");
  AddValue(app, "--signatures", "yes|no", "打印签名，默认取图纸的打印设置");
  AddValue(app, "--report", "list,index,papers", "打印后在输出文件夹写入表格：文件清单、图纸目录、纸张统计");
}

// A merge's numbered files are gone once it ends: the summary names the sheets that didn't plot
// and the merged file, which holds the others.
// The time a file was last written; none when it isn't there.
std::optional<fs::file_time_type> WrittenAt(const std::string& path) {
  std::error_code ec;
  const fs::file_time_type t = fs::last_write_time(path, ec);
  return ec ? std::nullopt : std::optional(t);
}

int MergeSummary(ConsoleEditor& editor, int listed, const std::string& target,
                 const std::optional<fs::file_time_type>& oldTarget, std::chrono::steady_clock::time_point started,
                 CliStreams& io) {
  std::size_t plotted = 0;
  for (const ConsoleEditor::PlotRecord& p : editor.plots()) {
    if (p.ok) ++plotted;
    else io.err << "未输出 " << (p.path.empty() ? std::string("（无文件名）") : p.path) << "：" << OneLine(p.message) << '\n';
  }
  // A target left from before, which a failed merge leaves alone, is no result of this run.
  std::error_code ec;
  const bool merged = fs::is_regular_file(target, ec) && (!oldTarget || WrittenAt(target) != oldTarget);
  const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
  if (merged) io.out << target << '\n';
  else io.err << "未能合并为 " << target << '\n';
  io.out << "共 " << listed << " 张图纸，已合并 " << (merged ? plotted : 0) << " 张到 " << target << "，用时 "
         << Seconds(seconds) << " 秒\n";
  io.out.flush();
  // What the merge said (a program missing, the merge failing) is shown whatever the outcome; the
  // questions the run answered by itself are not.
  for (const std::string& m : editor.notices()) io.err << "tvplot: " << OneLine(m) << '\n';
  return merged && plotted == static_cast<std::size_t>(listed) ? kExitOk : kExitNotAllWritten;
}

int RunFileBatch(const ParsedArgs& args, CliStreams& io, const FileBatch& batch) {
  const std::string program(batch.program);
  Options options;
  ParsedArgs words = args;
  if (auto error = ReadWindowOption(args, words.positional, options.window)) return args.usage(io, *error);
  if (batch.drawing.empty() && ManyDrawings(words.positional)) {
    if (options.window) return args.usage(io, "--window 只用于一个图纸文件");
    return RunDrawings(args, io, batch);
  }
  if (auto error = batch.drawing.empty() ? words.oneDrawingError() : std::nullopt) return args.usage(io, *error);
  if (auto error = ReadOptions(args, options)) return args.usage(io, *error);
  if (batch.merge) options.merge = batch.merge;
  if (options.window && options.merge) return args.usage(io, "--window 与 --merge 只能选一个");
  if (options.window && !options.reports.empty()) return args.usage(io, "--window 与 --report 只能选一个");

  const std::string& path = batch.drawing.empty() ? words.positional.front() : batch.drawing;
  auto db = LoadDrawing(path, io);
  if (!db) return kExitUnreadable;

  const auto started = std::chrono::steady_clock::now();
  std::ostringstream transcript;
  SessionOptions sessionOptions = TranscriptOptions(transcript, io);
  sessionOptions.yesNoAnswer = !options.no;
  sessionOptions.progressPrefix = batch.progressPrefix;
  Session session(std::move(*db), path, std::move(sessionOptions));
  const NoticesToErr notices(io);
  host::OnLoad();
  const settings::Config userConfig = settings::GlobalConfig();
  const settings::PlotSettingRec drawingSetting = settings::CurrentPlotSetting();
  // The options steer this run only: what the run stores is put back before unload saves it.
  const auto restore = [&] {
    host::ShowTimings = false;
    plot::FixedListScale().reset();
    settings::GlobalConfig() = userConfig;
    settings::CurrentPlotSetting() = drawingSetting;
    host::OnUnload();
  };

  if (batch.prepare) {
    if (std::optional<FileBatch::Refusal> refusal = batch.prepare()) {
      io.err << program << ": " << refusal->message << '\n';
      restore();
      return refusal->exitCode;
    }
  }

  settings::PlotSettingRec rec = drawingSetting;
  settings::Config& config = settings::GlobalConfig();
  config.open_folder_after = 0;  // the summary names the folder; no file manager pops up
  if (options.format) rec.format = *options.format;
  if (options.margin) rec.margin = *options.margin;
  if (options.signatures) rec.plot_signatures = *options.signatures;
  if (options.order) rec.sort_style = *options.order;
  if (options.pathMode) rec.path_mode = *options.pathMode;
  if (options.out) {
    rec.path_mode = plot::kPathCustom;
    std::error_code ec;
    rec.custom_path = fs::absolute(*options.out, ec).lexically_normal().string();
  }
  if (options.scale) plot::FixedListScale() = *options.scale;
  // Only --merge joins the sheets: a merge the user's settings ask for would ask for its file.
  config.merge_pdf = options.merge ? 1 : 0;
  config.pdf_open_after_merge = 0;
  if (options.merge) rec.format = options.format == settings::kFormatDwf ? settings::kFormatDwf : settings::kFormatPdf;
  if (options.style) {
    std::string why;
    const std::string name = StyleTableName(*options.style, why);
    if (name.empty()) {
      io.err << program << ": " << why << '\n';
      restore();
      return kExitUsage;
    }
    config.last_plot_style = name;
  }
  std::string folderCustom = rec.custom_path;
  const std::string folder = options.merge ? fs::path(*options.merge).parent_path().string()
                            : options.out ? rec.custom_path
                                          : plot::OutputFolder(rec.path_mode, rec.format, folderCustom);
  if (std::string why; !batch.summary && !FolderTakesFiles(folder, why)) {
    io.err << program << ": " << why << "，未打印\n";
    restore();
    return kExitNotAllWritten;
  }
  if (batch.adjust) batch.adjust(rec);
  settings::SaveDwgPlotSetting(rec);
  host::ShowTimings = options.timings;

  // The range, the review list's OK, and Esc for the list the command shows again at the end.
  ConsoleEditor& editor = session.editor();
  std::vector<std::string> answers = RangeAnswers(options.range, host::IsPaperSpace());
  answers.insert(answers.end(), batch.listAnswers.begin(), batch.listAnswers.end());
  answers.emplace_back("");
  answers.insert(answers.end(), batch.runAnswers.begin(), batch.runAnswers.end());
  if (options.merge) answers.push_back(*options.merge);  // the file the merge asks for
  answers.emplace_back("^C");
  if (options.window) {
    if (WindowIsEmpty(*options.window)) {
      restore();
      io.err << program << ": 打印窗口内没有图形，未打印\n";
      return kExitNoSheets;
    }
    config.choose_folder = 1;  // the file is named, never a throw-away in the temporary folder
    answers = WindowAnswers(*options.window, SingleFilePath(folder, path, rec.format));
  }
  editor.answers().pushFront(answers);
  const std::optional<fs::file_time_type> oldTarget = options.merge ? WrittenAt(*options.merge) : std::nullopt;
  if (batch.mergedBookmarks)
    plot::SetMergeListener([list = batch.mergedBookmarks](const std::vector<std::string>& names) { *list = names; });
  session.runCommandLine(options.window ? std::string("TV_BatchPlot_1") : std::string(batch.command));
  plot::SetMergeListener({});
  const int listed = options.window ? 1 : editor.lastListRows();
  const bool reportsWritten = options.reports.empty() || listed <= 0 ||
                              WriteRunReports(options.reports, batch.command == "TV_BatchPlot_4", folder, options.range, editor, io);
  restore();

  if (options.verbose || options.timings) io.err << transcript.str() << '\n';
  if (listed <= 0) {
    io.err << program << ": 未找到图框\n";
    return kExitNoSheets;
  }
  if (batch.summary) {
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
    return batch.summary(editor, listed, seconds);
  }
  if (options.merge) return MergeSummary(editor, listed, *options.merge, oldTarget, started, io);
  // The summary counts what the folder holds now: the files this run wrote, each once, that are
  // still there (every file there is complete, as each is written under another name first).
  std::set<std::string> present;
  for (const ConsoleEditor::PlotRecord& p : editor.plots()) {
    std::error_code ec;
    if (!p.ok) {
      io.err << "未输出 " << (p.path.empty() ? std::string("（无文件名）") : p.path) << "：" << OneLine(p.message) << '\n';
    } else if (!fs::is_regular_file(p.path, ec)) {
      io.err << "未输出 " << p.path << "：文件写入后已不在输出文件夹中\n";
    } else if (!present.insert(p.path).second) {
      io.err << "文件 " << p.path << " 被本次打印中同名的另一张图纸覆盖\n";
    } else {
      io.out << p.path << '\n';
      if (batch.writtenFiles) batch.writtenFiles->push_back(p.path);
    }
  }
  const std::size_t written = present.size();
  const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
  io.out << "共 " << listed << " 张图纸，已输出 " << written << " 个文件到 " << folder << "，用时 " << Seconds(seconds)
         << " 秒\n";
  io.out.flush();
  if (written == static_cast<std::size_t>(listed)) return reportsWritten ? kExitOk : kExitNotAllWritten;
  if (editor.plots().empty())
    for (const std::string& m : editor.messages()) io.err << program << ": " << OneLine(m) << '\n';
  return kExitNotAllWritten;
}

namespace {

void DefinePlot(CLI::App& app) {
  Describe(app,
           "用法：tvplot plot 图纸.dxf|文件夹 … [--format pdf|dwf|png|jpg|eps|plt|dwg] [--out 文件夹 | --path-mode 0|1|2]\n"
           "                  [--style 黑白|彩色|蓝白|样式表.ctb] [--margin 毫米] [--scale 比例] [--order 1-9]\n"
           "                  [--range 范围] [--merge 文件.pdf] [--signatures yes|no] [--yes | --no] [--timings] [--verbose]\n"
           "       tvplot plot 图纸.dxf --window X1,Y1 X2,Y2 [--scale 比例] [--out 文件夹] …\n"
           "  识别图纸中的全部图框，按批打印（通用型）逐张输出为文件，每个文件一行，最后给出汇总。\n"
           "  --window 只打印这一个窗口（单张打印到文件），纸张与比例自动确定。\n",
           "  选项只用于本次打印，不改变用户配置；图纸文件本身不会被改写。\n"
           "  退出码：0 全部图纸已输出，1 用法错误，2 图纸无法读取，4 未找到图框，5 有图纸未能输出\n");
  DefinePlotOutputOptions(app);
  AddValue(app, "--scale", "S", "所有图框按 1:S 确定纸张（默认按多数图框推断）");
  AddValue(app, "--window", "X1,Y1 X2,Y2", "只打印这两个角点围成的窗口，输出一个文件（退出码 4：窗口内没有图形）");
  AddValue(app, "--order", "N", "打印顺序 1 到 9（同 tvplot sheets）");
  AddValue(app, "--range", "R", "model、layouts、all（默认）或 current");
  AddFlag(app, "--timings", "显示各阶段耗时");
}

int RunPlot(const ParsedArgs& args, CliStreams& io) {
  return RunFileBatch(args, io, {"tvplot plot", "TV_BatchPlot_2", {}});
}

}  // namespace

const Subcommand& PlotSubcommand() {
  static const Subcommand kPlot{"plot", "识别图框并批量打印到文件", &DefinePlot, &RunPlot};
  return kPlot;
}

}  // namespace tv::cli
