// What a field's sources see: the fence across an area, the entities that count, and where a box
// lies against an area.
#include <strings.h>

#include <algorithm>
#include <cmath>

#include "host/wrappers.h"
#include "titleblock/field_extraction.h"
#include "titleblock/field_extraction_internal.h"

namespace tv::titleblock {

namespace {

// The layer of the sheet markers, which the batch always hides.
constexpr const char* kMarkerLayer = "Temp_PlotLayer";

struct LiveLayers {
  ObjectIdArray off;
  ObjectIdArray hidden;
};

LiveLayers& Layers() {
  static LiveLayers layers;
  return layers;
}

bool Contains(const ObjectIdArray& ids, ObjectId id) { return std::find(ids.begin(), ids.end(), id) != ids.end(); }

}  // namespace

std::vector<Point3d> ZigzagFence(Point3d min, Point3d max, int divisions) {
  std::vector<Point3d> points;
  if (divisions < 1) divisions = 1;
  const double w = max.x - min.x, h = max.y - min.y;
  points.reserve(2 * static_cast<std::size_t>(divisions + 1));
  for (int i = 0; i <= divisions; ++i) {
    if (w > h) {
      const double y = min.y + h * i / divisions;
      points.push_back({min.x, y, min.z});
      points.push_back({max.x, y, min.z});
    } else {
      const double x = min.x + w * i / divisions;
      points.push_back({x, min.y, min.z});
      points.push_back({x, max.y, min.z});
    }
  }
  return points;
}

void RefreshLiveLayers() {
  host::ReadLayerStates();
  LiveLayers& layers = Layers();
  layers.off = host::Aids().offLayerIds;
  layers.hidden = host::Aids().frozenLayerIds;
  for (const host::LayerFacts& layer : host::ListLayers())
    if (strcasecmp(layer.name.c_str(), kMarkerLayer) == 0) layers.hidden.push_back(layer.id);
}

bool IsLiveEntity(const host::Entity& entity) {
  if (!entity || !entity.visible()) return false;
  const ObjectId layer = entity.layer();
  return !Contains(Layers().off, layer) && !Contains(Layers().hidden, layer);
}

bool CentreInside(const Extents3d& box, const Extents3d& area) {
  if (box.isEmpty() || area.isEmpty()) return false;
  const Point3d c = box.center();
  return c.x >= area.min.x && c.x <= area.max.x && c.y >= area.min.y && c.y <= area.max.y;
}

double CentreDistance(const Extents3d& box, const Extents3d& area) {
  return box.center().to2d().distanceTo(area.center().to2d());
}

}  // namespace tv::titleblock
