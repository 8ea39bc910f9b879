#pragma once
// "录入新图框": one definition entered by picking its field and stamp areas on an insert of the
// frame. The form changes the definition in place; the caller appends it on OK or drops it.
#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/object_id.h"
#include "titleblock/tk_library.h"

namespace tv::titleblock {

// The areas the form picks, in the order of its buttons: 1 to 6 the fields A to F, 7 to 10 the
// register, issue, project and completed stamps. 0 is the frame, 11 the print extents.
inline constexpr int kSetSlotFrame = 0;
inline constexpr int kSetSlotPrint = 11;
inline constexpr int kSetSlotCount = 12;
Extents3d& SetSlotArea(TK_Customization& definition, int slot);
const Extents3d& SetSlotArea(const TK_Customization& definition, int slot);
// "图号(A)" … "竣工章位置": the name of a field or stamp slot (1 to 10).
std::string_view SetSlotName(int slot);

// The papers of the choice "选  择  纸  张": A4 to A0, then the same lengthened, and an eleventh
// row for a custom paper: a paper that is none of them stands there under its own name, else the
// row reads "自定义纸张". `preselected` is the row the definition's paper stands on.
std::vector<std::string> PaperChoiceRows(const paper::MyPaper& paper, int& preselected);
// The two sides of a custom paper typed on one line, "841x594" (also "841 594", "841,594",
// "841*594", "841×594"); nullopt unless both are numbers.
std::optional<std::pair<double, double>> ParsePaperSides(std::string_view text);
// Row `row` of those for `definition`: the lengthened rows follow the print extents' proportion
// (the frame's when none is set). False for a row that needs the custom paper form.
bool PaperOfChoice(const TK_Customization& definition, int row, paper::MyPaper& result);
// The choice form shown on the command line; true when the paper changed.
bool ChoosePaper(TK_Customization& definition);
// The list "排序优先级别" (1 to 9); true when chosen.
bool ChooseSortPriority(TK_Customization& definition);
// The list "序号位数" (1 to 9), on the definition's digits; true when chosen.
bool ChooseSerialDigits(TK_Customization& definition);
// The rule form with the definition's rule; true when a rule was stored.
bool EditNameRule(TK_Customization& definition, TK_Library& library);

class Dlg_TK_Set {
 public:
  static constexpr std::string_view kTitle = "录入新图框";
  static constexpr std::string_view kUndefined = "未定义";
  static constexpr std::string_view kBadRange = "范围选取有误 !";
  static constexpr std::string_view kBadRangeCaption = "图框定义";
  static constexpr std::string_view kBadPrintRange = "所选范围无效 !";
  static constexpr std::string_view kNoRule = "文件命名规则未定义 !";
  static constexpr std::string_view kDynamicNote = "（注：为动态图框）";
  static constexpr std::string_view kCopyTitle = "选择图框复制信息";
  static constexpr std::string_view kFirstPoint = "\n选择所在范围的第一点：";
  static constexpr std::string_view kSecondPoint = "\n选择所在范围的另一角点：";

  // Opens on a captured definition: every field and stamp area, the print extents and the rule
  // are cleared. The frame is drawn when `drawSlots` (the command line's own runs draw nothing).
  Dlg_TK_Set(TK_Customization& definition, TK_Library& library, bool drawSlots = true);
  ~Dlg_TK_Set();
  Dlg_TK_Set(const Dlg_TK_Set&) = delete;
  Dlg_TK_Set& operator=(const Dlg_TK_Set&) = delete;

  // A box picked for slot 1 to 10 (corners in the drawing), stored about the pick centre. False
  // with `message` when it is not wider and higher than 0.00001; the old area stays.
  bool storeArea(int slot, Point3d a, Point3d b, std::string& message);
  // The same for the print extents; a void box clears them. A paper not chosen by hand follows.
  bool storePrintExtents(Point3d a, Point3d b, std::string& message);
  // Prompts for the two corners and stores them; false when cancelled or refused.
  bool pickArea(int slot);

  // "从已录图框复制信息": enabled with at least one definition in the library.
  bool canCopy() const;
  std::vector<std::string> copyChoices() const;
  // Copies rule, priority and the ten areas, moved so that they keep to the lower right corner.
  void copyFrom(const TK_Customization& source);

  // "点取图号(A)范围 □" / "■" …
  std::string buttonText(int slot) const;
  // A field button is marked when its letter is used by the rule.
  bool marked(int slot) const;
  std::string ruleLabel() const;

  // OK: a rule is defined and names no field without an area. False with `message` otherwise.
  bool ok(std::string& message) const;

  // The form on the command line; true on OK.
  bool run();

  bool paperByHand = false;

 private:
  void redraw(int slot);
  void show() const;

  TK_Customization& definition_;
  TK_Library& library_;
  bool drawSlots_;
  std::array<ObjectId, kSetSlotCount> slots_{};
};

}  // namespace tv::titleblock
