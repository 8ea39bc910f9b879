#include "console/paper_command.h"

#include <charconv>
#include <cmath>
#include <optional>
#include <string>

#include "console/args.h"
#include "console/json_writer.h"
#include "console/option_values.h"
#include "console/text_table.h"
#include "paper/paper.h"
#include "paper/scale_fitting.h"
#include "recognition/sheet_records.h"

namespace tv::console {

namespace {

constexpr std::string_view kUsage =
    "用法：tvplot paper 长x宽 [--scale 比例] [--style 方式] [--json]\n"
    "  显示该尺寸归整后的纸张、是否标准纸张、内部名称及各命名方式下的写法。\n"
    "  --scale S  另按 1:S 的比例，显示以该尺寸绘制的图框所需的纸张\n"
    "  --style N  只显示命名方式 N（0 到 6）\n"
    "  --json     以一个 JSON 对象输出\n";

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

void WritePaperJson(const paper::MyPaper& p, const Options& options, JsonWriter& json) {
  json.beginObject();
  json.field("length", static_cast<std::int64_t>(p.length));
  json.field("width", static_cast<std::int64_t>(p.width));
  json.field("standard", p.standard);
  json.field("name", paper::PaperNameOf(p));
  json.key("styles");
  json.beginArray();
  for (std::int32_t s = 0; s < paper::kPaperNameStyleCount; ++s) {
    if (options.style && *options.style != s) continue;
    json.beginObject(true);
    json.field("style", static_cast<std::int64_t>(s));
    json.field("choice", paper::PaperNameStyleChoice(s));
    json.field("name", Rendered(p, s));
    json.endObject();
  }
  json.endArray();
  json.endObject();
}

int Usage(CliStreams& io, const std::string& message) {
  io.err << "tvplot paper: " << message << '\n' << kUsage;
  return kExitUsage;
}

int RunPaper(const std::vector<std::string>& args, CliStreams& io) {
  ArgParseResult parsed = ParseArgs(args, {.flags = {"--json"}, .valueOptions = {"--scale", "--style"}});
  if (!parsed.args) return Usage(io, parsed.error);
  if (parsed.args->positional.empty()) return Usage(io, "缺少纸张尺寸");
  if (parsed.args->positional.size() > 1) return Usage(io, "多余的参数 " + Printable(parsed.args->positional[1]));

  const std::string& sizeArg = parsed.args->positional.front();
  const std::optional<Size> size = ParseSize(sizeArg);
  if (!size) return Usage(io, "纸张尺寸 " + Printable(sizeArg) + " 无效，应为 长x宽，两边均大于 0");

  Options options;
  options.json = parsed.args->has("--json");
  if (auto text = parsed.args->value("--style")) {
    options.style = ParseStyle(*text);
    if (!options.style) return Usage(io, "命名方式 " + Printable(*text) + " 无效，应为 0 到 6 的整数");
  }
  std::optional<double> scale;
  if (auto text = parsed.args->value("--scale")) {
    scale = ParseNumber(*text);
    if (!scale || !(*scale > 0.0)) return Usage(io, "比例 " + Printable(*text) + " 无效，应为大于 0 的数");
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
    JsonWriter json(io.out);
    json.beginObject();
    json.key("input");
    json.beginObject(true);
    json.field("length", size->length);
    json.field("width", size->width);
    json.endObject();
    json.key("paper");
    WritePaperJson(normalized, options, json);
    if (scale) {
      json.field("scale", *scale);
      json.key("sheetPaper");
      if (sheetPaper) WritePaperJson(*sheetPaper, options, json);
      else json.null();
    }
    json.endObject();
    json.finish();
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
  static const Subcommand kPaper{"paper", "显示纸张尺寸归整后的纸张及其各种命名方式", kUsage, &RunPaper};
  return kPaper;
}

}  // namespace tv::console
