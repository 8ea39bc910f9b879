#pragma once
// The form "快捷命令设置" as a model: one fixed row per command that may get a shortcut, blank rows
// between the groups, and the user's shortcut beside each. Nothing reaches the settings before OK.
#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace tv::host {

class Dlg_ShortCut {
 public:
  static constexpr std::string_view kTitle = "快捷命令设置";
  static constexpr std::string_view kFunctionColumn = "    功  能";
  static constexpr std::string_view kShortcutColumn = "对应快捷命令";
  static constexpr std::string_view kHint = "点击列表对应项输入或修改快捷命令";
  static constexpr std::string_view kDeleteAllQuestion = "确实要删除全部快捷命令吗 ?";

  struct Row {
    std::string_view text;  // blank for the rows between groups
    int commandNumber = 0;  // 0: a blank row, which can't be edited
    std::string shortcut;
  };

  // Loads each row's shortcut from the settings.
  Dlg_ShortCut();

  const std::vector<Row>& rows() const { return rows_; }
  // Whether a row takes a shortcut: a command row, not a blank one.
  bool editable(std::size_t row) const;
  // The edit box closed on `text`: every blank is removed and the rest goes into the row. False,
  // and nothing changed, for a row that can't be edited.
  bool setShortcut(std::size_t row, std::string_view text);
  // Empties every row's shortcut (after the user confirmed the question).
  void clearAll();
  // OK: the settings' shortcut table becomes the rows with a shortcut, in row order; then the
  // menu is rebuilt, the configuration written and the commands registered again. False when the
  // configuration could not be written (the table and commands are changed all the same).
  bool apply() const;

 private:
  std::vector<Row> rows_;
};

// The command numbers the form offers no row for: the form's own, help, about, uninstall, and the
// one without a menu entry.
inline constexpr std::array<int, 5> kNoShortcutCommands{9, 10, 11, 12, 18};

// Command 9: the form on the command line. A row number, alone or with the new shortcut, edits
// that row; D deletes all; Enter or O is OK; C cancels.
void ShortcutCommand();

}  // namespace tv::host
