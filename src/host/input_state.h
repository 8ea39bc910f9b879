#pragma once
// What the user's input leaves beside the answers of a selection: the keys held as it ended, where
// the cursor stood, and the keys the input filter acts on while a selection prompt stands.
#include <functional>
#include <optional>

#include "host/geometry.h"

namespace tv::host {

inline constexpr int kTabKey = 9;

// Whether `key` (a virtual key code, kTabKey) was held when the last selection returned.
bool KeyHeldAtSelection(int key);
// The cursor's position when the last selection returned, in user coordinates; nullopt when the
// selection left none (a whole-drawing or by-handle answer).
std::optional<Point3d> CursorAtSelection();

// While it lives, `key` typed alone at a selection prompt runs `action`, and the prompt stands on.
class SelectionKey {
 public:
  SelectionKey(char key, std::function<void()> action);
  ~SelectionKey();
  SelectionKey(const SelectionKey&) = delete;
  SelectionKey& operator=(const SelectionKey&) = delete;

 private:
  char key_;
};

// ---- for the host's editor -------------------------------------------------------------------------
// A selection ended with these keys held and the cursor there.
void NoteSelectionInput(bool tabHeld, std::optional<Point3d> cursor);
// Runs the action of a watched key, with or without regard to case; false when none watches it.
bool RunSelectionKey(char key);

}  // namespace tv::host
