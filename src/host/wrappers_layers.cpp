// Layers: facts, flags, lookup and the layers a batch treats as absent.
#include "host/cad_binding.h"
#include "host/wrappers.h"

namespace tv::host {

namespace {

cad::Layer* LayerById(ObjectId id) {
  cad::Database* db = WorkingDatabase();
  return db ? db->objectAs<cad::Layer>(id) : nullptr;
}

LayerFacts FactsOf(const cad::Layer& l) {
  return LayerFacts{l.id, l.name, !l.isOn(), l.isFrozen(), l.isLocked(), l.plottable};
}

}  // namespace

DrawingAids& Aids() {
  static DrawingAids aids;
  return aids;
}

std::optional<LayerFacts> ReadLayer(ObjectId layerId) {
  const cad::Layer* l = LayerById(layerId);
  if (!l) return std::nullopt;
  return FactsOf(*l);
}

std::vector<LayerFacts> ListLayers() {
  std::vector<LayerFacts> out;
  if (const cad::Database* db = WorkingDatabase())
    for (const auto& l : db->layers) out.push_back(FactsOf(*l));
  return out;
}

ObjectId FindOrAddLayer(const std::string& name, bool* existed) {
  if (existed) *existed = false;
  cad::Database* db = WorkingDatabase();
  if (!db) return {};
  for (const auto& l : db->layers)
    if (l->name == name) {
      if (existed) *existed = true;
      return l->id;
    }
  // Layer names are case-insensitive in the drawing: a name differing only in case is the same layer.
  if (const cad::Layer* variant = db->findLayer(name)) {
    if (existed) *existed = true;
    return variant->id;
  }
  return db->addLayer(name).id;
}

void SetLayerColor(ObjectId layerId, std::int16_t colorIndex) {
  cad::Layer* l = LayerById(layerId);
  if (!l || colorIndex < 1 || colorIndex > 255) return;
  l->colorIndex = colorIndex;
  l->trueColor = -1;
}

void SetLayerFlag(ObjectId layerId, int which, bool value) {
  cad::Layer* l = LayerById(layerId);
  if (!l) return;
  switch (which) {
    case kLayerOff: l->on = !value; break;
    case kLayerFrozen: l->setFrozen(value); break;
    case kLayerLocked: l->setLocked(value); break;
    case kLayerPlottable: l->plottable = value; break;
    default: break;
  }
}

bool GetLayerFlag(ObjectId layerId, int which) {
  const cad::Layer* l = LayerById(layerId);
  switch (which) {
    case kLayerOff: return l && !l->isOn();
    case kLayerFrozen: return l && l->isFrozen();
    case kLayerLocked: return l && l->isLocked();
    case kLayerPlottable: return l && l->plottable;
    default: return true;
  }
}

void ReadLayerStates() {
  DrawingAids& aids = Aids();
  aids.frozenLayerIds.clear();
  aids.offLayerIds.clear();
  const cad::Database* db = WorkingDatabase();
  if (!db) return;
  for (const auto& l : db->layers) {
    if (l->isFrozen()) aids.frozenLayerIds.push_back(l->id);
    if (!l->isOn()) aids.offLayerIds.push_back(l->id);
  }
}

}  // namespace tv::host
