#include "cli/paper_command.h"

#include <charconv>
#include <cmath>
#include <optional>
#include <string>

#include "cli/command_line.h"
#include "cli/json_output.h"
#include "cli/option_values.h"
#include "console/text_table.h"
#include "paper/paper.h"
#include "paper/scale_fitting.h"
#include "recognition/sheet_records.h"

namespace tv::cli {

using console::Printable;
using console::TextTable;

namespace {

struct Size {
  double length = 0.0, width = 0.0;
};

// "1051x594", "1051X594" or "1051*594"; both sides above 0.
std::optional<Size> ParseSize(std::string_view text) {
  const std::size_t at = text.find_first_of("xX*");
  if (at == std::string_view::npos) return std::nullopt;
  const auto a = ParseNumber(text.substr(0, at));
  const auto b = ParseNumber(text.substr(at + 1));
  if (!a || !b || !(*a > 0.0) || !(*b > 0.0)) return std::nullopt;
  return Size{*a, *b};
}

std::optional<std::int32_t> ParseStyle(std::string_view text) {
  std::int32_t style = 0;
  const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), style);
  if (text.empty() || ec != std::errc() || end != text.data() + text.size()) return std::nullopt;
  if (style < 0 || style >= paper::kPaperNameStyleCount) return std::nullopt;
  return style;
}

std::string SizeText(const paper::MyPaper& p) { return std::to_string(p.length) + "x" + std::to_string(p.width); }

std::string Rendered(const paper::MyPaper& p, std::int32_t style) {
  std::string name = paper::PaperNameOf(p);
  paper::RenderPaperName(name, style);
  return name;
}

struct Options {
  std::optional<std::int32_t> style;  // all styles when unset
  bool json = false;
};

void WritePaperText(const paper::MyPaper& p, const Options& options, std::ostream& out) {
  TextTable t;
  t.addRow({"纸张尺寸", SizeText(p)});
  t.addRow({"标准纸张", p.standard ? "是" : "否"});
  t.addRow({"内部名称", paper::PaperNameOf(p)});
  t.print(out);
  out << "  命名方式：\n";
  TextTable styles;
  for (std::int32_t s = 0; s < paper::kPaperNameStyleCount; ++s) {
    if (options.style && *options.style != s) continue;
    styles.addRow({std::to_string(s), std::string(paper::PaperNameStyleChoice(s)), Rendered(p, s)});
  }
  styles.print(out, "    ");
}

Json PaperJson(const paper::MyPaper& p, const Options& options) {
  Json json;
  json["length"] = static_cast<std::int64_t>(p.length);
  json["width"] = static_cast<std::int64_t>(p.width);
  json["standard"] = p.standard;
  json["name"] = paper::PaperNameOf(p);
  json["styles"] = Json::array();
  for (std::int32_t s = 0; s < paper::kPaperNameStyleCount; ++s) {
    if (options.style && *options.style != s) continue;
    Json style;
    style["style"] = s;
    style["choice"] = std::string(paper::PaperNameStyleChoice(s));
    style["name"] = Rendered(p, s);
    json["styles"].push_back(std::move(style));
  }
  return json;
}

void DefinePaper(CLI::App& app) {
  Describe(app,
           "用法：tvplot paper 长x宽 [--scale 比例] [--style 方式] [--json]\n"
           "  显示该尺寸归整后的纸张、是否标准纸张、内部名称及各命名方式下的写法。\n");
  AddValue(app, "--scale", "S", "另按 1:S 的比例，显示以该尺寸绘制的图框所需的纸张");
  AddValue(app, "--style", "N", "只显示命名方式 N（0 到 6）");
  AddFlag(app, "--json", "以一个 JSON 对象输出");
}

int RunPaper(const ParsedArgs& args, CliStreams& io) {
  if (args.positional.empty()) return args.usage(io, "缺少纸张尺寸");
  if (args.positional.size() > 1) return args.usage(io, "多余的参数 " + Printable(args.positional[1]));

  const std::string& sizeArg = args.positional.front();
  const std::optional<Size> size = ParseSize(sizeArg);
  if (!size) return args.usage(io, "纸张尺寸 " + Printable(sizeArg) + " 无效，应为 长x宽，两边均大于 0");

  Options options;
  options.json = args.has("--json");
  if (auto text = args.value("--style")) {
    options.style = ParseStyle(*text);
    if (!options.style) return args.usage(io, "命名方式 " + Printable(*text) + " 无效，应为 0 到 6 的整数");
  }
  std::optional<double> scale;
  if (auto text = args.value("--scale")) {
    scale = ParseNumber(*text);
    if (!scale || !(*scale > 0.0)) return args.usage(io, "比例 " + Printable(*text) + " 无效，应为大于 0 的数");
  }

  paper::PaperList list;
  bool added = false;
  const paper::MyPaper normalized = *paper::AddPaper(list, size->length, size->width, added);

  std::optional<paper::MyPaper> sheetPaper;
  if (scale) {
    recognition::Plot_Drawing1 sheet;
    sheet.sizeX = size->length;
    sheet.sizeY = size->width;
    paper::MyPaper p;
    if (paper::PaperOfSheet(sheet, p, *scale, false)) sheetPaper = p;
  }

  if (options.json) {
    Json json;
    json["input"]["length"] = size->length;
    json["input"]["width"] = size->width;
    json["paper"] = PaperJson(normalized, options);
    if (scale) {
      json["scale"] = *scale;
      json["sheetPaper"] = sheetPaper ? PaperJson(*sheetPaper, options) : Json();
    }
    PrintJson(io.out, json, {.inlineKeys = {"input"}, .inlineItemsOf = {"styles"}});
  } else {
    io.out << "纸张 " << Printable(sizeArg) << "：\n";
    WritePaperText(normalized, options, io.out);
    if (scale) {
      io.out << "\n按比例 " << paper::ScaleText(*scale) << " 绘制的图框所需纸张：\n";
      if (sheetPaper) WritePaperText(*sheetPaper, options, io.out);
      else io.out << "  无法确定\n";
    }
  }
  io.out.flush();
  return kExitOk;
}

}  // namespace

const Subcommand& PaperSubcommand() {
  static const Subcommand kPaper{"paper", "显示纸张尺寸归整后的纸张及其各种命名方式", &DefinePaper, &RunPaper};
  return kPaper;
}

}  // namespace tv::cli
