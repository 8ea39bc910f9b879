#include "cli/sheets_command.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <map>
#include <optional>
#include <sstream>
#include <string>

#include "cli/command_line.h"
#include "cli/json_output.h"
#include "cli/option_values.h"
#include "cli/row_preview_option.h"
#include "cli/session_launch.h"
#include "console/console_editor.h"
#include "console/session.h"
#include "console/text_table.h"
#include "host/command_prologue.h"
#include "host/module_entry.h"
#include "host/wrappers.h"
#include "plot/generic_review.h"
#include "plot/plot_job.h"
#include "plot/row_preview.h"
#include "settings/config.h"
#include "settings/plot_setting.h"

namespace tv::cli {

using console::Printable;
using console::TextTable;
using console::Session;

namespace {

constexpr int kExitNoSheets = 4;
constexpr int kExitNoPreview = 5;
constexpr std::string_view kFileNameColumn = "  文 件 名  ";

struct Options : SheetOptions {
  // Unset: as the user's configuration and the drawing's plot settings say.
  std::optional<double> filter;
  std::optional<bool> looseLines;
  std::optional<std::string> blocks;
  std::optional<bool> skipBlank;
  bool json = false;
  bool timings = false;
  std::optional<std::size_t> preview;  // row from 1
};

std::optional<bool> ParseSwitch(std::string_view text) {
  if (text == "on") return true;
  if (text == "off") return false;
  return std::nullopt;
}

// Fills `options` from the arguments; an error message when one is bad.
std::optional<std::string> ReadOptions(const ParsedArgs& args, Options& options) {
  if (auto error = ReadSheetOptions(args, options)) return error;
  if (auto v = args.value("--filter")) {
    const auto p = ParseNumber(*v);
    if (!p || *p < 0.0 || *p > 30.0) return "过滤比例应在 0 ~ 30 % 之间 !";
    options.filter = *p;
  }
  if (auto v = args.value("--blocks")) {
    if (*v != "all" && *v != "rect" && *v != "none") return "图块选项 " + Printable(*v) + " 无效，应为 all、rect 或 none";
    options.blocks = *v;
  }
  for (auto [name, target] :
       {std::pair{"--loose-lines", &options.looseLines}, std::pair{"--skip-blank", &options.skipBlank}}) {
    if (auto v = args.value(name)) {
      const auto on = ParseSwitch(*v);
      if (!on) return std::string("选项 ") + name + " 应为 on 或 off";
      *target = *on;
    }
  }
  if (auto v = args.value("--preview")) {
    const auto n = ParseNumber(*v);
    if (!n || *n < 1 || *n != std::floor(*n) || *n > 1e9) return "--preview 应为图纸的序号（从 1 起）";
    options.preview = static_cast<std::size_t>(*n);
  }
  options.json = args.has("--json");
  options.timings = args.has("--timings");
  return std::nullopt;
}

// The options steer this listing only: the caller puts the user's settings back before they are
// saved at unload.
void ApplySettings(const Options& options) {
  settings::Config& config = settings::GlobalConfig();
  if (options.looseLines) config.frame_loose_lines = *options.looseLines ? 1 : 0;
  if (options.blocks) {
    config.frame_all_blocks = *options.blocks == "all" ? 1 : 0;
    config.frame_rect_blocks = *options.blocks == "rect" ? 1 : 0;
  }
  if (options.skipBlank) config.skip_blank_rect = *options.skipBlank ? 1 : 0;
  settings::PlotSettingRec& rec = settings::CurrentPlotSetting();
  if (options.filter) rec.filter_ratio = *options.filter;
  if (options.order) rec.sort_style = *options.order;
}

void WriteText(const plot::Dlg_BPlot1& form, const std::map<ObjectId, std::string>& layouts, std::ostream& out) {
  TextTable table;
  std::vector<std::string> columns = plot::BPlot1Columns();
  // The file each sheet would be plotted to, unless the list shows it already.
  const bool addName = std::find(columns.begin(), columns.end(), kFileNameColumn) == columns.end();
  if (addName) columns.insert(columns.begin() + 1, std::string(kFileNameColumn));
  columns.insert(columns.begin() + 1, "空 间");
  table.addRow(columns);
  const auto cells = plot::BPlot1Cells(form);
  for (std::size_t i = 0; i < cells.size(); ++i) {
    std::vector<std::string> row = cells[i];
    if (addName) row.insert(row.begin() + 1, Printable(form.rows[i].sheet->fileName));
    const auto it = layouts.find(form.rows[i].sheet->spaceId);
    row.insert(row.begin() + 1, Printable(it == layouts.end() ? std::string() : it->second));
    table.addRow(std::move(row));
  }
  out << plot::kBPlot1Title << "：" << form.rows.size() << " 张\n";
  table.print(out);
}

void WriteJson(const plot::Dlg_BPlot1& form, const std::map<ObjectId, std::string>& layouts,
               const std::optional<std::string>& preview, std::ostream& out) {
  Json json;
  json["count"] = form.rows.size();
  json["scale"] = form.scale;
  json["sheets"] = Json::array();
  for (std::size_t i = 0; i < form.rows.size(); ++i) {
    const plot::BPlot1Row& row = form.rows[i];
    const recognition::Plot_Drawing1& s = *row.sheet;
    const auto it = layouts.find(s.spaceId);
    Json sheet;
    sheet["number"] = i + 1;
    sheet["fileName"] = s.fileName;
    sheet["kind"] = static_cast<std::int64_t>(s.kind);
    sheet["layout"] = it == layouts.end() ? std::string() : it->second;
    sheet["minX"] = s.minX;
    sheet["minY"] = s.minY;
    sheet["maxX"] = s.maxX;
    sheet["maxY"] = s.maxY;
    sheet["sizeX"] = s.sizeX;
    sheet["sizeY"] = s.sizeY;
    sheet["rotated"] = s.rotated;
    sheet["paperName"] = s.paperName;
    sheet["paper"] = row.paperText;
    sheet["scale"] = s.scale;
    sheet["scaleText"] = row.scaleText;
    sheet["size"] = row.sizeText;
    sheet["note"] = row.note;
    json["sheets"].push_back(std::move(sheet));
  }
  if (preview) json["preview"] = *preview;
  PrintJson(out, json);
}


void DefineSheets(CLI::App& app) {
  Describe(app,
           "用法：tvplot sheets 图纸.dxf [--range 范围] [--order 1-9] [--filter 百分比] [--scale 比例] [--json]\n"
           "                    [--loose-lines on|off] [--blocks all|rect|none] [--skip-blank on|off] [--preview N]\n"
           "                    [--timings]\n"
           "  识别图纸中的图框，按批打印的审阅列表显示：序号、文件名、纸张、比例、图面尺寸、备注。\n"
           "  图纸中记住的各图纸的纸张、比例（上次批打印时的选择）照样显示。\n",
           "  未给出的 --order、--filter、--loose-lines、--blocks、--skip-blank 取图纸的打印设置和用户配置\n"
           "  （tvplot config show），选项只用于本次，不改变配置。\n"
           "  退出码：0 完成，1 用法错误，2 图纸无法读取，4 未找到图框，5 无法预览\n");
  AddValue(app, "--range", "R", "model 模型空间，layouts 所有布局，all 布局+模型（默认），current 当前空间");
  AddValue(app, "--order", "N", "打印顺序 1 到 9：1 从上到下每行从左到右 … 9 按图形在图纸中的先后");
  AddValue(app, "--filter", "P", "排除面积小于最大图框面积 P% 的图框，0 到 30");
  AddValue(app, "--scale", "S", "按 1:S 确定纸张（默认按多数图框推断）");
  AddValue(app, "--loose-lines", "on|off", "零散直线组成的矩形也作为图框");
  AddValue(app, "--blocks", "B", "all 所有图块、外部参照；rect 仅最外框为矩形的图块；none 不以图块为图框");
  AddValue(app, "--skip-blank", "on|off", "排除空白的矩形");
  AddValue(app, "--preview", "N", "另将第 N 张图纸按打印设置预览为 PNG 图像（写入临时文件夹），显示其路径");
  AddFlag(app, "--json", "以一个 JSON 对象输出");
  AddFlag(app, "--timings", "显示各阶段耗时");
}

int RunSheets(const ParsedArgs& args, CliStreams& io) {
  if (auto error = args.oneDrawingError()) return args.usage(io, *error);
  Options options;
  if (auto error = ReadOptions(args, options)) return args.usage(io, *error);

  const std::string& path = args.positional.front();
  auto db = LoadDrawing(path, io);
  if (!db) return kExitUnreadable;

  // The command line of the session is a transcript only; the list goes to `out`.
  std::ostringstream transcript;
  Session session(std::move(*db), path, TranscriptOptions(transcript, io));
  host::OnLoad();
  const settings::Config userConfig = settings::GlobalConfig();
  const settings::PlotSettingRec drawingSetting = settings::CurrentPlotSetting();
  // A preview plots through the private plotter, which the batch's prologue sets up.
  if (options.preview) plot::EnterPlotCommand();
  ApplySettings(options);
  host::ShowTimings = options.timings;
  session.editor().answers().pushFront(RangeAnswers(options.range, host::IsPaperSpace()));

  int exitCode = kExitOk;
  if (plot::Dlg_BPlot1* form = plot::RecogniseGenericBatch(false, options.scale)) {
    const auto layouts = LayoutNamesByBlock();
    std::optional<std::string> preview;
    if (options.preview) {
      preview = PreviewOf(*form, *options.preview, session, io, "tvplot sheets");
      if (!preview) exitCode = kExitNoPreview;
    }
    if (options.json) WriteJson(*form, layouts, preview, io.out);
    else WriteText(*form, layouts, io.out);
    if (preview && !options.json) io.out << "打印预览：" << *preview << '\n';
    host::StageTimer(form->stageTick, "显示对话框");
  } else {
    io.err << "tvplot sheets: 未找到图框\n";
    exitCode = kExitNoSheets;
  }
  if (options.timings) io.err << transcript.str() << '\n';
  host::ShowTimings = false;
  if (options.preview) plot::EndFileRun();
  settings::GlobalConfig() = userConfig;
  settings::CurrentPlotSetting() = drawingSetting;
  host::OnUnload();
  io.out.flush();
  return exitCode;
}

}  // namespace

const Subcommand& SheetsSubcommand() {
  static const Subcommand kSheets{"sheets", "识别图纸中的图框并显示审阅列表", &DefineSheets, &RunSheets};
  return kSheets;
}

}  // namespace tv::cli
