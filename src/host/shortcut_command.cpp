// The shortcut form on the host's command line: the rows listed by number, a number with a name
// sets that row's shortcut, a number alone clears it, D deletes all, Enter is OK, C cancels.
#include <charconv>
#include <string>

#include "host/editor.h"
#include "host/shortcut_form.h"

namespace tv::host {

namespace {

std::string_view Trimmed(std::string_view text) {
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
  while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) text.remove_suffix(1);
  return text;
}

std::string RowLine(const Dlg_ShortCut& form, std::size_t i) {
  const Dlg_ShortCut::Row& r = form.rows()[i];
  if (r.commandNumber == 0) return "\n";
  std::string number = std::to_string(i + 1);
  if (number.size() < 2) number.insert(0, 1, ' ');
  return "\n  " + number + "." + std::string(r.text) + "    " + (r.shortcut.empty() ? "-" : r.shortcut);
}

void ShowForm(const Dlg_ShortCut& form) {
  std::string text = "\n" + std::string(Dlg_ShortCut::kTitle) + "\n  " + std::string(Dlg_ShortCut::kHint) + "\n  编号" +
                     std::string(Dlg_ShortCut::kFunctionColumn) + "    " + std::string(Dlg_ShortCut::kShortcutColumn);
  for (std::size_t i = 0; i < form.rows().size(); ++i) text += RowLine(form, i);
  Print(text);
}

bool IsWord(std::string_view a, std::string_view latin, std::string_view chinese) {
  return a == latin || (a.size() == 1 && latin.size() == 1 && (a[0] | 0x20) == (latin[0] | 0x20)) || a == chinese;
}

// Runs the form; true for OK.
bool RunForm(Dlg_ShortCut& form) {
  Editor& editor = CurrentEditor();
  ShowForm(form);
  while (true) {
    std::string answer;
    if (editor.getString("\n输入行号和快捷命令（只输行号则清除），删除全部(D)/确定(O)/取消(C) <确定>: ", answer) !=
        RTNORM)
      return false;
    const std::string_view a = Trimmed(answer);
    if (a.empty() || IsWord(a, "O", "确定")) return true;
    if (IsWord(a, "C", "取消")) return false;
    if (a == "?" || a == "？") {
      ShowForm(form);
      continue;
    }
    if (IsWord(a, "D", "删除全部")) {
      if (editor.messageBox(Dlg_ShortCut::kDeleteAllQuestion, Dlg_ShortCut::kTitle, MessageButtons::YesNo) ==
          MessageAnswer::Yes) {
        form.clearAll();
        ShowForm(form);
      }
      continue;
    }
    std::size_t row = 0;
    const auto [end, ec] = std::from_chars(a.data(), a.data() + a.size(), row);
    const std::string_view rest = a.substr(static_cast<std::size_t>(end - a.data()));
    if (ec != std::errc() || (!rest.empty() && rest.front() != ' ' && rest.front() != '\t') || row == 0 ||
        !form.editable(row - 1)) {
      Print("\n无效的行号。");
      continue;
    }
    form.setShortcut(row - 1, rest);
    Print(RowLine(form, row - 1));
  }
}

}  // namespace

void ShortcutCommand() {
  Dlg_ShortCut form;
  if (RunForm(form)) form.apply();
}

}  // namespace tv::host
