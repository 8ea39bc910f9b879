// The settings form on the host's command line: the controls are listed by number, a number
// changes its control, Enter presses OK and a cancel drops the form.
#include <string>
#include <string_view>

#include "host/editor.h"
#include "settings/config.h"
#include "settings/setting_form.h"

namespace tv::settings {

namespace {

using Kind = Dlg_Setting::Kind;

std::string_view Trimmed(std::string_view text) {
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
  while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) text.remove_suffix(1);
  return text;
}

std::optional<std::size_t> ControlNumber(std::string_view text, std::size_t count) {
  if (text.empty() || text.size() > 3) return std::nullopt;
  std::size_t n = 0;
  for (char ch : text) {
    if (ch < '0' || ch > '9') return std::nullopt;
    n = n * 10 + static_cast<std::size_t>(ch - '0');
  }
  if (n < 1 || n > count) return std::nullopt;
  return n - 1;
}

std::string ControlLine(const Dlg_Setting& form, std::size_t i) {
  const Dlg_Setting::Control& c = Dlg_Setting::Controls()[i];
  std::string line = "\n  " + std::to_string(i + 1) + ". ";
  switch (c.kind) {
    case Kind::Check: line += (form.value(i) ? "[√] " : "[  ] ") + std::string(c.label); break;
    case Kind::Fixed: line += "[√] " + std::string(c.label) + "（不可更改）"; break;
    case Kind::Choice: {
      line += std::string(c.label) + "：" + form.valueText(i) + "（";
      for (std::size_t k = 0; k < c.choices.size(); ++k)
        line += (k ? " / " : "") + std::to_string(k) + " " + std::string(c.choices[k]);
      line += "）";
      break;
    }
    case Kind::Slider:
      line += form.valueText(i) + "（滑块 " + std::to_string(form.value(i)) + "，" + std::to_string(c.minimum) + " 到 " +
              std::to_string(c.maximum) + "）";
      break;
  }
  if (!c.tooltip.empty()) {
    std::string tip(c.tooltip);
    for (std::size_t at = 0; (at = tip.find('\n', at)) != std::string::npos; at += 7) tip.replace(at, 1, "\n      ");
    line += "\n      提示：" + tip;
  }
  return line;
}

void ShowForm(const Dlg_Setting& form) {
  std::string text = "\n" + std::string(Dlg_Setting::kTitle);
  const auto controls = Dlg_Setting::Controls();
  for (std::size_t g = 0; g < Dlg_Setting::kGroups.size(); ++g) {
    text += "\n" + std::string(Dlg_Setting::kGroups[g]);
    for (std::size_t i = 0; i < controls.size(); ++i)
      if (controls[i].group == g) text += ControlLine(form, i);
  }
  host::Print(text);
}

// Changes one control as its kind is changed; false when the user cancelled.
bool ChangeControl(Dlg_Setting& form, std::size_t i) {
  host::Editor& editor = host::CurrentEditor();
  const Dlg_Setting::Control& c = Dlg_Setting::Controls()[i];
  switch (c.kind) {
    case Kind::Fixed: host::Print("\n该项为必选，不可更改。"); return true;
    case Kind::Check: form.setValue(i, form.value(i) ? 0 : 1); break;
    case Kind::Choice: {
      std::vector<std::string> items(c.choices.begin(), c.choices.end());
      const auto chosen = editor.chooseItem(c.label, items, form.value(i));
      if (!chosen) return false;
      form.setValue(i, *chosen);
      break;
    }
    case Kind::Slider: {
      const std::string prompt = "\n" + std::string(c.label) + "滑块位置 (" + std::to_string(c.minimum) + " 到 " +
                                 std::to_string(c.maximum) + ") <" + std::to_string(form.value(i)) + ">: ";
      while (true) {
        std::int32_t step = form.value(i);
        const int rc = editor.getInteger(prompt, step);
        if (rc == host::RTCAN) return false;
        if (rc != host::RTNORM || form.setValue(i, step)) break;
        host::Print("\n数值应在 " + std::to_string(c.minimum) + " 到 " + std::to_string(c.maximum) + " 之间。");
      }
      break;
    }
  }
  // The control shows its new state at once, as a moved slider refreshes its label.
  host::Print(ControlLine(form, i));
  return true;
}

// Runs the form; true for OK.
bool RunForm(Dlg_Setting& form) {
  ShowForm(form);
  const std::size_t count = Dlg_Setting::Controls().size();
  while (true) {
    std::string answer;
    if (host::CurrentEditor().getString("\n输入要修改的项目编号，确定(O)/取消(C) <确定>: ", answer) != host::RTNORM)
      return false;
    const std::string_view a = Trimmed(answer);
    if (a.empty() || a == "O" || a == "o" || a == "确定") return true;
    if (a == "C" || a == "c" || a == "取消") return false;
    if (a == "?" || a == "？") {
      ShowForm(form);
      continue;
    }
    const auto i = ControlNumber(a, count);
    if (!i) {
      host::Print("\n无效的编号。");
      continue;
    }
    if (!ChangeControl(form, *i)) return false;
  }
}

}  // namespace

void SettingCommand() {
  Config& config = GlobalConfig();
  Dlg_Setting form(config);
  if (!RunForm(form)) return;
  form.store(config);
  SaveConfig(config, true, false);
}

}  // namespace tv::settings
