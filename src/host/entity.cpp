// Entity handles: opening, the common facts, and the transient results of an entity.
#include <algorithm>

#include "cad/entity_geometry.h"
#include "host/cad_binding.h"
#include "host/entity_internal.h"
#include "render/font_metrics.h"

namespace tv::host {

namespace entity_internal {

Entity MakeTransient(std::unique_ptr<cad::Entity> e, const cad::Database* db) {
  if (!e) return {};
  auto impl = std::make_unique<Entity::Impl>();
  impl->entity = e.get();
  impl->owned = std::move(e);
  impl->db = db;
  return Entity(std::move(impl));
}

const cad::Database& DatabaseOf(const Entity::Impl& impl) {
  static const cad::Database empty;
  return impl.db ? *impl.db : empty;
}

const cad::TextMeasurer& SeamTextMeasurer() {
  // Looking fonts up is slow the first time: decide once for the process.
  static const render::FontTextMeasurer fonts;
  static const bool haveFonts = !render::ResolveFont(nullptr).file.empty();
  if (haveFonts) return fonts;
  return cad::ApproximateTextMeasurer();
}

}  // namespace entity_internal

using namespace entity_internal;

Entity::Entity() = default;
Entity::~Entity() = default;
Entity::Entity(Entity&&) noexcept = default;
Entity& Entity::operator=(Entity&&) noexcept = default;
Entity::Entity(std::unique_ptr<Impl> impl) : impl_(std::move(impl)) {}

Entity OpenEntity(ObjectId id) {
  const cad::Database* db = WorkingDatabase();
  if (!db) return {};
  // Erased entities are not found by id; tables and objects are no entities.
  const cad::Entity* e = db->entity(id);
  if (!e) return {};
  auto impl = std::make_unique<Entity::Impl>();
  impl->entity = e;
  impl->db = db;
  return Entity(std::move(impl));
}

void PrefetchEntity(ObjectId id, bool far) {
  if (const cad::Database* db = WorkingDatabase()) db->prefetch(id, !far);
}

// ---- common facts ------------------------------------------------------------------------------------

ObjectId Entity::id() const { return impl_ && !impl_->transient() ? impl_->entity->id : ObjectId{}; }

EntityClass Entity::kind() const {
  if (!impl_) return EntityClass::Other;
  using cad::ObjectType;
  const cad::Entity& e = *impl_->entity;
  switch (e.type()) {
    case ObjectType::Line: return EntityClass::Line;
    case ObjectType::LwPolyline: return EntityClass::LwPolyline;
    case ObjectType::Polyline: {
      const auto& p = static_cast<const cad::Polyline&>(e);
      return p.is3d() || p.isMeshOrPolyface() ? EntityClass::Polyline3d : EntityClass::Polyline2d;
    }
    case ObjectType::Insert: return EntityClass::BlockReference;
    case ObjectType::Spline: return EntityClass::Spline;
    case ObjectType::Text:
    case ObjectType::AttDef: return EntityClass::Text;
    case ObjectType::Attrib: return EntityClass::Attribute;
    case ObjectType::MText: return EntityClass::MText;
    case ObjectType::Hatch: return EntityClass::Hatch;
    case ObjectType::Dimension: return EntityClass::Dimension;
    case ObjectType::Proxy: return EntityClass::Proxy;
    case ObjectType::Wipeout: return EntityClass::Wipeout;
    case ObjectType::Viewport: return EntityClass::Viewport;
    case ObjectType::Custom: return EntityClass::Custom;
    default: return EntityClass::Other;
  }
}

std::string Entity::dxfName() const { return impl_ ? impl_->entity->dxfName() : std::string{}; }

bool Entity::visible() const { return impl_ && impl_->entity->isVisible(); }

ObjectId Entity::layer() const { return impl_ ? impl_->entity->layer : ObjectId{}; }

ObjectId Entity::owner() const {
  if (!impl_ || impl_->transient() || !impl_->db) return {};
  // Attributes belong to their insert; the record is the one the insert lies in.
  const cad::BlockRecord* block = impl_->db->ownerBlock(*impl_->entity);
  return block ? block->id : ObjectId{};
}

std::optional<Extents3d> Entity::geomExtents() const {
  if (!impl_) return std::nullopt;
  return cad::EntityExtents(*impl_->entity, DatabaseOf(*impl_), &SeamTextMeasurer());
}

// ---- transient results ------------------------------------------------------------------------------

Entity Entity::transformedCopy(const Matrix3d& xf) const {
  if (!impl_) return {};
  return MakeTransient(cad::TransformedCopy(*impl_->entity, xf), impl_->db);
}

std::vector<Entity> Entity::explode() const {
  std::vector<Entity> pieces;
  if (!impl_) return pieces;
  for (auto& piece : cad::Explode(*impl_->entity, DatabaseOf(*impl_), &SeamTextMeasurer()))
    pieces.push_back(MakeTransient(std::move(piece), impl_->db));
  return pieces;
}

namespace {
constexpr std::size_t kMaxSplineSegments = 10000;

// Keeps the first and last point and spreads the others evenly, so that at most `maxSegments` remain.
std::vector<Point3d> CapSegments(std::vector<Point3d> points, std::size_t maxSegments) {
  if (points.size() <= maxSegments + 1) return points;
  std::vector<Point3d> kept;
  kept.reserve(maxSegments + 1);
  const double step = static_cast<double>(points.size() - 1) / static_cast<double>(maxSegments);
  for (std::size_t i = 0; i < maxSegments; ++i) kept.push_back(points[static_cast<std::size_t>(static_cast<double>(i) * step)]);
  kept.push_back(points.back());
  return kept;
}
}  // namespace

Entity Entity::splineToPolyline() const {
  if (!impl_) return {};
  const auto* spline = cad::As<cad::Spline>(impl_->entity);
  if (!spline) return {};
  const std::vector<Point3d> points = CapSegments(cad::SplineToPolyline(*spline, 0), kMaxSplineSegments);
  if (points.size() < 2) return {};
  auto poly = std::make_unique<cad::Polyline>();
  poly->polyFlags = cad::Polyline::k3dPolyline;
  constexpr std::int16_t k3dVertex = 32;
  for (const Point3d& p : points) {
    cad::PolylineVertex v;
    v.position = p;
    v.flags = k3dVertex;
    poly->vertices.push_back(v);
  }
  poly->layer = spline->layer;
  poly->colorIndex = spline->colorIndex;
  poly->linetype = spline->linetype;
  poly->lineweight = spline->lineweight;
  poly->trueColor = spline->trueColor;
  poly->linetypeScale = spline->linetypeScale;
  poly->setVisible(spline->isVisible());
  return MakeTransient(std::move(poly), impl_->db);
}

}  // namespace tv::host
