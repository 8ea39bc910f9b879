#pragma once
// "批打印到纸张（旧版）": the old paper batch's form, with the ways of picking the sheets on its
// face. On the host's command line the controls are listed by number; a number or a label
// (optionally followed by a value) changes a control, Enter is OK and C cancels.
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tv::plot {

inline constexpr std::string_view kOldBatchTitle = "批打印到纸张（旧版）";
inline constexpr std::string_view kOldBatchFormName = "Dlg_BPlot";

// The five ways of picking the sheets, in the order of the form.
enum class PickWay : std::int32_t {
  Blocks = 0,     // "指定图块"
  LayerRects = 1, // "指定图层上封闭矩形"
  Rects = 2,      // "自行选择封闭矩形"
  Points = 3,     // "自行选点确定"
  Groups = 4,     // "自行选择图集确定打印范围"
};

struct OldBatchChoices {
  PickWay way = PickWay::Blocks;
  std::int32_t copies = 1;
  bool autoRotate = true;
  bool toPlt = false;
  double margin = 0.0;  // drawing units added around a picked group
  std::vector<std::string> blocks;
  std::vector<std::string> layers;
  bool operator==(const OldBatchChoices&) const = default;
};

// Shows the form over the choices the drawing keeps (or the defaults). On OK the choices go into
// the drawing's record and are returned; nullopt on cancel.
std::optional<OldBatchChoices> Dlg_BPlot();

}  // namespace tv::plot
