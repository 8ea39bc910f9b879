// Decoding of TEXT, ATTDEF, ATTRIB, MTEXT and INSERT with its attributes.
#include "cad/dxf_entity_codec_internal.h"

namespace tv::cad::codec {

namespace {

// The groups shared by TEXT, ATTDEF and ATTRIB (subclass AcDbText).
template <class T>
bool TextGroup(T& t, Reader& r) {
  const DxfGroup& g = r.g;
  switch (g.code) {
    case 1: t.text = r.str(); return true;
    case 10: case 20: case 30: SetCoord(t.position, g.code, 10, g.real); return true;
    case 11: case 21: case 31:
    {
      TextDetails& d = t.editDetails();
      SetCoord(d.alignPoint, g.code, 11, g.real);
      d.hasAlignPoint = true;
      return true;
    }
    case 40: t.height = g.real; return true;
    case 41: t.widthFactor = g.real; return true;
    case 50: t.rotation = DegToRad(g.real); return true;
    case 51: t.setOblique(DegToRad(g.real)); return true;
    case 7: t.style = r.ctx.recordOfEntity(DxfReadContext::EntityName::TextStyle, r.g.text); return true;
    case 71: t.setGeneration(r.i16()); return true;
    case 72: t.hAlign = static_cast<TextHAlign>(r.i16()); return true;
    case 39: t.setThickness(g.real); return true;
    case 210: case 220: case 230: {
      Vector3d n = t.normal();
      SetCoord(n, g.code, 210, g.real);
      t.setNormal(n);
      return true;
    }
    default: return false;
  }
}

// 101 "Embedded Object" and the groups after it, up to the extended data or the next entity.
void ReadEmbedded(Reader& r, Groups& into) {
  into.push_back(r.group());
  while (r.next()) {
    if (r.g.code == 0 || r.g.code == 1001) {
      r.pushBack();
      return;
    }
    into.push_back(r.group());
  }
}

// The attribute subclass of ATTDEF and ATTRIB: 73 is the field length and 74 the vertical alignment
// here, and the 280 before the tag is the subclass version, the one after it the lock flag.
template <class T>
bool AttributeGroup(T& a, Reader& r, bool& tagSeen) {
  switch (r.g.code) {
    case 2:
      a.tag = r.str();
      tagSeen = true;
      return true;
    case 70: a.attFlags = r.i16(); return true;
    case 73: a.fieldLength = r.i16(); return true;
    case 74: a.vAlign = static_cast<TextVAlign>(r.i16()); return true;
    case 280:
      if (tagSeen) a.setLockPosition(r.flag());
      return true;
    case 101: ReadEmbedded(r, a.editDetails().multiline); return true;
    default: return TextGroup(a, r);
  }
}

}  // namespace

std::unique_ptr<Entity> DecodeText(Reader& r) {
  auto e = std::make_unique<Text>();
  Text& t = *e;
  const bool ok = ReadBody(r, t, [&](const DxfGroup& g) {
    if (g.code == 73) {
      t.vAlign = static_cast<TextVAlign>(r.i16());
      return true;
    }
    return TextGroup(t, r);
  });
  if (!ok) return nullptr;
  return e;
}

std::unique_ptr<Entity> DecodeAttDef(Reader& r) {
  auto e = std::make_unique<AttDef>();
  AttDef& a = *e;
  bool tagSeen = false;
  const bool ok = ReadBody(r, a, [&](const DxfGroup& g) {
    if (g.code == 3) {
      a.prompt = r.str();
      return true;
    }
    return AttributeGroup(a, r, tagSeen);
  });
  if (!ok) return nullptr;
  return e;
}

std::unique_ptr<Attrib> DecodeAttrib(Reader& r) {
  auto e = std::make_unique<Attrib>();
  Attrib& a = *e;
  bool tagSeen = false;
  if (!ReadBody(r, a, [&](const DxfGroup&) { return AttributeGroup(a, r, tagSeen); })) return nullptr;
  return e;
}

std::unique_ptr<Entity> DecodeMText(Reader& r) {
  auto e = std::make_unique<MText>();
  MText& m = *e;
  std::string raw;  // the 3 pieces and the 1, joined before decoding so that no character is cut
  bool inColumns = false;
  CommonState st;
  const bool ok = ReadBody(r, m, st, [&](const DxfGroup& g) {
    switch (g.code) {
      case 1: case 3: raw.append(g.text); return true;
      case 10: case 20: case 30: SetCoord(m.position, g.code, 10, g.real); return true;
      case 11: case 21: case 31: SetCoord(m.xDirection, g.code, 11, g.real); return true;
      case 210: case 220: case 230: SetCoord(m.normal, g.code, 210, g.real); return true;
      case 40: m.height = g.real; return true;
      case 41: m.referenceWidth = g.real; return true;
      case 46: m.definedHeight = g.real; return true;
      case 42: case 43: return true;  // actual width and height: recomputed by every program
      case 71: m.attachment = r.i16(); return true;
      case 72: m.drawingDirection = r.i16(); return true;
      case 7: m.style = r.ctx.recordOfEntity(DxfReadContext::EntityName::TextStyle, r.g.text); return true;
      case 73: m.lineSpacingStyle = r.i16(); return true;
      case 44: m.lineSpacingFactor = g.real; return true;
      case 90: m.backgroundFlags = r.i32(); return true;
      case 63: m.backgroundColor = r.i16(); return true;
      case 45: m.backgroundScale = g.real; return true;
      case 441: m.backgroundTransparency = r.i32(); return true;
      case 50:
        if (!inColumns) {
          m.rotation = DegToRad(g.real);
          return true;
        }
        m.columns.push_back(r.group());  // column heights
        return true;
      case 48:
        if (!st.inClass) return false;  // the linetype scale of the common groups
        [[fallthrough]];
      case 75: case 76: case 78: case 79: case 49:
        inColumns = true;
        m.columns.push_back(r.group());
        return true;
      case 101: ReadEmbedded(r, m.columns); return true;
      default: return false;
    }
  });
  if (!ok) return nullptr;
  m.text = r.ctx.text(raw);
  return e;
}

std::unique_ptr<Entity> DecodeInsert(Reader& r) {
  auto e = std::make_unique<Insert>();
  Insert& ins = *e;
  bool attribsFollow = false;
  const bool ok = ReadBody(r, ins, [&](const DxfGroup& g) {
    switch (g.code) {
      case 66: attribsFollow = r.flag(); return true;
      case 2: ins.block = r.ctx.recordOfEntity(DxfReadContext::EntityName::Block, r.g.text); return true;
      case 10: case 20: case 30: SetCoord(ins.position, g.code, 10, g.real); return true;
      case 41: ins.scale.x = g.real; return true;
      case 42: ins.scale.y = g.real; return true;
      case 43: ins.scale.z = g.real; return true;
      case 50: ins.rotation = DegToRad(g.real); return true;
      case 70: ins.columnCount = r.i16(); return true;
      case 71: ins.rowCount = r.i16(); return true;
      case 44: ins.columnSpacing = g.real; return true;
      case 45: ins.rowSpacing = g.real; return true;
      case 210: case 220: case 230: SetCoord(ins.normal, g.code, 210, g.real); return true;
      default: return false;
    }
  });
  if (!ok) return nullptr;
  // Attributes follow when 66 says so; some writers leave 66 out, so an ATTRIB right after counts too.
  for (;;) {
    if (!r.next()) {
      if (r.failed) return nullptr;
      if (attribsFollow) r.warn("INSERT 的属性没有以 SEQEND 结束");
      return e;
    }
    if (r.g.code == 0 && r.g.text == "ATTRIB") {
      std::unique_ptr<Attrib> a = DecodeAttrib(r);
      if (!a) return nullptr;
      a->owner = ins.id;
      ins.attribs.push_back(std::move(a));
      continue;
    }
    if (r.g.code == 0 && r.g.text == "SEQEND" && (attribsFollow || !ins.attribs.empty())) {
      if (!ReadSeqend(r, ins.seqendId)) return nullptr;
      return e;
    }
    r.pushBack();
    if (attribsFollow || !ins.attribs.empty()) r.warn("INSERT 的属性没有以 SEQEND 结束");
    return e;
  }
}

}  // namespace tv::cad::codec
