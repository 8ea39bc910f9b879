#pragma once
// Papers: whole-millimetre sizes snapped onto the GB paper family, their internal names
// ("TV_A3_Plus_1+1-2", "TV_A3_Plus_700", "TV_733x512") and the seven ways users see those names.
// Pure logic; nothing of the host.
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tv::paper {

// A paper, always long side first (orientation belongs to the sheet, not the paper).
struct MyPaper {
  std::int32_t length = 0;  // long side, mm
  std::int32_t width = 0;   // short side, mm
  bool standard = false;    // snapped onto a catalogue row, or taken from the standard list

  friend bool operator==(const MyPaper&, const MyPaper&) = default;
};

// Owns its papers; pointers handed out by AddPaper/FindPaperByName stay valid while the row lives.
using PaperList = std::vector<std::unique_ptr<MyPaper>>;

// Number of naming styles; RenderPaperName treats any other value as style 0.
inline constexpr std::int32_t kPaperNameStyleCount = 7;

// Snaps length and width onto the A, B and lengthened catalogue and sets `standard` when a row was
// taken. Sizes off every row keep their (possibly width-snapped) values.
void NormalizePaperSize(MyPaper& paper);

// The internal name; a pure function of length and width.
std::string PaperNameOf(const MyPaper& paper);

// How a style is offered ("方式01") and explained ("(加长比例折算为数字)"); empty outside 0 to 6.
std::string_view PaperNameStyleChoice(std::int32_t style);
std::string_view PaperNameStyleLabel(std::int32_t style);

// The style stored with the title-block library (0 to 6).
std::int32_t CurrentPaperNameStyle();

// Rewrites an internal name in place into naming style `style` (0 to 6).
void RenderPaperName(std::string& name, std::int32_t style);
// The same in the style stored with the title-block library.
void RenderPaperName(std::string& name);

// The name in the current style; with `withSize` the size is added ("A3 (420x297)"), or stands
// alone ("733x512") for a custom size. `swapSides` writes width first.
std::string PaperDisplayName(const MyPaper& paper, bool withSize, bool swapSides);

// Normalises a paper of sides a and b (either order; cut to whole millimetres first) and returns the
// row of `list` with the same sides, appending a new one when there is none. `added` tells which.
MyPaper* AddPaper(PaperList& list, double a, double b, bool& added);

// Normalises `paper` and appends it without looking for a duplicate; returns the stored row.
MyPaper* AppendPaper(PaperList& list, MyPaper paper);

// The first row whose internal name equals `name`; null when none.
MyPaper* FindPaperByName(const PaperList& list, const std::string& name);

// Keeps the first of all rows with equal sides; the later ones are removed and deleted.
void RemoveDuplicatePapers(PaperList& list);

// Appends the 21 standard papers (A4 to A0 and the usual lengthened sizes), `standard` set.
void BuildStandardPaperList(PaperList& list);

// The paper behind entry `choice` of the paper choice list: 0-4 are A4..A0, 5-9 are A4..A0
// lengthened to the proportion of the drawn sheet (drawnX by drawnY). The result is normalised.
// False, outputs untouched, for a choice outside 0 to 9.
bool PaperForChoice(std::int32_t choice, double drawnX, double drawnY, std::int32_t& outLength,
                    std::int32_t& outWidth);

}  // namespace tv::paper
