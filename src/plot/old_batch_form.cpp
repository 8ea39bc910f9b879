#include "plot/old_batch_form.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "host/editor.h"
#include "host/entity.h"
#include "host/wrappers.h"
#include "plot/list_command.h"
#include "plot/list_row_edits.h"
#include "plot/plot_job.h"
#include "plot/single_plot_record.h"

namespace tv::plot {

namespace {

enum Control { kBlocks, kLayerRects, kRects, kPoints, kGroups, kMargin, kCopies, kAutoRotate, kToPlt, kControlCount };

constexpr std::string_view kLabels[kControlCount] = {
    "指定图块", "指定图层上封闭矩形", "自行选择封闭矩形", "自行选点确定", "自行选择图集确定打印范围",
    "打印范围从图集周边外扩：", "打印份数：", "自动旋转", "打印到PLT文件"};

void Box(std::string_view text) { host::CurrentEditor().messageBox(text, kPlotCaption, host::MessageButtons::Ok); }

std::string Number(double v) {
  char text[64];
  std::snprintf(text, sizeof text, "%g", v);
  return text;
}

std::string Joined(const std::vector<std::string>& names) {
  if (names.empty()) return "（未选择）";
  std::string out;
  for (const std::string& name : names) out += (out.empty() ? "" : "、") + name;
  return out;
}

void Show(const OldBatchChoices& c) {
  std::string text = "\n" + std::string(kOldBatchTitle);
  for (int i = 0; i < kControlCount; ++i) {
    text += "\n  " + std::to_string(i + 1) + ". ";
    if (i <= kGroups) text += static_cast<int>(c.way) == i ? "(●) " : "( ) ";
    if (i == kAutoRotate) text += c.autoRotate ? "[√] " : "[  ] ";
    if (i == kToPlt) text += c.toPlt ? "[√] " : "[  ] ";
    text += kLabels[i];
    if (i == kBlocks) text += "：" + Joined(c.blocks);
    if (i == kLayerRects) text += "：" + Joined(c.layers);
    if (i == kMargin) text += Number(c.margin);
    if (i == kCopies) text += std::to_string(c.copies);
  }
  host::Print(text);
}

// The control an answer names by number or label, and what follows it.
std::optional<int> ControlOf(std::string_view answer, std::string& value) {
  const std::size_t blank = answer.find(' ');
  const std::string_view head = answer.substr(0, blank);
  value = blank == std::string_view::npos ? std::string() : std::string(TrimAnswer(answer.substr(blank + 1)));
  if (const std::optional<std::int32_t> n = WholeOfText(head); n && *n >= 1 && *n <= kControlCount) return *n - 1;
  const std::string typed = WithoutBlanks(head);
  for (int i = 0; i < kControlCount; ++i) {
    const std::string full = WithoutBlanks(kLabels[i]);
    const std::string bare = full.ends_with("：") ? full.substr(0, full.size() - std::string_view("：").size()) : full;
    if (!typed.empty() && (typed == bare || typed == full)) return i;
  }
  return std::nullopt;
}

std::vector<std::string> SplitNames(std::string_view text) {
  std::vector<std::string> names;
  std::string current;
  const auto flush = [&] {
    const std::string_view t = TrimAnswer(current);
    if (!t.empty()) names.emplace_back(t);
    current.clear();
  };
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == ',') {
      flush();
    } else if (text.substr(i).starts_with("、")) {
      flush();
      i += std::string_view("、").size() - 1;
    } else {
      current += text[i];
    }
  }
  flush();
  return names;
}

void AddOnce(std::vector<std::string>& names, std::string name) {
  for (const std::string& n : names)
    if (n == name) return;
  names.push_back(std::move(name));
}

// Block or layer names: typed (each must be in the drawing), or taken from picked entities.
// False when the user cancelled; the list is left as it was when nothing usable came.
bool PickNames(bool blocks, const std::string& typed, std::vector<std::string>& names) {
  std::vector<std::string> found;
  if (!typed.empty()) {
    const std::vector<host::LayerFacts> layers = blocks ? std::vector<host::LayerFacts>{} : host::ListLayers();
    for (std::string& name : SplitNames(typed)) {
      bool known = false;
      if (blocks) {
        const ObjectId id = host::FindBlock(name);
        known = !id.isNull();
        if (known) name = host::BlockName(id);
      } else {
        for (const host::LayerFacts& layer : layers)
          if (layer.name == name) known = true;
      }
      if (!known) {
        host::Print(std::string(blocks ? "\n未找到图块“" : "\n未找到图层“") + name + "”。");
        return true;
      }
      AddOnce(found, name);
    }
  } else {
    ObjectIdArray ids;
    const std::string prompt = blocks ? "\n选择图块：" : "\n选择图层：";
    const host::SelectionFilter filter = blocks ? host::TypeFilter({"INSERT"}) : host::SelectionFilter{};
    const int rc = host::CurrentEditor().select("_:$", {prompt, ""}, {}, filter, ids);
    if (rc == host::RTCAN) return false;
    for (const ObjectId id : ids) {
      const host::Entity e = host::OpenEntity(id);
      if (!e) continue;
      if (blocks) {
        if (e.kind() != host::EntityClass::BlockReference) continue;
        const std::string name = host::BlockName(e.dynamicBlockTableRecord());
        if (!name.empty()) AddOnce(found, name);
      } else if (const auto layer = host::ReadLayer(e.layer())) {
        AddOnce(found, layer->name);
      }
    }
  }
  if (!found.empty()) names = std::move(found);
  return true;
}

std::optional<bool> FlagOfText(std::string_view text) {
  const std::string t = WithoutBlanks(text);
  for (const char* on : {"是", "Y", "y", "1", "开"})
    if (t == on) return true;
  for (const char* off : {"否", "N", "n", "0", "关"})
    if (t == off) return false;
  return std::nullopt;
}

// Changes one control; false when the user cancelled a prompt of it.
bool Change(OldBatchChoices& c, int control, const std::string& value) {
  host::Editor& editor = host::CurrentEditor();
  switch (control) {
    case kBlocks:
    case kLayerRects:
      c.way = static_cast<PickWay>(control);
      return PickNames(control == kBlocks, value, control == kBlocks ? c.blocks : c.layers);
    case kRects:
    case kPoints:
    case kGroups: c.way = static_cast<PickWay>(control); return true;
    case kMargin: {
      double margin = c.margin;
      if (!value.empty()) {
        char* end = nullptr;
        margin = std::strtod(value.c_str(), &end);
        if (end != value.c_str() + value.size()) margin = -1;
      } else {
        const int rc = editor.getReal("\n打印范围从图集周边外扩 <" + Number(c.margin) + ">: ", margin);
        if (rc == host::RTCAN) return false;
      }
      if (!std::isfinite(margin) || margin < 0) {
        host::Print("\n外扩距离应为不小于 0 的数值。");
        return true;
      }
      c.margin = margin;
      return true;
    }
    case kCopies: {
      std::int32_t copies = c.copies;
      if (!value.empty()) {
        const std::optional<std::int32_t> n = WholeOfText(value);
        if (!n) {
          host::Print("\n需要整数值。");
          return true;
        }
        copies = *n;
      } else {
        const int rc = editor.getInteger("\n打印份数 <" + std::to_string(c.copies) + ">: ", copies);
        if (rc == host::RTCAN) return false;
      }
      if (copies < 1) {
        Box("打印份数不能小于 1 !");
        return true;
      }
      c.copies = copies;
      return true;
    }
    case kAutoRotate:
    case kToPlt: {
      bool& flag = control == kAutoRotate ? c.autoRotate : c.toPlt;
      if (value.empty()) {
        flag = !flag;
      } else if (const std::optional<bool> on = FlagOfText(value)) {
        flag = *on;
      } else {
        host::Print("\n无效的选择：" + value + "（是/否）。");
      }
      return true;
    }
    default: return true;
  }
}

OldBatchChoices KeptChoices() {
  OldBatchChoices c;
  const std::optional<SinglePlotChoices> kept = ReadSinglePlotRecord();
  if (!kept || kept->formName != kOldBatchFormName) return c;
  if (kept->values[0] >= 0 && kept->values[0] <= static_cast<std::int32_t>(PickWay::Groups))
    c.way = static_cast<PickWay>(kept->values[0]);
  if (kept->values[1] >= 1) c.copies = kept->values[1];
  c.autoRotate = kept->values[2] != 0;
  c.toPlt = kept->values[3] != 0;
  if (std::isfinite(kept->scale) && kept->scale >= 0) c.margin = kept->scale;
  c.blocks = kept->blocks;
  c.layers = kept->layers;
  return c;
}

}  // namespace

std::optional<OldBatchChoices> Dlg_BPlot() {
  OldBatchChoices c = KeptChoices();
  Show(c);
  for (;;) {
    std::string answer;
    if (host::CurrentEditor().getString("\n输入要修改的项目编号或名称，确定(O)/取消(C) <确定>: ", answer) != host::RTNORM)
      return std::nullopt;
    const std::string_view a = TrimAnswer(answer);
    if (a.empty() || a == "O" || a == "o" || a == "确定") {
      if (c.way == PickWay::Blocks && c.blocks.empty()) {
        Box("请先选择指定图块名 !");
        continue;
      }
      if (c.way == PickWay::LayerRects && c.layers.empty()) {
        Box("请先选择指定图层名 !");
        continue;
      }
      break;
    }
    if (a == "C" || a == "c" || a == "取消") return std::nullopt;
    if (a == "?" || a == "？") {
      Show(c);
      continue;
    }
    std::string value;
    const std::optional<int> control = ControlOf(a, value);
    if (!control) {
      host::Print("\n无效的编号。");
      continue;
    }
    if (!Change(c, *control, value)) return std::nullopt;
    Show(c);
  }
  WriteSinglePlotRecord({{static_cast<std::int32_t>(c.way), c.copies, c.autoRotate ? 1 : 0, c.toPlt ? 1 : 0, 0},
                         c.margin,
                         std::string(kOldBatchFormName),
                         c.blocks,
                         c.layers});
  return c;
}

}  // namespace tv::plot
