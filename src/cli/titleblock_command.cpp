#include "cli/titleblock_command.h"

#include <algorithm>
#include <cmath>
#include <array>
#include <filesystem>
#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "cli/command_line.h"
#include "cli/json_output.h"
#include "cli/option_values.h"
#include "cli/row_preview_option.h"
#include "cli/plot_command.h"
#include "cli/session_launch.h"
#include "cli/stamp_options.h"
#include "cli/tk_file_check.h"
#include "console/console_editor.h"
#include "console/session.h"
#include "console/text_table.h"
#include "host/command_prologue.h"
#include "host/module_entry.h"
#include "host/wrappers.h"
#include "plot/output_paths.h"
#include "plot/plot_job.h"
#include "plot/row_preview.h"
#include "plot/generic_review.h"
#include "plot/title_review.h"
#include "signing/stamp_choice.h"
#include "titleblock/title_sheets.h"
#include "titleblock/tk_library.h"

namespace tv::cli {

using console::Printable;
using console::OneLine;
using console::TextTable;
using console::Session;

namespace {

constexpr int kExitNoSheets = 4;
constexpr int kExitNoPreview = 5;
constexpr std::string_view kLibraryHint = "（可用 --tk 指定图框信息文件，或用 tvplot tk import 导入）";
constexpr std::array<const char*, 6> kFieldKeys{"drawingNo", "revision", "title", "date", "info1", "info2"};

// The library the run reads: the file of --tk in place of the user's, which stays as it is on disk.
std::optional<FileBatch::Refusal> PrepareLibrary(const std::optional<std::string>& tkPath) {
  if (tkPath)
    if (std::optional<std::string> refusal = ReadTkOption(*tkPath)) return FileBatch::Refusal{*refusal, kExitUnreadable};
  if (titleblock::GlobalTkLibrary().definitions.empty())
    return FileBatch::Refusal{OneLine(std::string(titleblock::kEmptyLibraryMessage)) + std::string(kLibraryHint), kExitNoSheets};
  return std::nullopt;
}

std::string LayoutOf(const titleblock::Plot_Drawing2& s, const std::map<ObjectId, std::string>& layouts) {
  const auto it = layouts.find(s.space_id);
  return it == layouts.end() ? std::string() : it->second;
}

void WriteText(const plot::Dlg_BPlot2& form, const std::map<ObjectId, std::string>& layouts, std::ostream& out) {
  TextTable table;
  table.addRow({"序 号", "空 间", "图 块", "  文 件 名  ", "纸 张", "打印比例", "图 号", "版 次", "图 名", "日 期", "备 注"});
  const auto cells = plot::BPlot2Cells(form);
  for (std::size_t i = 0; i < cells.size(); ++i) {
    const titleblock::Plot_Drawing2& s = *form.rows[i].sheet;
    const std::string title = plot::WithTitleSeparator(s.field_text[2], titleblock::GlobalTkLibrary().TitleSeparator);
    table.addRow({cells[i][0], Printable(LayoutOf(s, layouts)), Printable(s.definition ? s.definition->block_name : ""),
                  Printable(cells[i][2]), cells[i][4], cells[i][5], Printable(cells[i][6]), Printable(cells[i][7]),
                  Printable(title), Printable(cells[i][8]), cells[i][9]});
  }
  out << plot::kBPlot2Title << "（图框型）：" << form.rows.size() << " 张\n";
  table.print(out);
}

void WriteJson(const plot::Dlg_BPlot2& form, const std::map<ObjectId, std::string>& layouts,
               const std::optional<std::string>& preview, std::ostream& out) {
  const std::string& separator = titleblock::GlobalTkLibrary().TitleSeparator;
  Json json;
  json["count"] = form.rows.size();
  json["titleSeparator"] = separator;
  json["sheets"] = Json::array();
  const std::vector<std::string> names = plot::TitleFileNames(form);
  for (std::size_t r = 0; r < form.rows.size(); ++r) {
    const plot::BPlot2Row& row = form.rows[r];
    const titleblock::Plot_Drawing2& s = *row.sheet;
    Json sheet;
    sheet["number"] = static_cast<std::int64_t>(s.number);
    sheet["blockName"] = s.definition ? s.definition->block_name : std::string();
    sheet["layout"] = LayoutOf(s, layouts);
    sheet["minX"] = s.min_x;
    sheet["minY"] = s.min_y;
    sheet["maxX"] = s.max_x;
    sheet["maxY"] = s.max_y;
    sheet["width"] = s.width;
    sheet["height"] = s.height;
    sheet["portrait"] = s.portrait;
    sheet["size"] = plot::SheetSizeText(s.width, s.height);
    sheet["paperName"] = row.paperName;
    sheet["paper"] = row.paperText;
    sheet["scale"] = s.scale;
    sheet["scaleText"] = row.scaleText;
    Json& fields = sheet["fields"] = Json::object();
    for (std::size_t i = 0; i < kFieldKeys.size(); ++i)
      fields[kFieldKeys[i]] = plot::WithTitleSeparator(s.field_text[i], separator);
    Json& stamps = sheet["stamps"] = Json::array();
    for (const Point2d& p : s.stamp_point) {
      if (titleblock::IsNoStampPoint(p)) stamps.push_back(nullptr);
      else stamps.push_back(Json::array({p.x, p.y}));
    }
    sheet["stampRotation"] = s.stamp_rotation;
    sheet["file_name"] = names[r];
    sheet["note"] = row.note;
    json["sheets"].push_back(std::move(sheet));
  }
  if (preview) json["preview"] = *preview;
  PrintJson(out, json);
}


int ListTitleBlocks(const ParsedArgs& args, CliStreams& io) {
  if (auto error = args.oneDrawingError()) return args.usage(io, *error);
  SheetOptions range;
  if (auto error = ReadSheetOptions(args, range)) return args.usage(io, *error);
  const bool json = args.has("--json");
  const bool timings = args.has("--timings");
  std::optional<std::size_t> previewRow;
  if (auto v = args.value("--preview")) {
    const auto n = ParseNumber(*v);
    if (!n || *n < 1 || *n != std::floor(*n) || *n > 1e9) return args.usage(io, "--preview 应为图纸的序号（从 1 起）");
    previewRow = static_cast<std::size_t>(*n);
  }

  const std::string& path = args.positional.front();
  auto db = LoadDrawing(path, io);
  if (!db) return kExitUnreadable;

  std::ostringstream transcript;
  Session session(std::move(*db), path, TranscriptOptions(transcript, io));
  const NoticesToErr notices(io);
  host::OnLoad();
  if (std::optional<FileBatch::Refusal> refusal = PrepareLibrary(args.value("--tk"))) {
    io.err << "tvplot titleblock: " << refusal->message << '\n';
    host::OnUnload();
    return refusal->exitCode;
  }
  // A preview plots through the private plotter, which the batch's prologue sets up.
  if (previewRow) plot::EnterPlotCommand();
  host::ShowTimings = timings;
  session.editor().answers().pushFront(RangeAnswers(range.range, host::IsPaperSpace()));

  int exitCode = kExitOk;
  if (plot::Dlg_BPlot2* form = plot::RecogniseTitleBatch()) {
    const auto layouts = LayoutNamesByBlock();
    std::optional<std::string> preview;
    if (previewRow) {
      preview = PreviewOf(*form, *previewRow, session, io, "tvplot titleblock");
      if (!preview) exitCode = kExitNoPreview;
    }
    if (json) WriteJson(*form, layouts, preview, io.out);
    else WriteText(*form, layouts, io.out);
    if (preview && !json) io.out << "打印预览：" << *preview << '\n';
    host::StageTimer(form->stageTick, "显示对话框");
  } else {
    io.err << "tvplot titleblock: 未找到图框\n";
    exitCode = kExitNoSheets;
  }
  if (timings) io.err << transcript.str() << '\n';
  host::ShowTimings = false;
  if (previewRow) plot::EndFileRun();
  host::OnUnload();
  io.out.flush();
  return exitCode;
}

void DefineTitleBlock(CLI::App& app) {
  Describe(app,
           "用法：tvplot titleblock 图纸.dxf [--tk 图框信息.tk] [--range 范围] [--preview N] [--json] [--timings]\n"
           "      tvplot titleblock 图纸.dxf [--tk 图框信息.tk] --plot [tvplot plot 的选项]\n"
           "                  [--stamp 类型=印章名 … [--stamp-code 类型=授权码 …] | --stamps]\n"
           "  按图框信息库中定义的图框（图块）识别图纸，每个图框插入为一张图纸，从图框读取\n"
           "  图号、版次、图名、日期、信息1、信息2，按图框的命名规则得到文件名。\n",
           "  图纸文件本身不会被改写。\n"
           "  退出码：0 完成，1 用法错误，2 图纸或图框信息文件无法读取，4 未找到图框或图框信息库为空，\n"
           "          5 有图纸未能输出，或无法预览\n");
  AddValue(app, "--tk", "文件", "使用该图框信息文件（默认用户的图框信息库，见 tvplot tk list）");
  AddValue(app, "--range", "R", "model 模型空间，layouts 所有布局，all 布局+模型（默认），current 当前空间");
  AddFlag(app, "--json", "以一个 JSON 对象输出：每张图纸的图块名、空间、范围、纸张、比例、\n"
               "六项图框信息、四个印章位置和文件名");
  AddValue(app, "--preview", "N", "另将第 N 张图纸按打印设置预览为 PNG 图像（写入临时文件夹），显示其路径");
  AddFlag(app, "--timings", "显示各阶段耗时");
  AddFlag(app, "--plot", "逐张输出为文件，选项同 tvplot plot（--format、--out、--style …，\n"
               "--scale、--order 除外），\n"
               "多行图名以图框信息库的“多图名间字符”连接");
  DefinePlotOutputOptions(app);
  AddValue(app, "--stamp", "类型=印章名", "在图框的印章位置打印印章库中的该印章（可重复）；类型为 登记（注册）、\n"
               "出图、项目、竣工；只打印这里给出的类型");
  AddValue(app, "--stamp-code", "类型=授权码", "需要授权码的印章的授权码（可重复）");
  AddFlag(app, "--stamps", "按图纸保存的印章选择打印印章");
  // Known only to be refused with a reason.
  AddUnlisted(app, "--scale");
  AddUnlisted(app, "--order");
}

int RunTitleBlock(const ParsedArgs& args, CliStreams& io) {
  // The definitions fix each sheet's paper and scale, and the rows stay in the order found.
  for (std::string fixed : {"--scale", "--order"})
    if (args.has(fixed)) return args.usage(io, "图框型批打印的比例、顺序由图框定义确定，不接受 " + fixed);
  if (!args.has("--plot")) {
    for (std::string plotOnly : {"--format", "--out", "--path-mode", "--style", "--margin", "--merge", "--yes", "--no",
                                 "--verbose", "--report", "--stamp", "--stamp-code", "--stamps"})
      if (args.has(plotOnly)) return args.usage(io, "选项 " + plotOnly + " 只用于 --plot");
    return ListTitleBlocks(args, io);
  }
  for (std::string listOnly : {"--json", "--preview"})
    if (args.has(listOnly)) return args.usage(io, "选项 " + listOnly + " 不用于 --plot");
  StampOptions stamps;
  if (auto error = ReadStampOptions(args, stamps)) return args.usage(io, *error);
  const std::optional<std::string> tkPath = args.value("--tk");
  FileBatch batch{"tvplot titleblock", "TV_BatchPlot_4", [tkPath, stamps]() -> std::optional<FileBatch::Refusal> {
                    if (auto refusal = PrepareLibrary(tkPath)) return refusal;
                    if (auto why = CheckStampNames(stamps)) return FileBatch::Refusal{*why, kExitUsage};
                    return std::nullopt;
                  }};
  batch.adjust = [stamps](settings::PlotSettingRec& setting) { ApplyStampOptions(stamps, setting); };
  const int code = RunFileBatch(args, io, batch);
  signing::PresetStampCodes().reset();
  return code;
}

}  // namespace

const Subcommand& TitleBlockSubcommand() {
  static const Subcommand kTitleBlock{"titleblock", "按图框信息库识别图框、读取图框信息并批量打印", &DefineTitleBlock,
                                      &RunTitleBlock};
  return kTitleBlock;
}

}  // namespace tv::cli
