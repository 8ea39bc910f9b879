#include "console/tk_command.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iostream>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "console/args.h"
#include "console/json_writer.h"
#include "console/session.h"
#include "console/text_table.h"
#include "host/module_entry.h"
#include "paper/paper.h"
#include "titleblock/tk_library.h"

namespace tv::console {

namespace {

constexpr std::string_view kUsage =
    "用法：tvplot tk list [--json]\n"
    "      tvplot tk export 文件.tk\n"
    "      tvplot tk import 文件.tk [--keep | --replace]\n"
    "  管理用户的图框信息库（数据文件夹中的 BPlot_TK.tk）。\n"
    "  list          列出图框定义（图块名、纸张、旋转角度、比例、命名规则、排序优先级别、\n"
    "                动态图框、已录入的范围）和文件命名设置\n"
    "  export 文件   把图框信息库写入文件\n"
    "  import 文件   把文件中的图框定义并入图框信息库并保存；同名图块保留库中原有的定义，\n"
    "                目录样式和文件命名设置取文件中的\n"
    "  --keep        导入时保留原图框信息（回答“是”）\n"
    "  --replace     导入时不保留原图框信息（回答“否”）\n"
    "  --json        以一个 JSON 对象输出\n"
    "  图框信息库不为空而未给出 --keep 或 --replace 时，在终端询问；标准输入不是终端时必须给出其一。\n"
    "  退出码：0 完成，1 用法错误，2 文件无法读取，3 提问未得到回答，4 写入失败\n";

constexpr int kExitWriteFailed = 4;

int Usage(CliStreams& io, const std::string& message) {
  io.err << "tvplot tk: " << message << '\n' << kUsage;
  return kExitUsage;
}

// The module loaded into a session without a drawing, so that the data folder is known and the
// user's library is read as at start-up; unloaded again at the end.
class LoadedModule {
 public:
  LoadedModule(CliStreams& io, std::vector<std::string> answers, std::istream* terminal)
      : session_(cad::Database::createDefault(), std::string(), Options(io, std::move(answers), terminal)) {
    host::OnLoad();
  }
  ~LoadedModule() { host::OnUnload(); }
  LoadedModule(const LoadedModule&) = delete;
  LoadedModule& operator=(const LoadedModule&) = delete;

  Session& session() { return session_; }

 private:
  static SessionOptions Options(CliStreams& io, std::vector<std::string> answers, std::istream* terminal) {
    // Questions and messages go where the user reads messages; results stay alone on `out`.
    SessionOptions options;
    options.out = &io.err;
    options.answers = std::move(answers);
    options.terminal = terminal;
    options.terminalEchoes = terminal && isatty(STDIN_FILENO) == 1;
    return options;
  }

  Session session_;
};

// ---- list ------------------------------------------------------------------------------------------

struct NamedArea {
  const char* name;  // as the definition form labels it
  const char* key;   // in JSON
  Extents3d titleblock::TK_Customization::*area;
};

constexpr NamedArea kAreas[] = {
    {"图号", "drawingNo", &titleblock::TK_Customization::area_drawing_no},
    {"版次", "revision", &titleblock::TK_Customization::area_revision},
    {"图名", "title", &titleblock::TK_Customization::area_title},
    {"日期", "date", &titleblock::TK_Customization::area_date},
    {"信息1", "info1", &titleblock::TK_Customization::area_info1},
    {"信息2", "info2", &titleblock::TK_Customization::area_info2},
    {"打印范围", "printExtents", &titleblock::TK_Customization::print_extents},
    {"注册章", "stampRegister", &titleblock::TK_Customization::stamp_register},
    {"出图章", "stampIssue", &titleblock::TK_Customization::stamp_issue},
    {"项目章", "stampProject", &titleblock::TK_Customization::stamp_project},
    {"竣工章", "stampCompleted", &titleblock::TK_Customization::stamp_completed},
};

constexpr const char* kCentreFlagNames[] = {"图号 (A)", "版次 (B)", "图名 (C)", "日期 (D)", "信息1 (E)", "信息2 (F)"};

// A number with at most `decimals` decimals and no trailing zeros: 90, 0.5, 12.25.
std::string Number(double value, int decimals) {
  char buffer[64];
  std::snprintf(buffer, sizeof buffer, "%.*f", decimals, value);
  std::string text = buffer;
  if (text.find('.') != std::string::npos) {
    while (text.back() == '0') text.pop_back();
    if (text.back() == '.') text.pop_back();
  }
  return text == "-0" ? "0" : text;
}

std::string SetAreas(const titleblock::TK_Customization& d) {
  std::string text;
  for (const NamedArea& a : kAreas) {
    if (!titleblock::IsAreaSet(d.*a.area)) continue;
    if (!text.empty()) text += "、";
    text += a.name;
  }
  return text.empty() ? "无" : text;
}

std::string PaperSize(const paper::MyPaper& p) { return std::to_string(p.length) + "x" + std::to_string(p.width); }

void WriteText(const titleblock::TK_Library& library, const std::string& path, std::ostream& out) {
  if (library.definitions.empty()) {
    out << "图框信息库为空：" << Printable(path) << '\n';
  } else {
    out << "图框信息库：" << Printable(path) << "，共 " << library.definitions.size() << " 个图框\n";
    TextTable table;
    table.addRow({"图块名", "纸张", "旋转角度", "比例", "命名规则", "排序优先级别", "动态图框", "已录入的范围"});
    for (const auto& d : library.definitions) {
      table.addRow({Printable(d->block_name), PaperSize(d->paper), Number(RadToDeg(d->rotation), 2),
                    Number(d->scale, 4), d->name_rule.empty() ? "未定义" : Printable(d->name_rule),
                    std::to_string(d->sort_priority + 1), d->is_dynamic ? "是" : "否", SetAreas(*d)});
    }
    table.print(out);
  }
  out << "文件命名设置：\n";
  TextTable naming;
  naming.addRow({"文件名前面插入序号", library.InsertSerial ? "是" : "否"});
  naming.addRow({"前  缀", Printable(library.SerialPrefix)});
  naming.addRow({"起始序号", std::to_string(library.SerialStart)});
  naming.addRow({"序号后缀", Printable(library.SerialSuffix)});
  naming.addRow({"序号位数", std::to_string(library.SerialDigits)});
  naming.addRow({"默认命名规则", Printable(library.DefaultNameRule)});
  naming.addRow({"多图名间字符", Printable(library.TitleSeparator)});
  naming.addRow({"加长纸张命名", std::string(paper::PaperNameStyleChoice(library.PaperNameStyle)) + " " +
                                     std::string(paper::PaperNameStyleLabel(library.PaperNameStyle))});
  std::string centred;
  for (std::size_t i = 0; i < library.CentreInArea.size(); ++i) {
    if (!library.CentreInArea[i]) continue;
    if (!centred.empty()) centred += "、";
    centred += kCentreFlagNames[i];
  }
  naming.addRow({"按录入范围居中", centred.empty() ? "无" : centred});
  naming.print(out);
}

void WriteArea(JsonWriter& json, const Extents3d& e) {
  json.beginArray(true);
  for (double v : {e.min.x, e.min.y, e.max.x, e.max.y}) json.value(v);
  json.endArray();
}

void WriteJson(const titleblock::TK_Library& library, const std::string& path, std::ostream& out) {
  JsonWriter json(out);
  json.beginObject();
  json.field("path", path);
  json.field("count", library.definitions.size());
  json.key("definitions");
  json.beginArray();
  for (const auto& d : library.definitions) {
    json.beginObject();
    json.field("blockName", d->block_name);
    json.field("aliasName", d->alias_name);
    json.key("paper");
    json.beginObject(true);
    json.field("length", static_cast<std::int64_t>(d->paper.length));
    json.field("width", static_cast<std::int64_t>(d->paper.width));
    json.endObject();
    // Degrees, to the ten-thousandth: the file keeps radians to six digits only.
    json.field("rotation", std::round(RadToDeg(d->rotation) * 1e4) / 1e4);
    json.field("scale", d->scale);
    json.field("nameRule", d->name_rule);
    json.field("sortPriority", static_cast<std::int64_t>(d->sort_priority) + 1);
    json.field("dynamic", d->is_dynamic != 0);
    json.key("frameExtents");
    WriteArea(json, d->frame_extents);
    json.key("areas");
    json.beginObject();
    for (const NamedArea& a : kAreas) {
      if (!titleblock::IsAreaSet((*d).*a.area)) continue;
      json.key(a.key);
      WriteArea(json, (*d).*a.area);
    }
    json.endObject();
    json.endObject();
  }
  json.endArray();
  json.key("naming");
  json.beginObject();
  json.field("insertSerial", library.InsertSerial != 0);
  json.field("serialPrefix", library.SerialPrefix);
  json.field("serialStart", static_cast<std::int64_t>(library.SerialStart));
  json.field("serialSuffix", library.SerialSuffix);
  json.field("serialDigits", static_cast<std::int64_t>(library.SerialDigits));
  json.field("defaultNameRule", library.DefaultNameRule);
  json.field("titleSeparator", library.TitleSeparator);
  json.field("paperNameStyle", static_cast<std::int64_t>(library.PaperNameStyle));
  json.key("centreInArea");
  json.beginArray(true);
  for (std::int32_t flag : library.CentreInArea) json.value(flag != 0);
  json.endArray();
  json.endObject();
  json.endObject();
  json.finish();
}

int RunList(const ParsedArgs& args, CliStreams& io) {
  if (args.positional.size() > 1) return Usage(io, "多余的参数 " + Printable(args.positional[1]));
  if (args.has("--keep") || args.has("--replace")) return Usage(io, "--keep 和 --replace 只用于 import");
  LoadedModule module(io, {}, nullptr);
  const titleblock::TK_Library& library = titleblock::GlobalTkLibrary();
  if (args.has("--json")) WriteJson(library, titleblock::DefaultTkPath(), io.out);
  else WriteText(library, titleblock::DefaultTkPath(), io.out);
  io.out.flush();
  return kExitOk;
}

// ---- export and import -------------------------------------------------------------------------------

std::optional<std::string> FileArgument(const ParsedArgs& args, std::string& error) {
  if (args.positional.size() < 2) {
    error = "缺少 .tk 文件";
    return std::nullopt;
  }
  if (args.positional.size() > 2) {
    error = "多余的参数 " + Printable(args.positional[2]);
    return std::nullopt;
  }
  return args.positional[1];
}

int RunExport(const ParsedArgs& args, CliStreams& io) {
  std::string error;
  const std::optional<std::string> path = FileArgument(args, error);
  if (!path) return Usage(io, error);
  if (args.has("--keep") || args.has("--replace") || args.has("--json"))
    return Usage(io, "export 不接受 --keep、--replace 或 --json");
  LoadedModule module(io, {}, nullptr);
  const titleblock::TK_Library& library = titleblock::GlobalTkLibrary();
  if (!titleblock::SaveTkFileTo(library, *path, true)) {
    io.err << "\ntvplot tk: 未能写入 " << Printable(*path) << '\n';
    return kExitWriteFailed;
  }
  io.out << "已将图框信息库（" << library.definitions.size() << " 个图框）写入 " << Printable(*path) << '\n';
  return kExitOk;
}

int RunImport(const ParsedArgs& args, CliStreams& io) {
  std::string error;
  const std::optional<std::string> path = FileArgument(args, error);
  if (!path) return Usage(io, error);
  const bool keep = args.has("--keep"), replace = args.has("--replace");
  if (keep && replace) return Usage(io, "--keep 和 --replace 只能给出其一");
  if (args.has("--json")) return Usage(io, "import 不接受 --json");

  // Check the file before the library is touched: a file that is no library is no import.
  const std::optional<titleblock::TkFileFacts> facts = titleblock::InspectTkFile(*path);
  if (!facts) {
    io.err << "tvplot tk: 无法读取文件 " << Printable(*path) << '\n';
    return kExitUnreadable;
  }
  if (!facts->complete || facts->version <= 0) {
    io.err << "tvplot tk: " << Printable(*path) << " 不是完整的图框信息配置文件\n";
    return kExitUnreadable;
  }

  const bool atTerminal = isatty(STDIN_FILENO) == 1;
  std::vector<std::string> answers;
  if (keep) answers.push_back("Y");
  if (replace) answers.push_back("N");
  LoadedModule module(io, std::move(answers), keep || replace ? nullptr : &std::cin);
  titleblock::TK_Library& library = titleblock::GlobalTkLibrary();
  if (!keep && !replace && !atTerminal && !library.definitions.empty())
    return Usage(io, "图框信息库不为空，标准输入不是终端时须用 --keep 或 --replace 指明是否保留原图框信息");

  const std::size_t before = library.definitions.size();
  if (!titleblock::LoadTkFileFrom(library, *path, true)) {
    io.err << "\ntvplot tk: 未回答是否保留原图框信息，图框信息库未改变\n";
    return kExitUnanswered;
  }
  if (!titleblock::SaveTkFile(library, true, false)) {
    io.err << "\ntvplot tk: 未能写入 " << Printable(titleblock::DefaultTkPath()) << '\n';
    return kExitWriteFailed;
  }
  const std::size_t now = library.definitions.size();
  if (replace) {
    io.out << "已用 " << Printable(*path) << " 中的 " << now << " 个图框定义替换图框信息库\n";
  } else if (keep || before == 0) {
    // Kept: the library grew by the definitions of new block names only.
    const std::size_t added = now - before;
    io.out << "已从 " << Printable(*path) << " 导入 " << added << " 个图框定义";
    const std::size_t inFile = static_cast<std::size_t>(std::max(facts->definitionCount, 0));
    const std::size_t known = inFile > added ? inFile - added : 0;
    if (known > 0) io.out << "，同名的 " << known << " 个保留原有定义";
    io.out << "，图框信息库现有 " << now << " 个图框\n";
  } else {
    io.out << "已导入 " << Printable(*path) << "，图框信息库现有 " << now << " 个图框\n";
  }
  return kExitOk;
}

int RunTk(const std::vector<std::string>& args, CliStreams& io) {
  ArgParseResult parsed = ParseArgs(args, {.flags = {"--json", "--keep", "--replace"}, .valueOptions = {}});
  if (!parsed.args) return Usage(io, parsed.error);
  if (parsed.args->positional.empty()) return Usage(io, "缺少操作：list、export 或 import");
  const std::string& action = parsed.args->positional.front();
  if (action == "list") return RunList(*parsed.args, io);
  if (action == "export") return RunExport(*parsed.args, io);
  if (action == "import") return RunImport(*parsed.args, io);
  return Usage(io, "未知操作 " + Printable(action) + "，应为 list、export 或 import");
}

}  // namespace

const Subcommand& TkSubcommand() {
  static const Subcommand kTk{"tk", "显示、导出或导入图框信息库", kUsage, &RunTk};
  return kTk;
}

}  // namespace tv::console
