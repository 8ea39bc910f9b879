#pragma once
// Pieces shared by the entity decoder and encoder files; not part of the module's interface.
#include <algorithm>
#include <cfloat>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "cad/dxf_entity_codec.h"

namespace tv::cad::codec {

// Counts read from a file only size a first reservation; the data itself decides how much is read.
inline constexpr std::int64_t kMaxReserve = 1024;
inline std::size_t ReserveFor(std::int64_t count) {
  return static_cast<std::size_t>(std::clamp<std::int64_t>(count, 0, kMaxReserve));
}

// ---- decoding ------------------------------------------------------------------------------------

// The tokenizer and the reader's context, with typed views of the current group.
struct Reader {
  Reader(DxfTokenizer& t, DxfReadContext& c) : tok(t), ctx(c), binary(t.isBinary()) {}

  DxfTokenizer& tok;
  DxfReadContext& ctx;
  DxfGroup g;
  bool binary;
  bool failed = false;  // the tokenizer reported an error

  bool next() {
    if (tok.next(g)) return true;
    failed = !tok.error().empty();
    return false;
  }
  void pushBack() { tok.pushBack(); }

  std::string str() { return ctx.text(g.text); }
  double real() const { return g.real; }
  std::int16_t i16() const { return static_cast<std::int16_t>(g.integer); }
  std::int32_t i32() const { return static_cast<std::int32_t>(g.integer); }
  bool flag() const { return g.integer != 0; }
  ObjectId id() const { return ObjectId(static_cast<std::uint64_t>(g.integer)); }
  float f32() const {
    // Out-of-range conversions to float are undefined; files do hold odd values.
    double d = g.real;
    if (!(d == d)) return 0.0f;
    return static_cast<float>(std::clamp(d, -static_cast<double>(FLT_MAX), static_cast<double>(FLT_MAX)));
  }
  Bytes bytes() const;
  // The current group as a typed group, by the kind of its code.
  Group group();
  void warn(std::string_view what);
};

// Where the reader stands inside the common entity groups.
struct CommonState {
  bool inClass = false;         // a subclass marker after AcDbEntity was seen
  bool ownerSet = false;        // the first 330 outside 102 groups is the owner
  bool proxyGraphics = true;    // 92 before the class data is the proxy graphics size
};

void ReadBraceGroup(Reader& r, Entity& e);
bool ReadXdata(Reader& r, Entity& e);
// Reads the groups of a SEQEND up to the next 0 group; only its handle is kept.
bool ReadSeqend(Reader& r, ObjectId& id);
inline void KeepUnknown(Reader& r, Entity& e) { e.extras().unknown.push_back(r.group()); }
bool DecodeRareCommon(Reader& r, Entity& e, CommonState& st);

// The groups every entity has (subclass markers aside). True when the group was taken.
inline bool DecodeCommon(Reader& r, Entity& e, CommonState& st) {
  switch (r.g.code) {
    case 5:
      e.id = r.id();
      return true;
    case 8:
      e.layer = r.ctx.recordOfEntity(DxfReadContext::EntityName::Layer, r.g.text);
      return true;
    case 330:
      if (st.ownerSet) return false;
      e.owner = r.id();
      st.ownerSet = true;
      return true;
    case 62:
      e.colorIndex = r.i16();
      return true;
    case 370:
      e.lineweight = r.i16();
      return true;
    default:
      return DecodeRareCommon(r, e, st);
  }
}

// Reads groups up to the next 0 group (left for the caller). The class's own groups go to `f`
// first (the common path: one switch per group); what it declines and is not a common entity group
// goes to `rest` (by default extras().unknown). A class whose codes clash with common ones before
// its subclass marker (MTEXT's 48) checks `st.inClass`. False after a tokenizer error.
template <class F, class R>
[[gnu::flatten]] bool ReadBody(Reader& r, Entity& e, CommonState& st, F&& f, R&& rest) {
  while (r.next()) {
    const int code = r.g.code;
    if (code == 0) {
      r.pushBack();
      return true;
    }
    if (code == 100) {
      // Subclass markers are written from the class; a class that keeps them takes them in `f`.
      if (r.g.text == "AcDbEntity") continue;
      st.inClass = true;
      f(r.g);
      continue;
    }
    if (code == 1001) return ReadXdata(r, e);
    if (f(r.g)) {
      if (r.failed) return false;
      continue;
    }
    if (DecodeCommon(r, e, st)) {
      if (r.failed) return false;
      continue;
    }
    rest(r.g);
  }
  return !r.failed;
}

template <class F>
bool ReadBody(Reader& r, Entity& e, CommonState& st, F&& f) {
  return ReadBody(r, e, st, std::forward<F>(f), [&](const DxfGroup&) { KeepUnknown(r, e); });
}

template <class F>
bool ReadBody(Reader& r, Entity& e, F&& f) {
  CommonState st;
  return ReadBody(r, e, st, std::forward<F>(f));
}

// Sets x, y or z of a point from a group code of its family (10/20/30 style).
inline void SetCoord(Point3d& p, int code, int base, double v) {
  const int k = (code - base) / 10;
  if (k == 0) p.x = v;
  else if (k == 1) p.y = v;
  else p.z = v;
}
inline void SetCoord(Vector3d& p, int code, int base, double v) {
  const int k = (code - base) / 10;
  if (k == 0) p.x = v;
  else if (k == 1) p.y = v;
  else p.z = v;
}

std::unique_ptr<Entity> DecodeLine(Reader& r);
std::unique_ptr<Entity> DecodeLwPolyline(Reader& r);
std::unique_ptr<Entity> DecodePolyline(Reader& r);
std::unique_ptr<Entity> DecodeCircle(Reader& r);
std::unique_ptr<Entity> DecodeArc(Reader& r);
std::unique_ptr<Entity> DecodeEllipse(Reader& r);
std::unique_ptr<Entity> DecodeSpline(Reader& r);
std::unique_ptr<Entity> DecodePoint(Reader& r);
std::unique_ptr<Entity> DecodeSolid(Reader& r);
std::unique_ptr<Entity> DecodeTrace(Reader& r);
std::unique_ptr<Entity> DecodeFace3d(Reader& r);
std::unique_ptr<Entity> DecodeText(Reader& r);
std::unique_ptr<Entity> DecodeAttDef(Reader& r);
std::unique_ptr<Attrib> DecodeAttrib(Reader& r);
std::unique_ptr<Entity> DecodeMText(Reader& r);
std::unique_ptr<Entity> DecodeInsert(Reader& r);
std::unique_ptr<Entity> DecodeHatch(Reader& r);
std::unique_ptr<Entity> DecodeDimension(Reader& r);
std::unique_ptr<Entity> DecodeLeader(Reader& r);
std::unique_ptr<Entity> DecodeViewport(Reader& r);
std::unique_ptr<Entity> DecodeImage(Reader& r);
std::unique_ptr<Entity> DecodeWipeout(Reader& r);
std::unique_ptr<Entity> DecodeProxy(std::string_view name, Reader& r);

// ---- encoding ------------------------------------------------------------------------------------

struct Writer {
  DxfOutput& out;
  const Database& db;
  DxfVersion version;
  bool escapeText;  // before R2007 non-ASCII text is written as \U+XXXX

  Writer(DxfOutput& o, const Database& d, DxfVersion v)
      : out(o), db(d), version(v), escapeText(static_cast<int>(v) < static_cast<int>(DxfVersion::R2007)) {}

  bool atLeast(DxfVersion v) const { return static_cast<int>(version) >= static_cast<int>(v); }
  void str(int code, std::string_view s);
  void group(const Group& g);
  void groups(const Groups& gs);
  // Radians of the model to the degrees of the file.
  void angle(int code, double radians);

  std::string layerName(ObjectId id) const;
  std::string linetypeName(ObjectId id) const;  // empty for ByLayer
  std::string textStyleName(ObjectId id) const;
  std::string blockName(ObjectId id) const;
  std::string dimStyleName(ObjectId id) const;
};

// Whether the entity lives in a paper space block (for attributes: their insert's block).
bool InPaperSpace(const Writer& w, const Entity& e);

// Writes 0 NAME up to the end of the AcDbEntity groups. Returns how many leading groups of
// extras().unknown it wrote there (proxy graphics), which EncodeTail skips.
std::size_t EncodeCommon(Writer& w, const Entity& e, std::string_view name);
// A sub-entity (VERTEX, SEQEND) of `parent`: handle, owner, layer.
void EncodeSubEntityHead(Writer& w, const Entity& parent, std::string_view name, ObjectId id);
// The unknown groups after the class data, then the extended data.
void EncodeTail(Writer& w, const Entity& e, std::size_t unknownWritten);

void EncodeLine(Writer& w, const Line& e);
void EncodeLwPolyline(Writer& w, const LwPolyline& e);
void EncodePolyline(Writer& w, const Polyline& e);
void EncodeCircle(Writer& w, const Circle& e);
void EncodeArc(Writer& w, const Arc& e);
void EncodeEllipse(Writer& w, const Ellipse& e);
void EncodeSpline(Writer& w, const Spline& e);
void EncodePoint(Writer& w, const PointEntity& e);
void EncodeSolid(Writer& w, const Solid& e);
void EncodeTrace(Writer& w, const Trace& e);
void EncodeFace3d(Writer& w, const Face3d& e);
void EncodeText(Writer& w, const Text& e);
void EncodeAttDef(Writer& w, const AttDef& e);
void EncodeAttrib(Writer& w, const Attrib& e);
void EncodeMText(Writer& w, const MText& e);
void EncodeInsert(Writer& w, const Insert& e);
void EncodeHatch(Writer& w, const Hatch& e);
void EncodeDimension(Writer& w, const Dimension& e);
void EncodeLeader(Writer& w, const Leader& e);
void EncodeViewport(Writer& w, const Viewport& e);
void EncodeImage(Writer& w, const Image& e);
void EncodeWipeout(Writer& w, const Wipeout& e);
void EncodeProxy(Writer& w, const ProxyEntity& e);
// Entities of the application's own classes that stay in the drawing (transient ones write nothing).
void EncodeCustom(Writer& w, const CustomEntity& e);

}  // namespace tv::cad::codec
