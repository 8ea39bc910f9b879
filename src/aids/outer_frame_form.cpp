// The form "生成外框设置" on the command line: a number chooses the way the frame widens or
// toggles the 1 : √2 check, a number with a value sets that way's value too ("2 100", "3 5").
#include <cstdio>
#include <sstream>
#include <string>

#include "aids/outer_frame.h"
#include "host/editor.h"

namespace tv::aids {

namespace {

constexpr const char* kTitle = "生成外框设置";
constexpr const char* kModes[3] = {"生成的外框不外扩", "四周外扩固定尺寸", "四周按短边长度比例外扩"};
constexpr const char* kNormalise = "外框长宽比标准化（1:√2）";
constexpr const char* kPrompt = "\n输入要修改的项目编号（可带数值），确定(O)/取消(C) <确定>: ";

std::string Number(double v) {
  char buf[32];
  std::snprintf(buf, sizeof buf, "%g", v);
  return buf;
}

void Show(const OuterFrameOptions& o) {
  std::string text = std::string("\n") + kTitle;
  for (int i = 0; i < 3; ++i) {
    text += "\n  " + std::to_string(i + 1) + ". " + (o.mode == i ? "(●) " : "(  ) ") + kModes[i];
    if (i == 1) text += "  " + Number(o.margin);
    if (i == 2) text += "  " + Number(o.percent) + " %";
  }
  text += std::string("\n  4. ") + (o.normalise ? "[√] " : "[  ] ") + kNormalise;
  host::Print(text);
}

// One answer applied to `o`; false, with `o` as it was, when the answer means nothing here.
bool Apply(const std::string& answer, OuterFrameOptions& o) {
  std::istringstream in(answer);
  int number = 0;
  if (!(in >> number) || number < 1 || number > 4) return false;
  double value = 0;
  const bool hasValue = static_cast<bool>(in >> value);
  std::string rest;
  if ((!hasValue && !in.eof()) || (in >> rest)) return false;
  if (number == 4) {
    if (hasValue) return false;
    o.normalise = o.normalise ? 0 : 1;
    return true;
  }
  if (hasValue && (number == 1 || !(value >= 0) || value > 1e12)) return false;
  o.mode = number - 1;
  if (hasValue) (number == 2 ? o.margin : o.percent) = value;
  return true;
}

}  // namespace

bool OuterFrameForm() {
  settings::Config& config = settings::GlobalConfig();
  OuterFrameOptions o = OuterFrameOptionsOf(config);
  Show(o);
  for (;;) {
    std::string answer;
    if (host::CurrentEditor().getString(kPrompt, answer) != host::RTNORM) return false;
    const auto first = answer.find_first_not_of(" \t");
    answer = first == std::string::npos ? std::string() : answer.substr(first, answer.find_last_not_of(" \t") - first + 1);
    if (answer.empty() || answer == "O" || answer == "o" || answer == "确定") break;
    if (answer == "C" || answer == "c" || answer == "取消") return false;
    if (answer == "?" || answer == "？") {
      Show(o);
      continue;
    }
    if (!Apply(answer, o)) {
      host::Print("\n无效的编号或数值。");
      continue;
    }
    Show(o);
  }
  StoreOuterFrameOptions(o, config);
  settings::SaveConfig(config, true, false);
  return true;
}

}  // namespace tv::aids
