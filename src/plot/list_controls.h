#pragma once
// The controls of the file review lists beside the rows: which are in play for a family and a
// format, their labels and the entries of their lists. Pure logic; the list shows and edits them.
#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tv::plot {

enum class ListControl {
  Style,        // "打印样式"
  EditStyle,    // the button beside the style list
  Margin,       // "周边留白"
  Format,       // "输出格式"
  PathMode,     // "存储路径"
  Merge,        // "合并PDF", PDF only
  Signatures,   // "打印签名"
  Stamps,       // "打印印章", title-block list
  AsBlock,      // "存为图块", DWG only
  ScaleFilter,  // "比例、过滤", generic list
  NameRule,     // "命名、排序", generic list
  SortType,     // "序号、排序", generic list
  Index,        // "生 成 目 录", title-block list
  FileList,     // "文件清单", title-block list
  DrawIndex,    // "绘制目录": the index drawn into the drawing, title-block list
  PaperStatistics,  // "纸张统计": a menu of five base sizes; not for DWG
  Background,   // "背景色", JPG, PNG and DWF
  SerialNaming, // "文件名前面插入序号", title-block list
  Renumber,     // "图号重编", title-block list
  Device,       // "打印机", paper list
  Collate,      // "逐份打印", paper list
  ToPlt,        // "输出为PLT", paper list
  OpenFolder,   // "打开所在文件夹": the PLT folder once written, paper list
};

std::string_view ControlLabel(ListControl control);
// The controls shown for the family and the format, in the order of the form.
std::vector<ListControl> ControlsInPlay(bool titleBlock, std::int32_t format);
// The controls of the paper list.
std::vector<ListControl> PaperControls();

// "PDF", "DWF", "JPG", "PNG", "PLT", "EPS", "DWG" by format code.
const std::vector<std::string>& FormatNames();
// The code of a format name in any case; nullopt for none.
std::optional<std::int32_t> FormatOfName(std::string_view name);

// The "周边留白" entries and the margin each stands for: " 不留白", " + 01 mm", " - 01 mm" … " - 10 mm",
// and a stored value outside these as an extra entry at the end.
struct MarginList {
  std::vector<std::string> items;
  std::vector<std::int32_t> values;
  int selected = 0;
};
MarginList MarginItems(std::int32_t stored);

// "DWG内图形打印顺序": the nine orders, 1 to 9 by place.
inline constexpr std::string_view kSortTypeTitle = "DWG内图形打印顺序";
const std::vector<std::string>& SortTypeItems();

// What a control shows beside its label (its value, or nothing for a button).
struct ControlValues {
  std::string style;
  std::int32_t margin = 0;
  std::int32_t format = 0;
  std::int32_t pathMode = 1;
  std::string customPath;
  bool merge = false;
  bool signatures = true;
  bool stamps = false;
  bool asBlock = true;
  std::int32_t sortStyle = 1;
  std::int32_t red = 255, green = 255, blue = 255;
  std::string serialNaming;
  std::string device;
  bool collate = false, toPlt = false, openFolder = false;
};
std::string ControlValueText(ListControl control, const ControlValues& values);

// The colour typed as "R,G,B" (each 0 to 255) or a plain index word ("白", "黑"); nullopt when
// it can't be read.
std::optional<std::array<std::int32_t, 3>> ParseColour(std::string_view text);

}  // namespace tv::plot
