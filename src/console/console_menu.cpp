// The console host's menus: MENU shows the menu bar's popups as numbered text and runs the macro
// of the item chosen, as a click on the item would; MENUBAR and WSCURRENT set their variables, and
// a new workspace brings its own menu bar, without the popups that modules added.
#include <charconv>

#include "console/console_editor.h"
#include "console/text_match.h"
#include "host/menu.h"

namespace tv::console {

namespace {

using host::MenuItem;

// The command items of a popup in the order shown, each once.
void ListItems(const std::vector<MenuItem>& items, const std::string& indent, std::string& text,
               std::vector<const MenuItem*>& numbered) {
  for (const MenuItem& item : items) {
    switch (item.kind) {
      case MenuItem::Kind::Separator: text += "\n" + indent + "----"; break;
      case MenuItem::Kind::Submenu:
        text += "\n" + indent + item.label + " >";
        ListItems(item.items, indent + "    ", text, numbered);
        break;
      case MenuItem::Kind::Command:
        numbered.push_back(&item);
        text += "\n" + indent + std::to_string(numbered.size()) + ". " + item.label;
        break;
    }
  }
}

const host::PopupMenu* PopupOnBar(const std::string& title) {
  for (const host::MenuGroup& g : host::Menus().groups)
    for (const host::PopupMenu& m : g.menus)
      if (m.name == title) return &m;
  return nullptr;
}

}  // namespace

void ConsoleEditor::addMenuCommands() {
  addHostCommand("MENU", [this](const std::vector<std::string>& args) { return menuCommand(args); });
  const auto setter = [this](std::string_view name) {
    return [this, name](const std::vector<std::string>& args) {
      std::string value;
      if (args.size() > 1) {
        value = args[1];
      } else {
        auto current = host::AsText(getVar(name));
        const auto number = host::AsInt(getVar(name));
        const std::string shown = current ? *current : number ? std::to_string(*number) : std::string();
        auto reply = ask("\n输入 " + std::string(name) + " 的新值 <" + shown + ">: ");
        if (!reply) return host::RTCAN;
        value = *reply;
      }
      value = std::string(TrimBlanks(value));
      if (value.empty()) return host::RTNORM;
      host::Value v = value;
      if (const auto current = getVar(name); current && std::holds_alternative<std::int32_t>(*current)) {
        std::int32_t n = 0;
        const auto [end, ec] = std::from_chars(value.data(), value.data() + value.size(), n);
        if (ec != std::errc() || end != value.data() + value.size()) {
          print("\n需要整数值。");
          return host::RTERROR;
        }
        v = n;
      }
      if (!setVar(name, v)) {
        print("\n无效的值。");
        return host::RTERROR;
      }
      // Another workspace shows its own menu bar: the popups that modules put there are gone.
      if (name == "WSCURRENT") host::Menus().bar.clear();
      return host::RTNORM;
    };
  };
  addHostCommand("MENUBAR", setter("MENUBAR"));
  addHostCommand("WSCURRENT", setter("WSCURRENT"));
}

int ConsoleEditor::menuCommand(const std::vector<std::string>& args) {
  std::string text;
  std::vector<const MenuItem*> numbered;
  for (const std::string& title : host::Menus().bar)
    if (const host::PopupMenu* popup = PopupOnBar(title)) {
      text += "\n" + popup->name;
      ListItems(popup->items, "  ", text, numbered);
    }
  if (numbered.empty()) {
    print("\n菜单栏上没有菜单项。");
    return host::RTERROR;
  }
  print(text);
  // Words after MENU answer its prompt, as typed on one line.
  if (args.size() > 1) answers_.pushFront({args[1]});
  while (true) {
    auto reply = ask("\n输入菜单项编号 <退出>: ");
    if (!reply) return host::RTCAN;
    const std::string_view typed = TrimBlanks(*reply);
    if (typed.empty()) return host::RTNORM;
    std::size_t n = 0;
    const auto [end, ec] = std::from_chars(typed.data(), typed.data() + typed.size(), n);
    if (ec == std::errc() && end == typed.data() + typed.size() && n >= 1 && n <= numbered.size()) {
      // The macro is typed as a click on the item would type it, once this command is over.
      sendStringToExecute(numbered[n - 1]->macro);
      return host::RTNORM;
    }
    print("\n无效的菜单项编号。");
  }
}

}  // namespace tv::console
