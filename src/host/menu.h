#pragma once
// The module's popup menu "T_批打印" on the host's menu bar, rebuilt from the user's shortcuts.
// The host's menus are plain data here: groups of named popups and the titles on the menu bar,
// alive for the process as the host's menu state is. A console shows them as numbered text.
#include <string>
#include <string_view>
#include <vector>

namespace tv::host {

inline constexpr std::string_view kMenuTitle = "T_批打印";
inline constexpr std::string_view kMenuGroupName = "ACAD";

struct MenuItem {
  enum class Kind { Command, Separator, Submenu };
  Kind kind = Kind::Separator;
  std::string label;      // as shown: the caption, "caption--shortcut" with a shortcut, or the submenu's name
  int commandNumber = 0;  // Command only
  std::string macro;      // Command only: the command name and one blank, which ends it as Enter would
  std::vector<MenuItem> items;  // Submenu only
};

struct PopupMenu {
  std::string name;
  std::vector<MenuItem> items;
};

struct MenuGroup {
  std::string name;
  std::vector<PopupMenu> menus;
};

// The host's menu state: its menu groups (the host starts with the group "ACAD") and the titles on
// the menu bar, in order.
struct HostMenus {
  std::vector<MenuGroup> groups;
  std::vector<std::string> bar;
};
HostMenus& Menus();

// The whole rebuild: the popup reused when it exists, else made; put on the bar; filled. MENUBAR
// is set to 1 only when the popup had to be made. Without a menu group it does nothing.
void BuildMenu();
// Adds the items of the module to an empty popup.
void FillMenu(PopupMenu& popup);
// Puts a command item at `position` (at the end when past it): its label carries the command's
// shortcut, when it has one, as "label--shortcut".
void AddItem(std::vector<MenuItem>& menu, std::size_t position, int commandNumber, std::string_view label,
             std::string_view macro);
void AddSeparator(std::vector<MenuItem>& menu, std::size_t position);

// The module's popup as the host holds it; nullptr before the first BuildMenu.
const PopupMenu* ModulePopup();
bool MenuBuilt();

}  // namespace tv::host
