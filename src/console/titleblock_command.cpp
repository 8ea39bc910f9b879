#include "console/titleblock_command.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "console/args.h"
#include "console/console_editor.h"
#include "console/json_writer.h"
#include "console/option_values.h"
#include "console/plot_command.h"
#include "console/session.h"
#include "console/session_launch.h"
#include "console/text_table.h"
#include "host/command_prologue.h"
#include "host/module_entry.h"
#include "host/wrappers.h"
#include "plot/output_paths.h"
#include "plot/plot_job.h"
#include "plot/title_review.h"
#include "titleblock/title_sheets.h"
#include "titleblock/tk_library.h"

namespace tv::console {

namespace {

constexpr std::string_view kUsage =
    "用法：tvplot titleblock 图纸.dxf [--tk 图框信息.tk] [--range 范围] [--json] [--timings]\n"
    "      tvplot titleblock 图纸.dxf [--tk 图框信息.tk] --plot [tvplot plot 的选项]\n"
    "  按图框信息库中定义的图框（图块）识别图纸，每个图框插入为一张图纸，从图框读取\n"
    "  图号、版次、图名、日期、信息1、信息2，按图框的命名规则得到文件名。\n"
    "  --tk 文件        使用该图框信息文件（默认用户的图框信息库，见 tvplot tk list）\n"
    "  --range R        model 模型空间，layouts 所有布局，all 布局+模型（默认），current 当前空间\n"
    "  --json           以一个 JSON 对象输出：每张图纸的图块名、空间、范围、纸张、比例、\n"
    "                   六项图框信息、四个印章位置和文件名\n"
    "  --timings        显示各阶段耗时\n"
    "  --plot           逐张输出为文件，选项同 tvplot plot（--format、--out、--style …，\n"
    "                   --scale、--order 除外），\n"
    "                   多行图名以图框信息库的“多图名间字符”连接\n"
    "  图纸文件本身不会被改写。\n"
    "  退出码：0 完成，1 用法错误，2 图纸或图框信息文件无法读取，4 未找到图框或图框信息库为空，\n"
    "          5 有图纸未能输出\n";

constexpr int kExitNoSheets = 4;
constexpr std::string_view kLibraryHint = "（可用 --tk 指定图框信息文件，或用 tvplot tk import 导入）";
constexpr std::array<const char*, 6> kFieldKeys{"drawingNo", "revision", "title", "date", "info1", "info2"};

int Usage(CliStreams& io, const std::string& message) {
  io.err << "tvplot titleblock: " << message << '\n' << kUsage;
  return kExitUsage;
}

// The library the run reads: the file of --tk in place of the user's, which stays as it is on disk.
std::optional<FileBatch::Refusal> PrepareLibrary(const std::optional<std::string>& tkPath) {
  titleblock::TK_Library& library = titleblock::GlobalTkLibrary();
  if (tkPath) {
    std::error_code ec;
    if (!std::filesystem::is_regular_file(*tkPath, ec) || !titleblock::LoadTkFileFrom(library, *tkPath, false))
      return FileBatch::Refusal{"图框信息文件 " + *tkPath + " 无法读取", kExitUnreadable};
  }
  if (library.definitions.empty())
    return FileBatch::Refusal{OneLine(std::string(titleblock::kEmptyLibraryMessage)) + std::string(kLibraryHint), kExitNoSheets};
  return std::nullopt;
}

// --plot and --tk taken out, so that the rest are the options of tvplot plot.
std::vector<std::string> PlotArguments(const std::vector<std::string>& args, std::optional<std::string>& tkPath,
                                       std::string& error) {
  std::vector<std::string> rest;
  for (std::size_t i = 0; i < args.size(); ++i) {
    const std::string& a = args[i];
    if (a == "--") {
      rest.insert(rest.end(), args.begin() + static_cast<std::ptrdiff_t>(i), args.end());
      break;
    }
    if (a == "--plot") continue;
    if (a == "--tk") {
      if (i + 1 >= args.size()) error = "选项 --tk 缺少值";
      else tkPath = args[++i];
      continue;
    }
    if (a.starts_with("--tk=")) {
      tkPath = a.substr(5);
      continue;
    }
    // The definitions fix each sheet's paper and scale, and the rows stay in the order found.
    for (std::string_view fixed : {"--scale", "--order"})
      if (a == fixed || a.starts_with(std::string(fixed) + "="))
        error = "图框型批打印的比例、顺序由图框定义确定，不接受 " + std::string(fixed);
    rest.push_back(a);
  }
  return rest;
}

std::string LayoutOf(const titleblock::Plot_Drawing2& s, const std::map<ObjectId, std::string>& layouts) {
  const auto it = layouts.find(s.space_id);
  return it == layouts.end() ? std::string() : it->second;
}

void WriteText(const plot::Dlg_BPlot2& form, const std::map<ObjectId, std::string>& layouts, std::ostream& out) {
  TextTable table;
  table.addRow({"序 号", "空 间", "图 块", "  文 件 名  ", "纸 张", "打印比例", "图 号", "版 次", "图 名", "日 期"});
  const auto cells = plot::BPlot2Cells(form);
  for (std::size_t i = 0; i < cells.size(); ++i) {
    const titleblock::Plot_Drawing2& s = *form.rows[i].sheet;
    const std::string title = plot::WithTitleSeparator(s.field_text[2], titleblock::GlobalTkLibrary().TitleSeparator);
    table.addRow({cells[i][0], Printable(LayoutOf(s, layouts)), Printable(s.definition ? s.definition->block_name : ""),
                  Printable(cells[i][2]), cells[i][4], cells[i][5], Printable(cells[i][6]), Printable(cells[i][7]),
                  Printable(title), Printable(cells[i][8])});
  }
  out << plot::kBPlot2Title << "（图框型）：" << form.rows.size() << " 张\n";
  table.print(out);
}

void WriteJson(const plot::Dlg_BPlot2& form, const std::map<ObjectId, std::string>& layouts, std::ostream& out) {
  const std::string& separator = titleblock::GlobalTkLibrary().TitleSeparator;
  JsonWriter json(out);
  json.beginObject();
  json.field("count", form.rows.size());
  json.field("titleSeparator", separator);
  json.key("sheets");
  json.beginArray();
  const std::vector<std::string> names = plot::TitleFileNames(form);
  for (std::size_t r = 0; r < form.rows.size(); ++r) {
    const plot::BPlot2Row& row = form.rows[r];
    const titleblock::Plot_Drawing2& s = *row.sheet;
    json.beginObject();
    json.field("number", static_cast<std::int64_t>(s.number));
    json.field("blockName", s.definition ? s.definition->block_name : std::string());
    json.field("layout", LayoutOf(s, layouts));
    json.field("minX", s.min_x);
    json.field("minY", s.min_y);
    json.field("maxX", s.max_x);
    json.field("maxY", s.max_y);
    json.field("width", s.width);
    json.field("height", s.height);
    json.field("portrait", s.portrait);
    json.field("paperName", row.paperName);
    json.field("paper", row.paperText);
    json.field("scale", s.scale);
    json.field("scaleText", row.scaleText);
    json.key("fields");
    json.beginObject();
    for (std::size_t i = 0; i < kFieldKeys.size(); ++i)
      json.field(kFieldKeys[i], plot::WithTitleSeparator(s.field_text[i], separator));
    json.endObject();
    json.key("stamps");
    json.beginArray();
    for (const Point2d& p : s.stamp_point) {
      if (titleblock::IsNoStampPoint(p)) {
        json.null();
        continue;
      }
      json.beginArray();
      json.value(p.x);
      json.value(p.y);
      json.endArray();
    }
    json.endArray();
    json.field("stampRotation", s.stamp_rotation);
    json.field("file_name", names[r]);
    json.field("note", row.note);
    json.endObject();
  }
  json.endArray();
  json.endObject();
  json.finish();
}

int ListTitleBlocks(const std::vector<std::string>& args, CliStreams& io) {
  ArgParseResult parsed = ParseArgs(args, {.flags = {"--json", "--timings"}, .valueOptions = {"--range", "--tk"}});
  if (!parsed.args) return Usage(io, parsed.error);
  if (parsed.args->positional.empty()) return Usage(io, "缺少图纸文件");
  if (parsed.args->positional.size() > 1) return Usage(io, "多余的参数 " + Printable(parsed.args->positional[1]));
  SheetOptions range;
  if (auto error = ReadSheetOptions(*parsed.args, range)) return Usage(io, *error);
  const bool json = parsed.args->has("--json");
  const bool timings = parsed.args->has("--timings");

  const std::string& path = parsed.args->positional.front();
  auto db = LoadDrawing(path, io);
  if (!db) return kExitUnreadable;

  std::ostringstream transcript;
  Session session(std::move(*db), path, TranscriptOptions(transcript, io));
  host::OnLoad();
  if (std::optional<FileBatch::Refusal> refusal = PrepareLibrary(parsed.args->value("--tk"))) {
    io.err << "tvplot titleblock: " << refusal->message << '\n';
    host::OnUnload();
    return refusal->exitCode;
  }
  host::ShowTimings = timings;
  session.editor().answers().pushFront(RangeAnswers(range.range, host::IsPaperSpace()));

  int exitCode = kExitOk;
  if (plot::Dlg_BPlot2* form = plot::RecogniseTitleBatch()) {
    const auto layouts = LayoutNamesByBlock();
    if (json) WriteJson(*form, layouts, io.out);
    else WriteText(*form, layouts, io.out);
    host::StageTimer(form->stageTick, "显示对话框");
  } else {
    io.err << "tvplot titleblock: 未找到图框\n";
    exitCode = kExitNoSheets;
  }
  if (timings) io.err << transcript.str() << '\n';
  host::ShowTimings = false;
  host::OnUnload();
  io.out.flush();
  return exitCode;
}

int RunTitleBlock(const std::vector<std::string>& args, CliStreams& io) {
  const auto end = std::find(args.begin(), args.end(), std::string("--"));
  if (std::find(args.begin(), end, std::string("--plot")) == end) return ListTitleBlocks(args, io);

  std::optional<std::string> tkPath;
  std::string error;
  const std::vector<std::string> plotArgs = PlotArguments(args, tkPath, error);
  if (!error.empty()) return Usage(io, error);
  return RunFileBatch(plotArgs, io, {"tvplot titleblock", kUsage, "TV_BatchPlot_4", [tkPath] { return PrepareLibrary(tkPath); }});
}

}  // namespace

const Subcommand& TitleBlockSubcommand() {
  static const Subcommand kTitleBlock{"titleblock", "按图框信息库识别图框、读取图框信息并批量打印", kUsage,
                                      &RunTitleBlock};
  return kTitleBlock;
}

}  // namespace tv::console
