#include "cli/tk_command.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iostream>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "cli/command_line.h"
#include "cli/json_output.h"
#include "cli/loaded_module.h"
#include "cli/tk_define.h"
#include "cli/tk_file_check.h"
#include "console/session.h"
#include "console/text_table.h"
#include "host/module_entry.h"
#include "paper/paper.h"
#include "titleblock/tk_library.h"

namespace tv::cli {

using console::Printable;
using console::TextTable;

namespace {

constexpr int kExitWriteFailed = 4;

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

Json AreaJson(const Extents3d& e) { return Json::array({e.min.x, e.min.y, e.max.x, e.max.y}); }

void WriteJson(const titleblock::TK_Library& library, const std::string& path, std::ostream& out) {
  Json json;
  json["path"] = path;
  json["count"] = library.definitions.size();
  json["definitions"] = Json::array();
  for (const auto& d : library.definitions) {
    Json def;
    def["blockName"] = d->block_name;
    def["aliasName"] = d->alias_name;
    def["paper"]["length"] = static_cast<std::int64_t>(d->paper.length);
    def["paper"]["width"] = static_cast<std::int64_t>(d->paper.width);
    // Degrees, to the ten-thousandth: the file keeps radians to six digits only.
    def["rotation"] = std::round(RadToDeg(d->rotation) * 1e4) / 1e4;
    def["scale"] = d->scale;
    def["nameRule"] = d->name_rule;
    def["sortPriority"] = static_cast<std::int64_t>(d->sort_priority) + 1;
    def["dynamic"] = d->is_dynamic != 0;
    def["frameExtents"] = AreaJson(d->frame_extents);
    Json& areas = def["areas"] = Json::object();
    for (const NamedArea& a : kAreas)
      if (titleblock::IsAreaSet((*d).*a.area)) areas[a.key] = AreaJson((*d).*a.area);
    json["definitions"].push_back(std::move(def));
  }
  Json& naming = json["naming"];
  naming["insertSerial"] = library.InsertSerial != 0;
  naming["serialPrefix"] = library.SerialPrefix;
  naming["serialStart"] = static_cast<std::int64_t>(library.SerialStart);
  naming["serialSuffix"] = library.SerialSuffix;
  naming["serialDigits"] = static_cast<std::int64_t>(library.SerialDigits);
  naming["defaultNameRule"] = library.DefaultNameRule;
  naming["titleSeparator"] = library.TitleSeparator;
  naming["paperNameStyle"] = static_cast<std::int64_t>(library.PaperNameStyle);
  naming["centreInArea"] = Json::array();
  for (std::int32_t flag : library.CentreInArea) naming["centreInArea"].push_back(flag != 0);
  PrintJson(out, json, {.inlineKeys = {"paper", "frameExtents", "centreInArea"}, .inlineItemsOf = {"areas"}});
}

int RunList(const ParsedArgs& args, CliStreams& io) {
  if (args.positional.size() > 1) return args.usage(io, "多余的参数 " + Printable(args.positional[1]));
  if (args.has("--keep") || args.has("--replace")) return args.usage(io, "--keep 和 --replace 只用于 import");
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
  if (!path) return args.usage(io, error);
  if (args.has("--keep") || args.has("--replace") || args.has("--json"))
    return args.usage(io, "export 不接受 --keep、--replace 或 --json");
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
  if (!path) return args.usage(io, error);
  const bool keep = args.has("--keep"), replace = args.has("--replace");
  if (keep && replace) return args.usage(io, "--keep 和 --replace 只能给出其一");
  if (args.has("--json")) return args.usage(io, "import 不接受 --json");

  // Check the file before the library is touched: a file that is no library is no import.
  if (std::optional<std::string> refusal = TkFileRefusal(*path)) {
    io.err << "tvplot tk: " << *refusal << '\n';
    return kExitUnreadable;
  }
  const std::optional<titleblock::TkFileFacts> facts = titleblock::InspectTkFile(*path);

  const bool atTerminal = isatty(STDIN_FILENO) == 1;
  std::vector<std::string> answers;
  if (keep) answers.push_back("Y");
  if (replace) answers.push_back("N");
  LoadedModule module(io, std::move(answers), keep || replace ? nullptr : &std::cin);
  titleblock::TK_Library& library = titleblock::GlobalTkLibrary();
  if (!keep && !replace && !atTerminal && !library.definitions.empty())
    return args.usage(io, "图框信息库不为空，标准输入不是终端时须用 --keep 或 --replace 指明是否保留原图框信息");

  // The question is asked before the library file is locked: nobody waits on a user's answer.
  const std::optional<bool> keeping = titleblock::AskKeepDefinitions(library);
  if (!keeping) {
    io.err << "\ntvplot tk: 未回答是否保留原图框信息，图框信息库未改变\n";
    return kExitUnanswered;
  }
  // The merge starts from the file as it stands under the lock, so that an import another run
  // saved meanwhile stays in.
  std::size_t before = 0;
  bool readable = true;
  const bool saved = titleblock::UpdateTkFile(
      library,
      [&](titleblock::TK_Library& current) {
        before = current.definitions.size();
        readable = titleblock::ReadTkFileInto(current, *path, !*keeping);
        return readable;
      },
      true);
  if (!readable) {
    io.err << "tvplot tk: 无法读取文件 " << Printable(*path) << '\n';
    return kExitUnreadable;
  }
  if (!saved) {
    io.err << "\ntvplot tk: 未能写入 " << Printable(titleblock::DefaultTkPath()) << '\n';
    return kExitWriteFailed;
  }
  const std::size_t now = library.definitions.size();
  if (!*keeping) {
    io.out << "已用 " << Printable(*path) << " 中的 " << now << " 个图框定义替换图框信息库\n";
  } else {
    // Kept: the library grew by the definitions of new block names only.
    const std::size_t added = now - before;
    io.out << "已从 " << Printable(*path) << " 导入 " << added << " 个图框定义";
    const std::size_t inFile = facts ? static_cast<std::size_t>(std::max(facts->definitionCount, 0)) : 0;
    const std::size_t known = inFile > added ? inFile - added : 0;
    if (known > 0) io.out << "，同名的 " << known << " 个保留原有定义";
    io.out << "，图框信息库现有 " << now << " 个图框\n";
  }
  return kExitOk;
}

void DefineTk(CLI::App& app) {
  Describe(app,
           "用法：tvplot tk list [--json]\n"
           "      tvplot tk export 文件.tk\n"
           "      tvplot tk import 文件.tk [--keep | --replace]\n"
           "      tvplot tk define 图纸 --block 图块名 --area 图号 X1,Y1 X2,Y2 … [--rule A_C] [--paper 长x宽]\n"
           "                       [--digits N] [--replace]\n"
           "  管理用户的图框信息库（数据文件夹中的 BPlot_TK.tk）。\n"
           "  list          列出图框定义（图块名、纸张、旋转角度、比例、命名规则、排序优先级别、\n"
           "                动态图框、已录入的范围）和文件命名设置\n"
           "  export 文件   把图框信息库写入文件\n"
           "  import 文件   把文件中的图框定义并入图框信息库并保存；同名图块保留库中原有的定义，\n"
           "                目录样式和文件命名设置取文件中的\n"
           "  define 图纸   由图纸模型空间中图块的第一个插入录入图框定义（同“录入新图框”），加入图框信息库；\n"
           "                --area 之后的两个角点是图块自身坐标（图块定义中的坐标，不是图纸上的点）\n",
           "  图框信息库不为空而未给出 --keep 或 --replace 时，在终端询问；标准输入不是终端时必须给出其一。\n"
           "  退出码：0 完成，1 用法错误，2 文件无法读取，3 提问未得到回答或图框未能录入，4 写入失败\n");
  AddFlag(app, "--keep", "导入时保留原图框信息（回答“是”）");
  AddFlag(app, "--replace", "导入时不保留原图框信息（回答“否”）；录入时替换同名图块的原有定义");
  AddValue(app, "--block", "图块名", "define：图框对应的图块");
  AddValue(app, "--area", "名称",
           "define：一个范围，名称为 图号、版次、图名、日期、信息1、信息2（或 A 至 F）、注册章、出图章、\n"
           "项目章、竣工章、打印范围，其后两个角点 X1,Y1 X2,Y2 为图块自身坐标；可多次给出");
  AddValue(app, "--rule", "规则", "define：文件命名规则（缺省为上次使用的规则）");
  AddValue(app, "--paper", "长x宽", "define：自定义纸张，两边的毫米数，如 841x594（缺省由图框大小定出）");
  AddValue(app, "--digits", "N", "define：序号位数，1 至 9（缺省 2）");
  AddFlag(app, "--json", "以一个 JSON 对象输出");
}

int RunTk(const ParsedArgs& args, CliStreams& io) {
  if (args.positional.empty()) return args.usage(io, "缺少操作：list、export、import 或 define");
  const std::string& action = args.positional.front();
  if (action == "list") return RunList(args, io);
  if (action == "export") return RunExport(args, io);
  if (action == "import") return RunImport(args, io);
  if (action == "define") return RunTkDefine(args, io);
  return args.usage(io, "未知操作 " + Printable(action) + "，应为 list、export、import 或 define");
}

}  // namespace

const Subcommand& TkSubcommand() {
  static const Subcommand kTk{"tk", "显示、导出或导入图框信息库，或由图纸中的图块录入图框定义", &DefineTk, &RunTk};
  return kTk;
}

}  // namespace tv::cli
