// The texts of a field: what each kind of text entity holds, how a candidate is cleaned, and the
// reading order in which several texts are joined.
#include <string_view>

#include "recognition/sheet_order.h"
#include "titleblock/field_extraction.h"
#include "titleblock/field_extraction_internal.h"

namespace tv::titleblock {

namespace {

void ReplaceAll(std::string& text, std::string_view from, std::string_view to) {
  for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
    text.replace(at, from.size(), to);
}

}  // namespace

std::string StripMTextCodes(std::string text) {
  // Underline and overline switches carry no semicolon.
  for (std::string_view code : {"\\L", "\\l", "\\O", "\\o"}) ReplaceAll(text, code, "");
  // Font, height and alignment codes run from a backslash to a semicolon. A paragraph break with a
  // later semicolon goes with them, and the text between.
  for (std::size_t slash = text.find('\\'); slash != std::string::npos; slash = text.find('\\')) {
    const std::size_t semicolon = text.find(';', slash);
    if (semicolon == std::string::npos) break;
    text.erase(slash, semicolon - slash + 1);
  }
  for (std::size_t open = text.find('{'); open != std::string::npos; open = text.find('{')) {
    const std::size_t close = text.find('}', open + 1);
    if (close == std::string::npos) break;
    text.erase(close, 1);
    text.erase(open, 1);
  }
  return text;
}

int TextOfEntity(const host::Entity& entity, std::string& text) {
  text.clear();
  if (!entity) return kNoText;
  // Other vendors' texts are proxies where their application is not loaded: known by DXF name.
  const std::string name = entity.dxfName();
  if (name == "TCH_TEXT" || name == "TCH_MTEXT") {
    text = entity.storedText();
    ReplaceAll(text, "\r", "");
    ReplaceAll(text, "\n", "\\P");
    ReplaceAll(text, "^C", "");
    return name == "TCH_TEXT" ? kVendorText : kVendorMultilineText;
  }
  switch (entity.kind()) {
    case host::EntityClass::Text:
    case host::EntityClass::Attribute: text = entity.storedText(); return kPlainText;
    case host::EntityClass::MText: text = entity.storedText(); return kMultilineText;
    default: return kNoText;
  }
}

std::optional<std::string> CleanText(std::string text, bool multiline) {
  if (multiline) {
    text = StripMTextCodes(std::move(text));
    ReplaceAll(text, "\\P", kLineMark);
    ReplaceAll(text, "\n", kLineMark);
  }
  // Only ASCII blanks: a full-width blank is part of the text.
  const std::size_t first = text.find_first_not_of(' ');
  if (first == std::string::npos) return std::nullopt;
  text.erase(0, first);
  text.erase(text.find_last_not_of(' ') + 1);
  return text;
}

std::optional<std::string> CleanTextOf(const host::Entity& entity) {
  std::string text;
  const int kind = TextOfEntity(entity, text);
  if (kind == kNoText) return std::nullopt;
  const bool multiline = kind == kMultilineText || kind == kVendorMultilineText || entity.isMTextAttribute();
  return CleanText(std::move(text), multiline);
}

void SortReadingOrder(std::vector<FieldText>& texts, double rotation) {
  // The centres of the boxes are picked one at a time, as sheets are, rows from the top and each
  // row from the left (style 1), on the sheet turned upright.
  const Matrix3d upright = Matrix3d::rotation(-rotation);
  std::vector<Point3d> centres;
  centres.reserve(texts.size());
  for (const FieldText& t : texts) centres.push_back(t.box.transformed(upright).center());
  std::vector<FieldText> left = std::move(texts);
  texts.clear();
  while (!left.empty()) {
    int next = recognition::PickNextSheet(centres, centres, 1);
    if (next < 0 || next >= static_cast<int>(left.size())) next = 0;
    texts.push_back(std::move(left[next]));
    left.erase(left.begin() + next);
    centres.erase(centres.begin() + next);
  }
}

std::string JoinTexts(const std::vector<FieldText>& texts, ObjectIdArray& ids) {
  std::string joined;
  ids.clear();
  for (std::size_t i = 0; i < texts.size(); ++i) {
    if (i > 0) joined += kLineMark;
    joined += texts[i].text;
    // Pieces of an exploded insert belong to no drawing and have no id.
    if (!texts[i].id.isNull()) ids.push_back(texts[i].id);
  }
  return joined;
}

}  // namespace tv::titleblock
