// The class-specific facts of an entity: polyline vertices, line ends, block references, texts.
#include <cctype>
#include <string_view>

#include "cad/entity_geometry.h"
#include "host/cad_binding.h"
#include "host/custom_entity.h"
#include "host/entity_internal.h"

namespace tv::host {

using entity_internal::DatabaseOf;

namespace {

// Polyface meshes keep their faces as vertex records holding indices, not positions.
bool IsFaceRecord(const cad::Polyline& p, const cad::PolylineVertex& v) {
  constexpr std::int16_t kPolyfaceVertex = 128, kMeshPosition = 64;
  return (p.polyFlags & cad::Polyline::kPolyface) && (v.flags & kPolyfaceVertex) && !(v.flags & kMeshPosition);
}

const cad::Insert* AsInsert(const Entity::Impl* impl) { return impl ? cad::As<cad::Insert>(impl->entity) : nullptr; }

const cad::BlockRecord* BlockOf(const Entity::Impl& impl, const cad::Insert& insert) {
  return DatabaseOf(impl).objectAs<cad::BlockRecord>(insert.block);
}

bool StartsWithNoCase(const std::string& s, std::string_view prefix) {
  if (s.size() < prefix.size()) return false;
  for (std::size_t i = 0; i < prefix.size(); ++i)
    if (std::toupper(static_cast<unsigned char>(s[i])) != std::toupper(static_cast<unsigned char>(prefix[i]))) return false;
  return true;
}

}  // namespace

std::vector<Point2d> Entity::vertices() const {
  std::vector<Point2d> out;
  if (!impl_) return out;
  if (const auto* lw = cad::As<cad::LwPolyline>(impl_->entity)) {
    // Lightweight polylines keep OCS points at one elevation.
    const Matrix3d toWorld = Matrix3d::planeToWorld(lw->normal());
    out.reserve(lw->points.size());
    for (const Point2d& p : lw->points) out.push_back(toWorld.transform(Point3d{p, lw->elevation()}).to2d());
  } else if (const auto* pl = cad::As<cad::Polyline>(impl_->entity)) {
    // 2D polylines keep OCS vertices at the header's elevation; 3D ones and meshes world points.
    const bool planar = !pl->is3d() && !pl->isMeshOrPolyface();
    const Matrix3d toWorld = planar ? Matrix3d::planeToWorld(pl->normal) : Matrix3d::identity();
    out.reserve(pl->vertices.size());
    for (const cad::PolylineVertex& v : pl->vertices) {
      if (IsFaceRecord(*pl, v)) continue;
      const Point3d p = planar ? Point3d{v.position.x, v.position.y, pl->elevation} : v.position;
      out.push_back(toWorld.transform(p).to2d());
    }
  }
  return out;
}

bool Entity::closed() const {
  if (!impl_) return false;
  if (const auto* lw = cad::As<cad::LwPolyline>(impl_->entity)) return lw->isClosed();
  if (const auto* pl = cad::As<cad::Polyline>(impl_->entity)) return pl->isClosed();
  if (const auto* sp = cad::As<cad::Spline>(impl_->entity)) return sp->splineFlags & cad::Spline::kClosed;
  return false;
}

Point3d Entity::startPoint() const {
  const auto* line = impl_ ? cad::As<cad::Line>(impl_->entity) : nullptr;
  return line ? line->start : Point3d{};
}

Point3d Entity::endPoint() const {
  const auto* line = impl_ ? cad::As<cad::Line>(impl_->entity) : nullptr;
  return line ? line->end : Point3d{};
}

ObjectId Entity::blockTableRecord() const {
  const cad::Insert* insert = AsInsert(impl_.get());
  return insert ? insert->block : ObjectId{};
}

Matrix3d Entity::blockTransform() const {
  const cad::Insert* insert = AsInsert(impl_.get());
  if (!insert) return Matrix3d::identity();
  // A missing definition has its base point at the origin.
  static const cad::BlockRecord kNoBlock;
  const cad::BlockRecord* block = BlockOf(*impl_, *insert);
  return cad::InsertTransform(*insert, block ? *block : kNoBlock);
}

Vector3d Entity::scaleFactors() const {
  const cad::Insert* insert = AsInsert(impl_.get());
  return insert ? insert->scale : Vector3d{1, 1, 1};
}

double Entity::rotation() const {
  const cad::Insert* insert = AsInsert(impl_.get());
  return insert ? insert->rotation : 0.0;
}

ObjectId Entity::dynamicBlockTableRecord() const {
  const cad::Insert* insert = AsInsert(impl_.get());
  if (!insert) return {};
  const cad::BlockRecord* block = BlockOf(*impl_, *insert);
  const cad::ObjectExtras* x = block && block->isAnonymous() ? block->extrasIfAny() : nullptr;
  if (!x) return insert->block;
  // The copy names its original by handle right after the application name.
  bool inTag = false;
  for (const cad::Group& g : x->xdata) {
    if (g.code == 1001) inTag = g.asString() == "AcDbBlockRepBTag";
    else if (inTag && g.code == 1005 && DatabaseOf(*impl_).objectAs<cad::BlockRecord>(g.asId())) return g.asId();
  }
  return insert->block;
}

bool Entity::isDynamicBlock() const {
  const cad::Insert* insert = AsInsert(impl_.get());
  const cad::BlockRecord* block = insert ? BlockOf(*impl_, *insert) : nullptr;
  if (!block) return false;
  // A dynamic block definition keeps its parameters under ACAD_ENHANCEDBLOCK in its extension
  // dictionary. A reference whose parameters were changed points at an anonymous "*U" copy
  // instead, which names its original in the "AcDbBlockRepBTag" extended data.
  if (const cad::Dictionary* xdict = DatabaseOf(*impl_).extensionDictionary(*block))
    if (!xdict->find("ACAD_ENHANCEDBLOCK").isNull()) return true;
  if (!block->isAnonymous() || !StartsWithNoCase(block->name, "*U")) return false;
  const cad::ObjectExtras* x = block->extrasIfAny();
  if (!x) return false;
  for (const cad::Group& g : x->xdata)
    if (g.code == 1001 && g.asString() == "AcDbBlockRepBTag") return true;
  return false;
}

std::optional<Extents3d> Entity::clipBounds() const {
  const cad::Insert* insert = AsInsert(impl_.get());
  if (!insert) return std::nullopt;
  // The clip's boundary is 2D in its own plane (its origin and normal) of the space the reference
  // lay in when it was clipped; the first matrix, the inverse of the reference's transform at that
  // moment, takes it into block coordinates (the second, from the reference into the boundary's
  // system, is the identity as drawings store it). The reference's transform of today then brings
  // it into the space, so the clip follows the reference when it is moved, scaled or rotated later.
  const std::vector<Point3d> outline = cad::InsertClipBoundary(*insert, DatabaseOf(*impl_));
  if (outline.empty()) return std::nullopt;
  const Matrix3d xf = blockTransform();
  Extents3d box;
  for (const Point3d& p : outline) box.add(xf.transform(p));
  return box;
}

std::string Entity::textContent() const {
  if (!impl_) return {};
  const cad::Entity& e = *impl_->entity;
  if (const auto* t = cad::As<cad::Text>(&e)) return t->text;
  if (const auto* d = cad::As<cad::AttDef>(&e)) return d->multiline().empty() ? d->text : cad::MTextPlainText(d->text);
  if (const auto* a = cad::As<cad::Attrib>(&e)) return a->multiline().empty() ? a->text : cad::MTextPlainText(a->text);
  if (const auto* m = cad::As<cad::MText>(&e)) return cad::MTextPlainText(m->text);
  if (const auto* p = cad::As<cad::ProxyEntity>(&e)) return p->text();
  return {};
}

bool Entity::isMTextAttribute() const {
  const auto* a = impl_ ? cad::As<cad::Attrib>(impl_->entity) : nullptr;
  return a && !a->multiline().empty();
}

std::string Entity::storedText() const {
  if (!impl_) return {};
  const cad::Entity& e = *impl_->entity;
  if (const auto* t = cad::As<cad::Text>(&e)) return t->text;
  if (const auto* d = cad::As<cad::AttDef>(&e)) return d->text;
  if (const auto* a = cad::As<cad::Attrib>(&e)) return a->text;
  if (const auto* m = cad::As<cad::MText>(&e)) return m->text;
  if (const auto* p = cad::As<cad::ProxyEntity>(&e)) return p->text();
  return {};
}

std::string Entity::attributeTag() const {
  if (!impl_) return {};
  if (const auto* d = cad::As<cad::AttDef>(impl_->entity)) return d->tag;
  if (const auto* a = cad::As<cad::Attrib>(impl_->entity)) return a->tag;
  return {};
}

ObjectIdArray Entity::attributeIds() const {
  ObjectIdArray ids;
  const cad::Insert* insert = AsInsert(impl_.get());
  // A transient's attributes are no entities of the drawing: they have no ids to give.
  if (!insert || impl_->transient()) return ids;
  for (const auto& a : insert->attribs)
    if (!a->isErased()) ids.push_back(a->id);
  return ids;
}

const CustomEntity* Entity::custom() const { return impl_ ? CustomOf(*impl_->entity) : nullptr; }

}  // namespace tv::host
