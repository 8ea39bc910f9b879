#include "host/shortcut_form.h"

#include "host/command_table.h"
#include "host/menu.h"
#include "settings/config.h"

namespace tv::host {

namespace {

struct RowSpec {
  std::string_view text;
  int commandNumber;
};

// The rows in the order of the menu's groups; a blank row separates the groups.
constexpr std::array<RowSpec, 17> kRows{{
    {"  单张打印到文件", 1},
    {"  批打到文件(通用型)", 2},
    {"  批打到文件(图框型)", 4},
    {"  批打到纸张(新版)", 5},
    {"  批打到纸张(旧版)", 16},
    {"", 0},
    {"  签名插入", 7},
    {"  签名授权", 8},
    {"  打印设置", 14},
    {"  图框信息库管理", 3},
    {"  签名库管理", 6},
    {"  印章库管理", 13},
    {"", 0},
    {"  刷字符内容", 15},
    {"  刷图块属性", 20},
    {"  真彩色-->索引色", 19},
    {"  生成外框", 17},
}};

}  // namespace

Dlg_ShortCut::Dlg_ShortCut() {
  rows_.reserve(kRows.size());
  for (const RowSpec& r : kRows)
    rows_.push_back({r.text, r.commandNumber, r.commandNumber > 0 ? settings::ShortcutOf(r.commandNumber) : ""});
}

bool Dlg_ShortCut::editable(std::size_t row) const { return row < rows_.size() && rows_[row].commandNumber > 0; }

bool Dlg_ShortCut::setShortcut(std::size_t row, std::string_view text) {
  if (!editable(row)) return false;
  std::string shortcut;
  for (char c : text)
    if (c != ' ' && c != '\t') shortcut += c;
  rows_[row].shortcut = std::move(shortcut);
  return true;
}

void Dlg_ShortCut::clearAll() {
  for (Row& r : rows_) r.shortcut.clear();
}

bool Dlg_ShortCut::apply() const {
  settings::Config& config = settings::GlobalConfig();
  config.shortcut_ids.clear();
  config.shortcut_names.clear();
  for (const Row& r : rows_) {
    if (r.commandNumber <= 0 || r.shortcut.empty()) continue;
    config.shortcut_ids.push_back(r.commandNumber);
    config.shortcut_names.push_back(r.shortcut);
  }
  BuildMenu();
  const bool saved = settings::SaveConfig(config, true, false);
  RegisterCommands();
  return saved;
}

}  // namespace tv::host
