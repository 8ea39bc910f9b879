#include "cli/report_command.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "cli/command_line.h"
#include "cli/option_values.h"
#include "cli/session_launch.h"
#include "cli/tk_file_check.h"
#include "console/console_editor.h"
#include "console/session.h"
#include "console/text_table.h"
#include "host/editor.h"
#include "host/module_entry.h"
#include "host/wrappers.h"
#include "plot/generic_review.h"
#include "plot/output_paths.h"
#include "plot/plot_job.h"
#include "plot/title_review.h"
#include "reports/drawn_index.h"
#include "reports/excel_sheet.h"
#include "reports/file_list.h"
#include "reports/paper_statistics.h"
#include "settings/plot_setting.h"
#include "titleblock/tk_library.h"

namespace tv::cli {

using console::OneLine;
using console::Printable;
using console::Session;

namespace {

namespace fs = std::filesystem;

constexpr int kExitNoSheets = 4;
constexpr int kExitNotWritten = 5;
constexpr const char* kProgram = "tvplot report: ";

// "X,Y" in the drawing's user coordinates.
std::optional<Point3d> ParsePoint(const std::string& text) {
  const std::size_t comma = text.find(',');
  if (comma == std::string::npos) return std::nullopt;
  auto x = ParseNumber(std::string_view(text).substr(0, comma));
  auto y = ParseNumber(std::string_view(text).substr(comma + 1));
  if (!x || !y) return std::nullopt;
  return Point3d{*x, *y, 0.0};
}

std::optional<reports::BaseSize> BaseOf(const std::string& name) {
  static constexpr std::pair<std::string_view, reports::BaseSize> kBases[] = {
      {"A4", reports::BaseSize::A4}, {"A3", reports::BaseSize::A3}, {"A2", reports::BaseSize::A2},
      {"A1", reports::BaseSize::A1}, {"A0", reports::BaseSize::A0}};
  for (const auto& [n, base] : kBases)
    if (n == name || (n[0] == 'A' && name.size() == 2 && name[0] == 'a' && name[1] == n[1])) return base;
  return std::nullopt;
}

// The rows of the list the user would see: the title-block list when the library defines frames
// and the drawing has them, else the generic list.
struct ListRows {
  std::vector<reports::ReportRow> rows;
  const paper::PaperList* paperList = nullptr;
};

// `titleList` chooses the list; unset, the library decides.
std::optional<ListRows> RecogniseRows(console::ConsoleEditor& editor, const std::string& range,
                                      std::optional<bool> titleList = std::nullopt) {
  if (titleList.value_or(!titleblock::GlobalTkLibrary().definitions.empty())) {
    editor.answers().pushFront(RangeAnswers(range, host::IsPaperSpace()));
    if (plot::Dlg_BPlot2* form = plot::RecogniseTitleBatch())
      return ListRows{reports::RowsOfTitleList(*form), &form->job.paperList};
    if (titleList) return std::nullopt;
  }
  editor.answers().pushFront(RangeAnswers(range, host::IsPaperSpace()));
  if (plot::Dlg_BPlot1* form = plot::RecogniseGenericBatch(false, plot::FixedListScale()))
    return ListRows{reports::RowsOfGenericList(*form), &form->job.paperList};
  return std::nullopt;
}

// One report into the folder; false when it wasn't written.
bool WriteKind(const std::string& kind, std::optional<reports::BaseSize> base, const ListRows& list) {
  const titleblock::TK_Library& library = titleblock::GlobalTkLibrary();
  if (kind == "list") return reports::WriteFileList(list.rows, library);
  if (kind == "index") return reports::WriteIndex(list.rows, library);
  if (base) return reports::WritePaperStatistics(reports::CountPapers(list.rows, *list.paperList), *base);
  return reports::WritePaperPrices(list.rows);
}

void DefineReport(CLI::App& app) {
  Describe(app,
           "用法：tvplot report list|index|papers 图纸.dxf [--tk 图框信息.tk] [--out 文件夹] [--base A4|A3|A2|A1|A0]\n"
           "                   [--range 范围]\n"
           "       tvplot report index 图纸.dxf --draw-at X,Y --save-as 新图纸.dxf [--tk 图框信息.tk] [--range 范围]\n"
           "  把审阅列表写成 Excel 表格（.xlsx）：list 文件清单，index 图纸目录，papers 纸张统计\n"
           "  （给出 --base 时折合成该幅面，否则按单价统计）。图框信息库定义了图框时按图框型列表，\n"
           "  否则按通用型列表。已有的同名表格不会被覆盖，新表格名后加 (2)、(3) …\n"
           "  --draw-at 把目录以文字和直线绘入图纸（左上角在该点），另存为 --save-as 的文件。\n",
           "  输出文件夹默认取图纸的打印设置；图纸文件本身不会被改写。\n"
           "  退出码：0 完成，1 用法错误，2 图纸或图框信息文件无法读取，4 未找到图框，5 表格未能写入\n");
  AddValue(app, "--tk", "文件", "使用该图框信息文件（默认用户的图框信息库）");
  AddValue(app, "--out", "文件夹", "表格写入该文件夹（不存在时创建）");
  AddValue(app, "--base", "A1", "纸张统计折合成的幅面：A4、A3、A2、A1 或 A0");
  AddValue(app, "--range", "R", "model、layouts、all（默认）或 current");
  AddValue(app, "--draw-at", "X,Y", "目录绘入图纸，表格左上角的点（只用于 index）");
  AddValue(app, "--save-as", "文件", "绘入目录后的图纸另存为该文件（不覆盖原图纸）");
}

// The index drawn at `at` and the drawing saved as `target`; the exit code.
int DrawIndexAndSave(Session& session, std::vector<reports::ReportRow> rows, Point3d at, const std::string& target,
                     CliStreams& io) {
  const titleblock::TK_Library& library = titleblock::GlobalTkLibrary();
  if (library.index_columns.empty()) {
    io.err << kProgram << OneLine(std::string(reports::kEmptyIndexMessage)) << '\n';
    return kExitNotWritten;
  }
  // The lists' sheet markers go before the drawing is saved.
  plot::DestroyTitleReview();
  plot::DestroyGenericReview();
  reports::DrawIndex(rows, library, host::Trans(at, 1, 0));
  if (!SaveDrawingAs(session.database(), target, io)) return kExitNotWritten;
  io.out << target << '\n';
  return kExitOk;
}

int RunReport(const ParsedArgs& args, CliStreams& io) {
  if (args.positional.empty()) return args.usage(io, "缺少报表类型（list、index 或 papers）");
  const std::string kind = args.positional.front();
  if (kind != "list" && kind != "index" && kind != "papers")
    return args.usage(io, "报表类型 " + Printable(kind) + " 无效，应为 list、index 或 papers");
  if (args.positional.size() < 2) return args.usage(io, "缺少图纸文件");
  if (args.positional.size() > 2) return args.usage(io, "多余的参数 " + Printable(args.positional[2]));
  std::optional<reports::BaseSize> base;
  if (auto v = args.value("--base")) {
    if (kind != "papers") return args.usage(io, "--base 只用于 papers");
    base = BaseOf(*v);
    if (!base) return args.usage(io, "幅面 " + Printable(*v) + " 无效，应为 A4、A3、A2、A1 或 A0");
  }
  if (auto v = args.value("--out"); v && v->empty()) return args.usage(io, "输出文件夹不能为空");
  std::optional<Point3d> drawAt;
  std::optional<std::string> saveAs = args.value("--save-as");
  if (auto v = args.value("--draw-at")) {
    if (kind != "index") return args.usage(io, "--draw-at 只用于 index");
    drawAt = ParsePoint(*v);
    if (!drawAt) return args.usage(io, "插入点 " + Printable(*v) + " 无效，应为 X,Y");
    std::error_code ec;
    if (!saveAs || saveAs->empty() || *saveAs == args.positional[1] || fs::equivalent(*saveAs, args.positional[1], ec))
      return args.usage(io, "--draw-at 须与 --save-as 另一个文件同用，不覆盖原图纸");
  } else if (saveAs) {
    return args.usage(io, "--save-as 只用于 --draw-at");
  }
  const std::string range = args.value("--range").value_or("all");

  const std::string& path = args.positional[1];
  auto db = LoadDrawing(path, io);
  if (!db) return kExitUnreadable;
  std::ostringstream transcript;
  Session session(std::move(*db), path, TranscriptOptions(transcript, io));
  const NoticesToErr notices(io);
  host::OnLoad();
  if (auto tk = args.value("--tk")) {
    if (std::optional<std::string> refusal = ReadTkOption(*tk)) {
      io.err << kProgram << *refusal << '\n';
      host::OnUnload();
      return kExitUnreadable;
    }
  }
  std::string folder;
  if (auto v = args.value("--out")) {
    std::error_code ec;
    folder = fs::absolute(*v, ec).lexically_normal().string();
  } else {
    const settings::PlotSettingRec& rec = settings::CurrentPlotSetting();
    std::string custom = rec.custom_path;
    folder = plot::OutputFolder(rec.path_mode, rec.format, custom);
  }
  reports::ReportFolder() = folder;
  const std::size_t savedBefore = reports::SavedWorkbooks().size();

  int exitCode = kExitOk;
  if (std::optional<ListRows> list = RecogniseRows(session.editor(), range)) {
    if (drawAt) {
      exitCode = DrawIndexAndSave(session, std::move(list->rows), *drawAt, *saveAs, io);
    } else if (!WriteKind(kind, base, *list)) {
      exitCode = kExitNotWritten;
      for (const std::string& m : session.editor().messages()) io.err << kProgram << OneLine(m) << '\n';
      io.err << kProgram << "报表未写入 " << folder << '\n';
    }
  } else {
    io.err << kProgram << "未找到图框\n";
    exitCode = kExitNoSheets;
  }
  host::OnUnload();
  for (std::size_t i = savedBefore; i < reports::SavedWorkbooks().size(); ++i) io.out << reports::SavedWorkbooks()[i] << '\n';
  io.out.flush();
  return exitCode;
}

}  // namespace

std::optional<std::string> ReadReportKinds(const std::string& value, std::vector<std::string>& kinds) {
  kinds.clear();
  std::size_t start = 0;
  for (std::size_t end; start <= value.size(); start = end + 1) {
    end = std::min(value.find(',', start), value.size());
    const std::string kind = value.substr(start, end - start);
    if (kind != "list" && kind != "index" && kind != "papers")
      return "报表 " + Printable(kind) + " 无效，应为 list、index、papers，以逗号分隔";
    if (std::find(kinds.begin(), kinds.end(), kind) == kinds.end()) kinds.push_back(kind);
  }
  return std::nullopt;
}

bool WriteRunReports(const std::vector<std::string>& kinds, bool titleList, const std::string& folder,
                     const std::string& range, console::ConsoleEditor& editor, CliStreams& io) {
  reports::ReportFolder() = folder;
  const std::size_t savedBefore = reports::SavedWorkbooks().size();
  const std::size_t messagesBefore = editor.messages().size();
  bool allWritten = false;
  if (std::optional<ListRows> list = RecogniseRows(editor, range, titleList)) {
    allWritten = true;
    for (const std::string& kind : kinds) allWritten = WriteKind(kind, std::nullopt, *list) && allWritten;
  }
  for (std::size_t i = savedBefore; i < reports::SavedWorkbooks().size(); ++i) io.out << reports::SavedWorkbooks()[i] << '\n';
  for (std::size_t i = messagesBefore; i < editor.messages().size(); ++i) io.err << "报表：" << OneLine(editor.messages()[i]) << '\n';
  return allWritten;
}

const Subcommand& ReportSubcommand() {
  static const Subcommand kReport{"report", "把审阅列表写成表格：文件清单、图纸目录、纸张统计", &DefineReport, &RunReport};
  return kReport;
}

}  // namespace tv::cli
