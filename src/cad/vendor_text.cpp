#include "cad/vendor_text.h"

#include <cmath>
#include <numbers>
#include <string_view>

#include "cad/names_internal.h"

namespace tv::cad {

namespace {

const Group* First(const ProxyEntity& p, int code) { return FindGroup(p.groups, code); }

double Number(const ProxyEntity& p, int code, double fallback) {
  const Group* g = First(p, code);
  const double v = g ? g->asDouble(fallback) : fallback;
  return std::isfinite(v) ? v : fallback;
}

bool IsVendorText(std::string_view name) {
  if (EqualsNoCase(name, "TCH_TEXT") || EqualsNoCase(name, "TCH_MTEXT")) return true;
  // Other applications' text classes carry TEXT in their names as well.
  for (std::size_t i = 0; i + 4 <= name.size(); ++i)
    if (EqualsNoCase(name.substr(i, 4), "TEXT")) return true;
  return false;
}

// The text as it reads: line breaks as MTEXT paragraphs, the centring mark "^C" gone.
std::string Cleaned(const std::string& text, bool& multiline) {
  std::string out;
  out.reserve(text.size());
  multiline = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\r') continue;
    if (text[i] == '\n') {
      out += "\\P";
      multiline = true;
    } else if (text[i] == '^' && i + 1 < text.size() && text[i + 1] == 'C') {
      ++i;
    } else {
      out += text[i];
    }
  }
  return out;
}

Group* FirstOf(ProxyEntity& p, int code) {
  for (Group& g : p.groups)
    if (g.code == code) return &g;
  return nullptr;
}

void MovePoint(ProxyEntity& p, int code, const Matrix3d& xf) {
  Group* x = FirstOf(p, code);
  if (!x) return;
  const Point3d moved = xf.transform(Point3d{Number(p, code, 0), Number(p, code + 10, 0), Number(p, code + 20, 0)});
  x->value = moved.x;
  if (Group* y = FirstOf(p, code + 10)) y->value = moved.y;
  if (Group* z = FirstOf(p, code + 20)) z->value = moved.z;
}

}  // namespace

bool TransformVendorText(ProxyEntity& proxy, const Matrix3d& xf) {
  if (!IsVendorText(proxy.name) || !First(proxy, 10)) return false;
  const Vector3d along = xf.transform(Vector3d::xAxis());
  const double scale = along.length();
  if (!(scale > 0) || !std::isfinite(scale)) return false;
  MovePoint(proxy, 10, xf);
  MovePoint(proxy, 11, xf);
  if (Group* h = FirstOf(proxy, 40)) h->value = Number(proxy, 40, 0) * scale;
  // TCH_MTEXT turns in radians as MTEXT does, the others in degrees as TEXT does.
  const double turn = std::atan2(along.y, along.x);
  const bool radians = EqualsNoCase(proxy.name, "TCH_MTEXT");
  const double rotation = Number(proxy, 50, 0) + (radians ? turn : turn * 180 / std::numbers::pi);
  if (Group* r = FirstOf(proxy, 50))
    r->value = rotation;
  else if (turn != 0)
    proxy.groups.emplace_back(50, rotation);
  return true;
}

std::unique_ptr<Entity> VendorTextStandIn(const ProxyEntity& proxy, const Database& db) {
  if (!IsVendorText(proxy.name) || !First(proxy, 10) || !First(proxy, 1)) return nullptr;
  const double height = Number(proxy, 40, 0);
  if (!(height > 0)) return nullptr;
  bool multiline = false;
  std::string text = Cleaned(proxy.text(), multiline);
  if (text.empty()) return nullptr;
  const Point3d position{Number(proxy, 10, 0), Number(proxy, 20, 0), Number(proxy, 30, 0)};
  ObjectId style;
  if (const Group* g = First(proxy, 7))
    if (const TextStyle* s = db.findTextStyle(g->asString())) style = s->id;
  const double width = Number(proxy, 41, 0);

  if (multiline || EqualsNoCase(proxy.name, "TCH_MTEXT")) {
    auto m = std::make_unique<MText>();
    m->text = std::move(text);
    m->position = position;
    m->height = height;
    m->rotation = Number(proxy, 50, 0);
    m->style = style;
    if (width > 0) m->referenceWidth = width;
    const double attachment = Number(proxy, 71, 1);
    if (attachment >= 1 && attachment <= 9) m->attachment = static_cast<std::int16_t>(attachment);
    m->layer = proxy.layer;
    return m;
  }
  auto t = std::make_unique<Text>();
  t->text = std::move(text);
  t->position = position;
  t->height = height;
  t->rotation = Number(proxy, 50, 0) * std::numbers::pi / 180;
  t->style = style;
  if (width > 0.01 && width < 100) t->widthFactor = width;
  const double h = Number(proxy, 72, 0), v = Number(proxy, 73, 0);
  if (h >= 0 && h <= 5) t->hAlign = static_cast<TextHAlign>(static_cast<std::int16_t>(h));
  if (v >= 0 && v <= 3) t->vAlign = static_cast<TextVAlign>(static_cast<std::int16_t>(v));
  if (First(proxy, 11)) {
    t->setAlignPoint({Number(proxy, 11, 0), Number(proxy, 21, 0), Number(proxy, 31, 0)});
  }
  t->layer = proxy.layer;
  return t;
}

}  // namespace tv::cad
