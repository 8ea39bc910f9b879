// Index colours on this platform's drawing model, nearest colours by the renderer's palette.
#include "host/colors.h"

#include <algorithm>

#include "host/cad_binding.h"
#include "host/editor.h"
#include "render/plot_colors.h"

namespace tv::host {

namespace {

constexpr int kForeground = 7;

int SquaredDistance(render::Rgb a, int r, int g, int b) {
  const int dr = a.r - r, dg = a.g - g, db = a.b - b;
  return dr * dr + dg * dg + db * db;
}

// A true colour and a colour book's colour both leave the book's name behind them.
void DropTrueColor(cad::DbObject& o, std::int32_t& trueColor) {
  trueColor = -1;
  if (o.extrasIfAny()) o.extras().colorBookName.clear();
}

bool HasBookColor(const cad::DbObject& o) {
  const cad::ObjectExtras* x = o.extrasIfAny();
  return x && !x->colorBookName.empty();
}

}  // namespace

int NearestColorIndex(std::int32_t rgb) {
  const int r = (rgb >> 16) & 0xFF, g = (rgb >> 8) & 0xFF, b = rgb & 0xFF;
  // Index 7 is white on the screen and black on paper, so it stands for both.
  int best = kForeground;
  int bestDistance = std::min(SquaredDistance({255, 255, 255}, r, g, b), SquaredDistance({0, 0, 0}, r, g, b));
  for (int i = 1; i <= 255; ++i) {
    const int d = SquaredDistance(render::AciColor(i), r, g, b);
    if (d < bestDistance || (d == bestDistance && i < best)) best = i, bestDistance = d;
  }
  return best;
}

std::optional<int> EntityColorIndex(ObjectId id) {
  const cad::Database* db = WorkingDatabase();
  const cad::Entity* e = db ? db->entity(id) : nullptr;
  if (!e || e->isErased()) return std::nullopt;
  return e->hasTrueColor() ? NearestColorIndex(e->trueColor) : e->colorIndex;
}

bool SetEntityColorIndex(ObjectId id, int index) {
  cad::Database* db = WorkingDatabase();
  cad::Entity* e = db ? db->entity(id) : nullptr;
  if (!e || e->isErased() || index < 0 || index > 256) return false;
  if (e->colorIndex == index && !e->hasTrueColor() && !HasBookColor(*e)) return false;
  e->colorIndex = static_cast<std::int16_t>(index);
  DropTrueColor(*e, e->trueColor);
  NoteEntityChange(*e);
  CurrentEditor().setModified(true);
  return true;
}

std::optional<int> LayerColorIndex(ObjectId layerId) {
  const cad::Database* db = WorkingDatabase();
  const cad::Layer* l = db ? db->objectAs<cad::Layer>(layerId) : nullptr;
  if (!l) return std::nullopt;
  return l->trueColor >= 0 ? NearestColorIndex(l->trueColor) : l->colorIndex;
}

bool SetLayerColorIndex(ObjectId layerId, int index) {
  cad::Database* db = WorkingDatabase();
  cad::Layer* l = db ? db->objectAs<cad::Layer>(layerId) : nullptr;
  if (!l || index < 1 || index > 255) return false;
  if (l->colorIndex == index && l->trueColor < 0 && !HasBookColor(*l)) return false;
  l->colorIndex = static_cast<std::int16_t>(index);
  DropTrueColor(*l, l->trueColor);
  CurrentEditor().setModified(true);
  return true;
}

}  // namespace tv::host
