#include "host/input_state.h"

#include <cctype>
#include <map>

namespace tv::host {

namespace {

struct InputState {
  bool tabHeld = false;
  std::optional<Point3d> cursor;
  std::map<char, std::function<void()>> keys;
};

InputState& State() {
  static InputState state;
  return state;
}

}  // namespace

bool KeyHeldAtSelection(int key) { return key == kTabKey && State().tabHeld; }
std::optional<Point3d> CursorAtSelection() { return State().cursor; }

SelectionKey::SelectionKey(char key, std::function<void()> action) : key_(key) { State().keys[key] = std::move(action); }
SelectionKey::~SelectionKey() { State().keys.erase(key_); }

void NoteSelectionInput(bool tabHeld, std::optional<Point3d> cursor) {
  State().tabHeld = tabHeld;
  State().cursor = cursor;
}

bool RunSelectionKey(char key) {
  const auto& keys = State().keys;
  auto it = keys.find(key);
  if (it == keys.end()) it = keys.find(static_cast<char>(std::toupper(static_cast<unsigned char>(key))));
  if (it == keys.end()) it = keys.find(static_cast<char>(std::tolower(static_cast<unsigned char>(key))));
  if (it == keys.end() || !it->second) return false;
  // The action may watch keys of its own; it runs from a copy.
  const std::function<void()> action = it->second;
  action();
  return true;
}

}  // namespace tv::host
