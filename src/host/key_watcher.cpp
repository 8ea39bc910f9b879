// The key watcher: keys that act while a prompt or a preview waits. The tests stand in their
// order of precedence; the key passes on to the host whatever is done here.
#include "host/doc_state.h"
#include "host/editor.h"
#include "plot/generic_review.h"
#include "plot/title_review.h"

namespace tv::host {

void (*frameSettingForm)() = nullptr;
void (*singlePlotSettingForm)() = nullptr;

namespace {

constexpr int kKeyS = 83;
constexpr int kKeyLowerS = 115;  // kept beside 83 whatever it means on a given keyboard
constexpr int kKeyTab = 9;

bool IsS(int key) { return key == kKeyS || key == kKeyLowerS; }
bool IsPrevious(int key) { return key == 33 || key == 37 || key == 38; }  // Page Up, Left, Up
bool IsNext(int key) { return key == 34 || key == 39 || key == 40; }      // Page Down, Right, Down

// Rows of the review list that reviewKind names.
std::int32_t ReviewRows() {
  if (reviewKind == 1)
    if (const plot::Dlg_BPlot1* form = plot::GenericReview()) return static_cast<std::int32_t>(form->rows.size());
  if (reviewKind == 2)
    if (const plot::Dlg_BPlot2* form = plot::TitleReview()) return static_cast<std::int32_t>(form->rows.size());
  return 0;
}

// The prompt waiting now ends by a cancel and comes back with the new state.
void CancelPrompt() {
  if (HasEditor()) CurrentEditor().sendStringToExecute("\x03");
}

}  // namespace

KeyAction KeyWatcher(int message, int keyCode) {
  if (message != WM_KEYDOWN) return KeyAction::None;
  if (frameSettingKey && IsS(keyCode)) {
    if (frameSettingForm) frameSettingForm();
    return KeyAction::FrameSettings;
  }
  if (singlePlotWaiting && IsS(keyCode)) {
    singlePlotWaiting = false;
    if (singlePlotSettingForm) singlePlotSettingForm();
    singlePlotWaiting = true;
    return KeyAction::SinglePlotSettings;
  }
  if (singlePlotWaiting && keyCode == kKeyTab) {
    singlePlotMode = singlePlotMode == 1 ? 0 : 1;
    if (HasEditor()) {
      CancelPrompt();
      CurrentEditor().sendStringToExecute(singlePlotMode == 1 ? "SinglePlot_SelectW\n" : "SinglePlot_SelectP\n");
    }
    return KeyAction::SinglePlotMode;
  }
  if (jigActive1 && keyCode == kKeyTab) {
    jigMode1 = jigMode1 + 1 < 3 ? jigMode1 + 1 : 0;
    return KeyAction::JigMode;
  }
  if (jigActive2 && keyCode == kKeyTab) {
    jigMode2 = jigMode2 + 1 < 3 ? jigMode2 + 1 : 0;
    return KeyAction::JigMode;
  }
  if (reviewKind < 1 || PreviewIndex < 0) return KeyAction::None;
  if (IsPrevious(keyCode)) {
    if (PreviewIndex <= 0) return KeyAction::None;
    --PreviewIndex;
    CancelPrompt();
    return KeyAction::PreviewPrevious;
  }
  if (IsNext(keyCode)) {
    if (PreviewIndex >= ReviewRows() - 1) return KeyAction::None;
    ++PreviewIndex;
    CancelPrompt();
    return KeyAction::PreviewNext;
  }
  return KeyAction::None;
}

}  // namespace tv::host
