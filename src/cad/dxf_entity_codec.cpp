// Entity decoding and encoding: the groups common to every entity, and the dispatch by class.
#include "cad/dxf_entity_codec.h"

#include <charconv>
#include <cmath>
#include <cstdio>

#include "cad/codepage.h"
#include "cad/custom_readers.h"
#include "cad/dxf_entity_codec_internal.h"
#include "cad/names_internal.h"

namespace tv::cad {

ObjectId DxfReadContext::recordOfEntity(EntityName kind, std::string_view raw) {
  const std::string name = text(raw);
  switch (kind) {
    case EntityName::Layer: return layerByName(name);
    case EntityName::Linetype: return EqualsNoCase(name, "ByLayer") ? ObjectId{} : linetypeByName(name);
    case EntityName::TextStyle: return textStyleByName(name);
    case EntityName::Block: return blockByName(name);
  }
  return {};
}

namespace codec {

namespace {

int HexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return -1;
}

bool IsAscii(std::string_view s) {
  for (char c : s)
    if (static_cast<unsigned char>(c) >= 0x80) return false;
  return true;
}

// Codes of the AcDbEntity part that the model keeps as unknown groups (proxy graphics).
bool IsEntityLevelCode(int code) { return code == 92 || code == 160 || (code >= 310 && code <= 319); }

// The float of a linetype scale as the double its shortest text reads back to ("0.3", not 0.30000001…).
double FloatToDouble(float f) {
  char buf[32];
  auto [p, ec] = std::to_chars(buf, buf + sizeof buf, f);
  double d = f;
  if (ec == std::errc()) std::from_chars(buf, p, d);
  return d;
}

}  // namespace

// ---- Reader --------------------------------------------------------------------------------------

Bytes Reader::bytes() const {
  Bytes out;
  if (binary) {
    out.assign(g.text.begin(), g.text.end());
    return out;
  }
  out.reserve(g.text.size() / 2);
  int high = -1;
  for (char c : g.text) {
    const int v = HexValue(c);
    if (v < 0) continue;  // stray characters in hex text are skipped
    if (high < 0) {
      high = v;
    } else {
      out.push_back(static_cast<std::uint8_t>(high << 4 | v));
      high = -1;
    }
  }
  return out;
}

Group Reader::group() {
  // Built in place: a variant passed by value trips false "maybe uninitialized" warnings in GCC.
  Group out;
  out.code = g.code;
  switch (g.kind) {
    case GroupKind::String:
      out.value.emplace<std::string>(ctx.text(g.text));
      break;
    case GroupKind::Double:
      out.value.emplace<double>(g.real);
      break;
    case GroupKind::Handle:
      out.value.emplace<ObjectId>(id());
      break;
    case GroupKind::Binary:
      out.value.emplace<Bytes>(bytes());
      break;
    case GroupKind::Int16:
    case GroupKind::Int32:
    case GroupKind::Int64:
    case GroupKind::Bool:
      out.value.emplace<std::int64_t>(g.integer);
      break;
  }
  return out;
}

void Reader::warn(std::string_view what) {
  char head[64];
  std::snprintf(head, sizeof head, binary ? "偏移 %llu：" : "第 %llu 行：", static_cast<unsigned long long>(g.line));
  std::string message(head);
  message.append(what);
  ctx.warn(std::move(message));
}

// ---- common groups -------------------------------------------------------------------------------

void ReadBraceGroup(Reader& r, Entity& e) {
  const std::string_view open = r.g.text;
  enum class Kind { XDictionary, Reactors, App } kind;
  if (open == "{ACAD_XDICTIONARY") {
    kind = Kind::XDictionary;
  } else if (open == "{ACAD_REACTORS") {
    kind = Kind::Reactors;
  } else if (!open.empty() && open.front() == '{') {
    kind = Kind::App;
    e.extras().appGroups.push_back(r.group());
  } else {
    return;  // a stray closing brace
  }
  while (r.next()) {
    const int code = r.g.code;
    if (code == 0) {
      r.pushBack();
      return;
    }
    switch (kind) {
      case Kind::XDictionary:
        if (code == 360) e.extras().extensionDictionary = r.id();
        break;
      case Kind::Reactors:
        if (code == 330) e.extras().reactors.push_back(r.id());
        break;
      case Kind::App:
        e.extras().appGroups.push_back(r.group());
        break;
    }
    if (code == 102) return;
  }
}

bool ReadXdata(Reader& r, Entity& e) {
  Groups& x = e.extras().xdata;
  x.push_back(r.group());
  while (r.next()) {
    if (r.g.code == 0) {
      r.pushBack();
      return true;
    }
    x.push_back(r.group());
  }
  return !r.failed;
}

bool ReadSeqend(Reader& r, ObjectId& id) {
  while (r.next()) {
    if (r.g.code == 0) {
      r.pushBack();
      return true;
    }
    if (r.g.code == 5) id = r.id();
  }
  return !r.failed;
}

bool DecodeRareCommon(Reader& r, Entity& e, CommonState& st) {
  const int code = r.g.code;
  switch (code) {
    case 102:
      ReadBraceGroup(r, e);
      return true;
    case 6:
      e.linetype = r.ctx.recordOfEntity(DxfReadContext::EntityName::Linetype, r.g.text);
      return true;
    case 420:
      e.trueColor = static_cast<std::int32_t>(r.g.integer & 0xFFFFFF);
      return true;
    case 430:
      e.extras().colorBookName = r.str();
      return true;
    case 440:
      e.extras().transparency = r.i32();
      return true;
    case 48:
      if (st.inClass) return false;  // MTEXT column width
      e.linetypeScale = r.f32();
      return true;
    case 60:
      e.setVisible(r.g.integer == 0);
      return true;
    case 67:
      // The owner block says which space; only a file without owners (R12) needs the flag, which
      // the reader takes out of the unknown groups when it places the entity.
      if (!st.ownerSet && r.g.integer != 0) KeepUnknown(r, e);
      return true;
    case 410:  // the layout says its name
      return true;
    case 390:
      e.extras().plotStyle = r.id();
      return true;
    case 347:
      e.extras().material = r.id();
      return true;
    case 284:
      e.extras().shadowMode = r.i16();
      return true;
    default:
      if (IsEntityLevelCode(code) && !st.inClass && st.proxyGraphics) {
        KeepUnknown(r, e);
        return true;
      }
      return false;
  }
}

// ---- Writer --------------------------------------------------------------------------------------

void Writer::str(int code, std::string_view s) {
  if (escapeText && !IsAscii(s)) {
    out.str(code, EncodeDxfEscapes(s));
    return;
  }
  out.str(code, s);
}

void Writer::group(const Group& g) {
  if (escapeText) {
    if (const auto* s = std::get_if<std::string>(&g.value)) {
      str(g.code, *s);
      return;
    }
  }
  out.group(g);
}

void Writer::groups(const Groups& gs) {
  for (const Group& g : gs) group(g);
}

void Writer::angle(int code, double radians) {
  double deg = RadToDeg(radians);
  // Undo the noise of the degree/radian round trip (30° must come back as 30, not 29.999999999999996).
  const double snapped = std::round(deg * 1e6) / 1e6;
  if (std::abs(snapped - deg) <= 1e-12 * std::max(1.0, std::abs(deg))) deg = snapped;
  out.real(code, deg);
}

// A null or dangling reference is written as the drawing's own default record, in its own spelling
// ("STANDARD" in files from R12), so that reading the output back finds the same record.
std::string Writer::layerName(ObjectId id) const {
  if (const auto* l = db.objectAs<Layer>(id)) return l->name;
  if (const auto* l = db.findLayer("0")) return l->name;
  return "0";
}

std::string Writer::linetypeName(ObjectId id) const {
  if (id.isNull()) return {};
  if (const auto* l = db.objectAs<Linetype>(id)) {
    if (EqualsNoCase(l->name, "ByLayer")) return {};
    return l->name;
  }
  return {};
}

std::string Writer::textStyleName(ObjectId id) const {
  if (const auto* s = db.objectAs<TextStyle>(id)) return s->name;
  if (const auto* s = db.findTextStyle("Standard")) return s->name;
  return "Standard";
}

std::string Writer::blockName(ObjectId id) const {
  if (const auto* b = db.objectAs<BlockRecord>(id)) return b->name;
  return {};
}

std::string Writer::dimStyleName(ObjectId id) const {
  if (const auto* d = db.objectAs<TableRecord>(id)) return d->name;
  if (const auto* d = db.findTableRecord("DIMSTYLE", "Standard")) return d->name;
  return "Standard";
}

bool InPaperSpace(const Writer& w, const Entity& e) {
  const BlockRecord* block = w.db.objectAs<BlockRecord>(e.owner);
  if (!block) {
    if (const auto* insert = w.db.objectAs<Insert>(e.owner)) block = w.db.objectAs<BlockRecord>(insert->owner);
  }
  return block && block->isPaperSpace();
}

std::size_t EncodeCommon(Writer& w, const Entity& e, std::string_view name) {
  DxfOutput& out = w.out;
  out.str(0, name);
  if (e.id) out.handle(5, e.id);
  const ObjectExtras* x = e.extrasIfAny();
  if (x) {
    w.groups(x->appGroups);
    if (!x->reactors.empty()) {
      out.str(102, "{ACAD_REACTORS");
      for (ObjectId r : x->reactors) out.handle(330, r);
      out.str(102, "}");
    }
    if (x->extensionDictionary) {
      out.str(102, "{ACAD_XDICTIONARY");
      out.handle(360, x->extensionDictionary);
      out.str(102, "}");
    }
  }
  out.handle(330, e.owner);
  out.str(100, "AcDbEntity");
  if (InPaperSpace(w, e)) out.integer(67, 1);
  w.str(8, w.layerName(e.layer));
  const std::string linetype = w.linetypeName(e.linetype);
  if (!linetype.empty()) w.str(6, linetype);
  if (x && x->material && w.atLeast(DxfVersion::R2007)) out.handle(347, x->material);
  if (e.colorIndex != kColorByLayer) out.integer(62, e.colorIndex);
  if (e.lineweight != kLineweightByLayer) out.integer(370, e.lineweight);
  if (e.linetypeScale != 1.0f) out.real(48, FloatToDouble(e.linetypeScale));
  if (!e.isVisible()) out.integer(60, 1);
  std::size_t written = 0;
  if (x) {
    while (written < x->unknown.size() && IsEntityLevelCode(x->unknown[written].code)) out.group(x->unknown[written++]);
  }
  if (e.hasTrueColor() && w.atLeast(DxfVersion::R2004)) out.integer(420, e.trueColor & 0xFFFFFF);
  if (x) {
    if (w.atLeast(DxfVersion::R2004)) {
      if (!x->colorBookName.empty()) w.str(430, x->colorBookName);
      if (x->transparency) out.integer(440, *x->transparency);
    }
    if (x->plotStyle) out.handle(390, x->plotStyle);
    if (x->shadowMode && w.atLeast(DxfVersion::R2007)) out.integer(284, *x->shadowMode);
  }
  return written;
}

void EncodeSubEntityHead(Writer& w, const Entity& parent, std::string_view name, ObjectId id) {
  DxfOutput& out = w.out;
  out.str(0, name);
  if (id) out.handle(5, id);
  out.handle(330, parent.id);
  out.str(100, "AcDbEntity");
  if (InPaperSpace(w, parent)) out.integer(67, 1);
  w.str(8, w.layerName(parent.layer));
}

void EncodeTail(Writer& w, const Entity& e, std::size_t unknownWritten) {
  const ObjectExtras* x = e.extrasIfAny();
  if (!x) return;
  for (std::size_t i = unknownWritten; i < x->unknown.size(); ++i)
    if (x->unknown[i].code != 67) w.group(x->unknown[i]);  // the space is written from the owner
  w.groups(x->xdata);
}

}  // namespace codec

std::unique_ptr<Entity> DecodeEntity(std::string_view name, DxfTokenizer& tok, DxfReadContext& ctx) {
  using namespace codec;
  Reader r(tok, ctx);
  // The most frequent entities first.
  if (name == "LINE") return DecodeLine(r);
  if (name == "LWPOLYLINE") return DecodeLwPolyline(r);
  if (name == "TEXT") return DecodeText(r);
  if (name == "INSERT") return DecodeInsert(r);
  if (name == "CIRCLE") return DecodeCircle(r);
  if (name == "ARC") return DecodeArc(r);
  if (name == "MTEXT") return DecodeMText(r);
  if (name == "POLYLINE") return DecodePolyline(r);
  if (name == "HATCH") return DecodeHatch(r);
  if (name == "DIMENSION") return DecodeDimension(r);
  if (name == "SOLID") return DecodeSolid(r);
  if (name == "ELLIPSE") return DecodeEllipse(r);
  if (name == "SPLINE") return DecodeSpline(r);
  if (name == "POINT") return DecodePoint(r);
  if (name == "ATTDEF") return DecodeAttDef(r);
  if (name == "ATTRIB") return DecodeAttrib(r);
  if (name == "TRACE") return DecodeTrace(r);
  if (name == "3DFACE") return DecodeFace3d(r);
  if (name == "LEADER") return DecodeLeader(r);
  if (name == "VIEWPORT") return DecodeViewport(r);
  if (name == "IMAGE") return DecodeImage(r);
  if (name == "WIPEOUT") return DecodeWipeout(r);
  std::unique_ptr<Entity> proxy = DecodeProxy(name, r);
  if (auto* p = As<ProxyEntity>(proxy.get()))
    if (std::unique_ptr<Entity> live = ReviveProxy(*p)) return live;
  return proxy;
}

void EncodeEntity(const Entity& e, const Database& db, DxfVersion version, DxfOutput& out) {
  using namespace codec;
  Writer w(out, db, version);
  switch (e.type()) {
    case ObjectType::Line: return EncodeLine(w, static_cast<const Line&>(e));
    case ObjectType::LwPolyline: return EncodeLwPolyline(w, static_cast<const LwPolyline&>(e));
    case ObjectType::Polyline: return EncodePolyline(w, static_cast<const Polyline&>(e));
    case ObjectType::Circle: return EncodeCircle(w, static_cast<const Circle&>(e));
    case ObjectType::Arc: return EncodeArc(w, static_cast<const Arc&>(e));
    case ObjectType::Ellipse: return EncodeEllipse(w, static_cast<const Ellipse&>(e));
    case ObjectType::Spline: return EncodeSpline(w, static_cast<const Spline&>(e));
    case ObjectType::Point: return EncodePoint(w, static_cast<const PointEntity&>(e));
    case ObjectType::Solid: return EncodeSolid(w, static_cast<const Solid&>(e));
    case ObjectType::Trace: return EncodeTrace(w, static_cast<const Trace&>(e));
    case ObjectType::Face3d: return EncodeFace3d(w, static_cast<const Face3d&>(e));
    case ObjectType::Text: return EncodeText(w, static_cast<const Text&>(e));
    case ObjectType::MText: return EncodeMText(w, static_cast<const MText&>(e));
    case ObjectType::AttDef: return EncodeAttDef(w, static_cast<const AttDef&>(e));
    case ObjectType::Attrib: return EncodeAttrib(w, static_cast<const Attrib&>(e));
    case ObjectType::Insert: return EncodeInsert(w, static_cast<const Insert&>(e));
    case ObjectType::Hatch: return EncodeHatch(w, static_cast<const Hatch&>(e));
    case ObjectType::Dimension: return EncodeDimension(w, static_cast<const Dimension&>(e));
    case ObjectType::Leader: return EncodeLeader(w, static_cast<const Leader&>(e));
    case ObjectType::Viewport: return EncodeViewport(w, static_cast<const Viewport&>(e));
    case ObjectType::Image: return EncodeImage(w, static_cast<const Image&>(e));
    case ObjectType::Wipeout: return EncodeWipeout(w, static_cast<const Wipeout&>(e));
    case ObjectType::Proxy: return EncodeProxy(w, static_cast<const ProxyEntity&>(e));
    case ObjectType::Custom: return EncodeCustom(w, static_cast<const CustomEntity&>(e));
    default: return;  // not an entity
  }
}

}  // namespace tv::cad
