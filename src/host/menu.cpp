#include "host/menu.h"

#include <algorithm>
#include <cstdint>

#include "host/command_table.h"
#include "host/editor.h"
#include "settings/config.h"

namespace tv::host {

namespace {

bool SameNameNoCase(std::string_view a, std::string_view b) {
  return std::ranges::equal(a, b, [](char x, char y) {
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
    return lower(x) == lower(y);
  });
}

std::vector<MenuItem>::iterator At(std::vector<MenuItem>& menu, std::size_t position) {
  return menu.begin() + static_cast<std::ptrdiff_t>(std::min(position, menu.size()));
}

// A command item of the module: its menu caption and the macro that types its name.
void AddCommandItem(std::vector<MenuItem>& menu, std::size_t position, int commandNumber) {
  AddItem(menu, position, commandNumber, MenuTextOf(commandNumber), NumberedCommandName(commandNumber) + " ");
}

// Commands and separators by position: command numbers, 0 for a separator.
void AddItems(std::vector<MenuItem>& menu, std::initializer_list<int> numbers) {
  for (int n : numbers) {
    if (n == 0) AddSeparator(menu, menu.size());
    else AddCommandItem(menu, menu.size(), n);
  }
}

MenuItem Submenu(std::string_view name) {
  MenuItem item;
  item.kind = MenuItem::Kind::Submenu;
  item.label = name;
  return item;
}

void PutOnBar(HostMenus& menus, const std::string& title) {
  if (std::ranges::find(menus.bar, title) == menus.bar.end()) menus.bar.push_back(title);
}

MenuGroup* ModuleGroup(HostMenus& menus) {
  if (menus.groups.empty()) return nullptr;
  for (MenuGroup& g : menus.groups)
    if (SameNameNoCase(g.name, kMenuGroupName)) return &g;
  return &menus.groups.back();
}

}  // namespace

HostMenus& Menus() {
  static HostMenus menus{{MenuGroup{std::string(kMenuGroupName), {}}}, {}};
  return menus;
}

void AddItem(std::vector<MenuItem>& menu, std::size_t position, int commandNumber, std::string_view label,
             std::string_view macro) {
  MenuItem item;
  item.kind = MenuItem::Kind::Command;
  item.commandNumber = commandNumber;
  const std::string shortcut = settings::ShortcutOf(commandNumber);
  item.label = shortcut.empty() ? std::string(label) : std::string(label) + "--" + shortcut;
  item.macro = macro;
  menu.insert(At(menu, position), std::move(item));
}

void AddSeparator(std::vector<MenuItem>& menu, std::size_t position) { menu.insert(At(menu, position), MenuItem{}); }

void FillMenu(PopupMenu& popup) {
  std::vector<MenuItem>& items = popup.items;
  AddItems(items, {1, 0, 2, 0, 4, 0, 5, 0, 16, 0});
  MenuItem aids = Submenu("辅助功能");
  // The trailing separator stands after the last aid on purpose.
  AddItems(aids.items, {7, 0, 8, 0, 15, 0, 20, 0, 19, 0, 17, 0});
  items.push_back(std::move(aids));
  AddSeparator(items, items.size());
  MenuItem setup = Submenu("设置");
  AddItems(setup.items, {14, 0, 3, 0, 6, 0, 13, 0, 9, 0, 12});
  items.push_back(std::move(setup));
  AddItems(items, {0, 10, 0, 11});
}

void BuildMenu() {
  HostMenus& menus = Menus();
  MenuGroup* group = ModuleGroup(menus);
  if (!group) return;
  const std::string title(kMenuTitle);
  auto popup = std::ranges::find(group->menus, title, &PopupMenu::name);
  if (popup != group->menus.end()) {
    // Reusing the popup keeps its place on the bar.
    popup->items.clear();
    PutOnBar(menus, title);
    FillMenu(*popup);
    return;
  }
  group->menus.push_back(PopupMenu{title, {}});
  PutOnBar(menus, title);
  FillMenu(group->menus.back());
  // A new popup is seen only with the menu bar on.
  if (HasEditor()) SetVar("MENUBAR", std::int32_t{1});
}

const PopupMenu* ModulePopup() {
  for (const MenuGroup& g : Menus().groups)
    for (const PopupMenu& m : g.menus)
      if (m.name == kMenuTitle) return &m;
  return nullptr;
}

bool MenuBuilt() { return ModulePopup() != nullptr; }

}  // namespace tv::host
