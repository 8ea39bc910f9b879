// Encoding of TEXT, ATTDEF, ATTRIB, MTEXT and INSERT with its attributes.
#include "cad/codepage.h"
#include "cad/dxf_entity_codec_internal.h"
#include "cad/utf8.h"

namespace tv::cad::codec {

namespace {

constexpr std::size_t kMTextChunk = 250;

// The AcDbText groups of TEXT, ATTDEF and ATTRIB (73 excepted: its meaning differs between them).
template <class T>
void EncodeTextFields(Writer& w, const T& t) {
  DxfOutput& out = w.out;
  out.str(100, "AcDbText");
  if (t.thickness() != 0) out.real(39, t.thickness());
  out.point(10, t.position);
  out.real(40, t.height);
  w.str(1, t.text);
  if (t.rotation != 0) w.angle(50, t.rotation);
  if (t.widthFactor != 1) out.real(41, t.widthFactor);
  if (t.oblique() != 0) w.angle(51, t.oblique());
  w.str(7, w.textStyleName(t.style));
  if (t.generation() != 0) out.integer(71, t.generation());
  if (t.hAlign != TextHAlign::Left) out.integer(72, static_cast<std::int16_t>(t.hAlign));
  if (t.hasAlignPoint()) out.point(11, t.alignPoint());
  out.normal(210, t.normal());
}

// The attribute subclass after the text groups.
template <class T>
void EncodeAttributeFields(Writer& w, const T& a, std::string_view subclass, const std::string* prompt) {
  DxfOutput& out = w.out;
  out.str(100, subclass);
  const bool r2010 = w.atLeast(DxfVersion::R2010);
  if (r2010) out.integer(280, 0);  // subclass version
  if (prompt) w.str(3, *prompt);
  w.str(2, a.tag);
  out.integer(70, a.attFlags);
  if (a.fieldLength != 0) out.integer(73, a.fieldLength);
  if (a.vAlign != TextVAlign::Baseline) out.integer(74, static_cast<std::int16_t>(a.vAlign));
  if (r2010 && a.lockPosition()) out.integer(280, 1);
  w.groups(a.multiline());
}

}  // namespace

void EncodeText(Writer& w, const Text& e) {
  const std::size_t k = EncodeCommon(w, e, "TEXT");
  EncodeTextFields(w, e);
  w.out.str(100, "AcDbText");
  if (e.vAlign != TextVAlign::Baseline) w.out.integer(73, static_cast<std::int16_t>(e.vAlign));
  EncodeTail(w, e, k);
}

void EncodeAttDef(Writer& w, const AttDef& e) {
  const std::size_t k = EncodeCommon(w, e, "ATTDEF");
  EncodeTextFields(w, e);
  EncodeAttributeFields(w, e, "AcDbAttributeDefinition", &e.prompt);
  EncodeTail(w, e, k);
}

void EncodeAttrib(Writer& w, const Attrib& e) {
  const std::size_t k = EncodeCommon(w, e, "ATTRIB");
  EncodeTextFields(w, e);
  EncodeAttributeFields(w, e, "AcDbAttribute", nullptr);
  EncodeTail(w, e, k);
}

void EncodeMText(Writer& w, const MText& e) {
  const std::size_t k = EncodeCommon(w, e, "MTEXT");
  DxfOutput& out = w.out;
  out.str(100, "AcDbMText");
  out.point(10, e.position);
  out.real(40, e.height);
  out.real(41, e.referenceWidth);
  if (e.definedHeight != 0) out.real(46, e.definedHeight);
  out.integer(71, e.attachment);
  out.integer(72, e.drawingDirection);

  // Pieces of 250 bytes as 3 groups, the rest as 1; a UTF-8 sequence stays whole.
  std::string escaped;
  std::string_view rest = e.text;
  if (w.escapeText) {
    escaped = EncodeDxfEscapes(e.text);
    rest = escaped;
  }
  while (rest.size() > kMTextChunk) {
    std::size_t cut = Utf8CharStart(rest, kMTextChunk);
    if (cut == 0) cut = kMTextChunk;
    out.str(3, rest.substr(0, cut));
    rest.remove_prefix(cut);
  }
  out.str(1, rest);

  w.str(7, w.textStyleName(e.style));
  out.normal(210, e.normal);
  if (!e.xDirection.isZero(0)) {
    out.vector(11, e.xDirection);
  } else if (e.rotation != 0) {
    w.angle(50, e.rotation);
  }
  out.integer(73, e.lineSpacingStyle);
  out.real(44, e.lineSpacingFactor);
  if (e.backgroundFlags != 0) {
    out.integer(90, e.backgroundFlags);
    out.integer(63, e.backgroundColor);
    out.real(45, e.backgroundScale);
    out.integer(441, e.backgroundTransparency);
  }
  w.groups(e.columns);
  EncodeTail(w, e, k);
}

void EncodeInsert(Writer& w, const Insert& e) {
  const std::size_t k = EncodeCommon(w, e, "INSERT");
  DxfOutput& out = w.out;
  bool hasAttribs = false;
  for (const auto& a : e.attribs) hasAttribs = hasAttribs || (a && !a->isErased());
  const bool minsert = e.isMInsert();
  out.str(100, minsert ? "AcDbMInsertBlock" : "AcDbBlockReference");
  if (hasAttribs) out.integer(66, 1);
  w.str(2, w.blockName(e.block));
  out.point(10, e.position);
  if (e.scale.x != 1) out.real(41, e.scale.x);
  if (e.scale.y != 1) out.real(42, e.scale.y);
  if (e.scale.z != 1) out.real(43, e.scale.z);
  if (e.rotation != 0) w.angle(50, e.rotation);
  if (minsert) {
    out.integer(70, e.columnCount);
    out.integer(71, e.rowCount);
    out.real(44, e.columnSpacing);
    out.real(45, e.rowSpacing);
  }
  out.normal(210, e.normal);
  EncodeTail(w, e, k);
  if (!hasAttribs) return;
  for (const auto& a : e.attribs)
    if (a && !a->isErased()) EncodeAttrib(w, *a);
  EncodeSubEntityHead(w, e, "SEQEND", e.seqendId);
}

}  // namespace tv::cad::codec
