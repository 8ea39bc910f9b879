#include "aids/text_brush.h"

#include <string_view>
#include <vector>

#include "host/editor.h"
#include "host/entity.h"
#include "host/doc_state.h"
#include "host/input_state.h"
#include "host/text_edit.h"
#include "host/wrappers.h"
#include "recognition/sheet_geometry.h"
#include "recognition/sheet_traversal.h"
#include "recognition/working_coordinates.h"
#include "titleblock/field_extraction.h"
#include "titleblock/field_extraction_internal.h"

namespace tv::aids {

namespace {

constexpr const char* kSourcePrompt = "\n选择源字符：";
constexpr const char* kTargetPrompt = "\n选择目标字符：( 按住Tab键-->内容加至尾部 )";

void ReplaceAll(std::string& text, std::string_view from, std::string_view to) {
  for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
    text.replace(at, from.size(), to);
}

std::string TrimBlanks(const std::string& text) {
  const std::size_t first = text.find_first_not_of(' ');
  if (first == std::string::npos) return {};
  return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

bool OnHiddenLayer(const host::Entity& e) {
  const host::DrawingAids& aids = host::Aids();
  return FindId(aids.frozenLayerIds, e.layer()) >= 0 || FindId(aids.offLayerIds, e.layer()) >= 0;
}

// The text of the attribute under the cursor, a multiline one without its formatting.
std::string PickedAttributeText(ObjectId insertId, const std::optional<Point3d>& cursor) {
  const host::Entity a = host::OpenEntity(AttributeUnderCursor(insertId, cursor));
  if (!a) return {};
  return a.isMTextAttribute() ? titleblock::StripMTextCodes(a.storedText()) : a.storedText();
}

// The text a source gives, and another vendor's group 1 as stored.
std::string SourceText(const host::Entity& e, const std::optional<Point3d>& cursor, std::string& rawText) {
  rawText.clear();
  if (e.dxfName() == "ATTDEF") return e.storedText();
  if (e.kind() == host::EntityClass::BlockReference) return PickedAttributeText(e.id(), cursor);
  std::string text;
  const int kind = titleblock::TextOfEntity(e, text);
  if (kind == titleblock::kVendorText || kind == titleblock::kVendorMultilineText) rawText = e.storedText();
  if (kind == titleblock::kMultilineText || kind == titleblock::kVendorMultilineText)
    text = titleblock::StripMTextCodes(std::move(text));
  return text;
}

// Replaces or adds to one target; other classes are passed over.
void Brush(const host::Entity& e, const BrushContent& content, bool append, const std::optional<Point3d>& cursor) {
  const std::string old = e.storedText();
  if (e.kind() == host::EntityClass::BlockReference) {
    const ObjectId attribute = AttributeUnderCursor(e.id(), cursor);
    const host::Entity a = host::OpenEntity(attribute);
    if (!a) return;
    const std::string was = a.storedText();
    if (a.isMTextAttribute())
      host::SetEntityText(attribute, append ? JoinWithLineBreak(was, content.rich) : content.rich);
    else
      host::SetEntityText(attribute, append ? JoinWithBlank(was, content.plain) : content.plain);
    return;
  }
  if (e.kind() == host::EntityClass::MText) {
    host::SetEntityText(e.id(), append ? JoinWithLineBreak(old, content.rich) : content.rich);
    return;
  }
  if (e.kind() == host::EntityClass::Text)  // texts and attribute definitions
    host::SetEntityText(e.id(), append ? JoinWithBlank(old, content.plain) : content.plain);
}

}  // namespace

BrushContent MakeBrushContent(const std::string& text, const std::string& rawText) {
  BrushContent c;
  if (rawText.empty()) {
    c.rich = text;
    std::string plain = text;
    ReplaceAll(plain, "\\P", " ");
    ReplaceAll(plain, "\n", " ");
    c.plain = TrimBlanks(plain);
  } else {
    c.rich = rawText;
    std::string plain = rawText;
    ReplaceAll(plain, "\\P", " ");
    ReplaceAll(plain, "\n", " ");
    ReplaceAll(plain, "\\n", " ");
    ReplaceAll(plain, "\r", "");
    c.plain = TrimBlanks(plain);
  }
  return c;
}

std::string JoinWithBlank(const std::string& old, const std::string& added) {
  if (old.empty() || old.back() == ' ') return old + added;
  return old + " " + added;
}

std::string JoinWithLineBreak(const std::string& old, const std::string& added) {
  // Only the last single character is looked at: a text ending in "\P" gets a second one.
  if (old.empty() || old.back() == '\n') return old + added;
  return old + "\\P" + added;
}

std::optional<Point3d> SelectionCursor() {
  const std::optional<Point3d> cursor = host::CursorAtSelection();
  if (!cursor) return std::nullopt;
  return recognition::ToWorking(host::Trans(*cursor, host::kUser, host::kWorld));
}

ObjectId AttributeUnderCursor(ObjectId insertId, const std::optional<Point3d>& cursor) {
  if (!cursor) return {};
  const host::Entity insert = host::OpenEntity(insertId);
  if (!insert) return {};
  for (ObjectId id : insert.attributeIds()) {
    const host::Entity a = host::OpenEntity(id);
    if (!a || host::IsInvisibleAttribute(id) || OnHiddenLayer(a)) continue;
    const Extents3d box = recognition::EntityExtents(id);
    if (box.isEmpty()) continue;
    if (cursor->x >= box.min.x && cursor->x <= box.max.x && cursor->y >= box.min.y && cursor->y <= box.max.y) return id;
  }
  return {};
}

void TextBrushCommand() {
  recognition::RefreshUcs(false);
  host::ReadLayerStates();
  host::Editor& editor = host::CurrentEditor();

  ObjectIdArray sources;
  if (editor.select("_:$", {kSourcePrompt, ""}, {},
                    host::TypeFilter({"Text", "MText", "ATTDEF", "insert", "TCH_TEXT", "TCH_MTEXT"}), sources) != host::RTNORM)
    return;
  const std::optional<Point3d> sourceCursor = SelectionCursor();
  std::string text, rawText;
  for (ObjectId id : sources) {
    const host::Entity e = host::OpenEntity(id);
    if (!e) continue;
    text = SourceText(e, sourceCursor, rawText);
    if (!TrimBlanks(text).empty()) break;
    text.clear();
  }
  if (TrimBlanks(text).empty()) {
    host::Print("\n未选择到源字符！！！");
    return;
  }
  const BrushContent content = MakeBrushContent(text, rawText);
  // The cursor carries the text it brushes.
  const host::BadgeScope badge(content.plain);

  for (;;) {
    ObjectIdArray targets;
    if (editor.select("_:$", {kTargetPrompt, ""}, {}, host::TypeFilter({"Text", "MText", "ATTDEF", "insert"}), targets) !=
            host::RTNORM ||
        targets.empty())
      return;
    const bool append = host::KeyHeldAtSelection(host::kTabKey);
    const std::optional<Point3d> cursor = SelectionCursor();
    for (ObjectId id : targets)
      if (const host::Entity e = host::OpenEntity(id)) Brush(e, content, append, cursor);
    host::RegenDrawing();
  }
}

}  // namespace tv::aids
