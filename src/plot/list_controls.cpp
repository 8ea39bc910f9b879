#include "plot/list_controls.h"

#include <cstdio>

#include "plot/list_command.h"
#include "plot/output_paths.h"
#include "settings/plot_setting.h"

namespace tv::plot {

namespace {

std::string Upper(std::string_view text) {
  std::string out(text);
  for (char& c : out)
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  return out;
}

std::string MarginText(std::int32_t value) {
  if (value == 0) return " 不留白";
  const std::int32_t n = value < 0 ? -value : value;
  char text[32];
  std::snprintf(text, sizeof text, n < 10 ? " %c 0%d mm" : " %c %d mm", value < 0 ? '-' : '+', n);
  return text;
}

std::string Flag(bool on) { return on ? "[√]" : "[  ]"; }

}  // namespace

std::string_view ControlLabel(ListControl control) {
  switch (control) {
    case ListControl::Style: return "打印样式";
    case ListControl::EditStyle: return "修改线宽";
    case ListControl::Margin: return "周边留白";
    case ListControl::Format: return "输出格式";
    case ListControl::PathMode: return "存储路径";
    case ListControl::Merge: return "合并PDF";
    case ListControl::Signatures: return "打印签名";
    case ListControl::Stamps: return "打印印章";
    case ListControl::AsBlock: return "存为图块";
    case ListControl::ScaleFilter: return "比例、过滤";
    case ListControl::NameRule: return "命名、排序";
    case ListControl::SortType: return "序号、排序";
    case ListControl::Index: return "生 成 目 录";
    case ListControl::FileList: return "文件清单";
    case ListControl::DrawIndex: return "绘制目录";
    case ListControl::PaperStatistics: return "纸张统计";
    case ListControl::Background: return "背景色";
    case ListControl::SerialNaming: return "文件名前面插入序号";
    case ListControl::Renumber: return "图号重编";
    case ListControl::Device: return "打印机";
    case ListControl::Collate: return "逐份打印";
    case ListControl::ToPlt: return "输出为PLT";
    case ListControl::OpenFolder: return "打开所在文件夹";
  }
  return {};
}

std::vector<ListControl> ControlsInPlay(bool titleBlock, std::int32_t format) {
  using enum ListControl;
  const bool dwg = format == settings::kFormatDwg;
  const bool image = format == settings::kFormatJpg || format == settings::kFormatPng || format == settings::kFormatDwf;
  // A drawing file has no plot: no style, margin or signatures; it may keep the sheet as a block.
  const struct {
    ListControl control;
    bool shown;
  } all[] = {{Style, !dwg},
             {EditStyle, !dwg},
             {Margin, !dwg},
             {Format, true},
             {PathMode, true},
             {Merge, format == settings::kFormatPdf || format == settings::kFormatDwf},
             {Signatures, !dwg},
             {Stamps, titleBlock && !dwg},
             {AsBlock, dwg},
             {Background, image},
             {Index, titleBlock},
             {ScaleFilter, !titleBlock},
             {NameRule, !titleBlock},
             {SortType, !titleBlock},
             {FileList, titleBlock},
             {DrawIndex, titleBlock},
             {PaperStatistics, !dwg},
             {SerialNaming, titleBlock},
             {Renumber, titleBlock}};
  std::vector<ListControl> out;
  for (const auto& c : all)
    if (c.shown) out.push_back(c.control);
  return out;
}

std::vector<ListControl> PaperControls() {
  using enum ListControl;
  return {Device, Style, EditStyle, Collate, ToPlt, OpenFolder, SortType};
}

const std::vector<std::string>& FormatNames() {
  static const std::vector<std::string> names = {"PDF", "DWF", "JPG", "PNG", "PLT", "EPS", "DWG"};
  return names;
}

std::optional<std::int32_t> FormatOfName(std::string_view name) {
  const std::string wanted = Upper(TrimAnswer(name));
  for (std::size_t i = 0; i < FormatNames().size(); ++i)
    if (FormatNames()[i] == wanted) return static_cast<std::int32_t>(i);
  return std::nullopt;
}

MarginList MarginItems(std::int32_t stored) {
  MarginList list;
  list.items.push_back(MarginText(0));
  list.values.push_back(0);
  for (std::int32_t n = 1; n <= 10; ++n) {
    for (const std::int32_t value : {n, -n}) {
      list.items.push_back(MarginText(value));
      list.values.push_back(value);
    }
  }
  list.selected = -1;
  for (std::size_t i = 0; i < list.values.size(); ++i)
    if (list.values[i] == stored) list.selected = static_cast<int>(i);
  if (list.selected < 0) {
    list.items.push_back(MarginText(stored));
    list.values.push_back(stored);
    list.selected = static_cast<int>(list.values.size()) - 1;
  }
  return list;
}

const std::vector<std::string>& SortTypeItems() {
  static const std::vector<std::string> items = {
      "从上到下逐行，每行从左到右", "从上到下逐行，每行从右到左", "从下到上逐行，每行从左到右",
      "从下到上逐行，每行从右到左", "从左到右逐列，每列从下到上", "从右到左逐列，每列从下到上",
      "从左到右逐列，每列从上到下", "从右到左逐列，每列从上到下", "按图形绘制的先后顺序"};
  return items;
}

std::string ControlValueText(ListControl control, const ControlValues& v) {
  switch (control) {
    case ListControl::Style: return v.style;
    case ListControl::Margin: return MarginText(v.margin);
    case ListControl::Format:
      return v.format >= 0 && static_cast<std::size_t>(v.format) < FormatNames().size() ? FormatNames()[v.format] : "";
    case ListControl::PathMode:
      if (v.pathMode == 0) return " 源文件路径";
      if (v.pathMode == 1) return FormatFolderRowText(v.format);
      return v.customPath;
    case ListControl::Merge: return Flag(v.merge);
    case ListControl::Signatures: return Flag(v.signatures);
    case ListControl::Stamps: return Flag(v.stamps);
    case ListControl::AsBlock: return Flag(v.asBlock);
    case ListControl::SortType:
      return v.sortStyle >= 1 && v.sortStyle <= 9 ? std::to_string(v.sortStyle) + " " + SortTypeItems()[v.sortStyle - 1]
                                                  : "";
    case ListControl::SerialNaming: return v.serialNaming;
    case ListControl::Device: return v.device.empty() ? "无" : v.device;
    case ListControl::Collate: return Flag(v.collate);
    case ListControl::ToPlt: return Flag(v.toPlt);
    case ListControl::OpenFolder: return Flag(v.openFolder);
    case ListControl::Background:
      return std::to_string(v.red) + "," + std::to_string(v.green) + "," + std::to_string(v.blue);
    default: return {};
  }
}

std::optional<std::array<std::int32_t, 3>> ParseColour(std::string_view text) {
  const std::string t = WithoutBlanks(text);
  if (t == "白" || Upper(t) == "WHITE") return std::array<std::int32_t, 3>{255, 255, 255};
  if (t == "黑" || Upper(t) == "BLACK") return std::array<std::int32_t, 3>{0, 0, 0};
  std::array<std::int32_t, 3> rgb{};
  std::size_t at = 0;
  for (std::size_t k = 0; k < 3; ++k) {
    std::int32_t value = 0;
    std::size_t digits = 0;
    while (at < t.size() && t[at] >= '0' && t[at] <= '9' && digits < 4) value = value * 10 + (t[at++] - '0'), ++digits;
    if (digits == 0 || value > 255) return std::nullopt;
    rgb[k] = value;
    if (k < 2) {
      if (at >= t.size() || t[at] != ',') return std::nullopt;
      ++at;
    }
  }
  if (at != t.size()) return std::nullopt;
  return rgb;
}

}  // namespace tv::plot
