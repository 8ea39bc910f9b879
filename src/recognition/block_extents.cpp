#include <algorithm>
#include <cctype>
#include <string>

#include "host/wrappers.h"
#include "recognition/extents_internal.h"
#include "recognition/sheet_geometry.h"

namespace tv::recognition {

namespace {

using internal::GeomExtents;

// Nesting deeper than this is a block that refers to itself.
constexpr int kMaxNesting = 32;

bool SameTextNoCase(const std::string& a, const char* b) {
  const std::string other(b);
  return a.size() == other.size() && std::equal(a.begin(), a.end(), other.begin(), [](char x, char y) {
           return std::toupper(static_cast<unsigned char>(x)) == std::toupper(static_cast<unsigned char>(y));
         });
}

bool Contains(const ObjectIdArray& ids, ObjectId id) { return FindId(ids, id) >= 0; }

// A box that shows nothing adds nothing.
bool AddBox(Extents3d& extents, const Extents3d& box) {
  if (box.isEmpty()) return false;
  extents.add(box);
  return true;
}

// The content's box in block coordinates; true when anything was added to `extents`.
bool ContentBox(ObjectId block, Extents3d& extents, bool withText, bool exactSplines, int depth);

bool BlockExtentsAt(const host::Entity& insert, Extents3d& extents, bool withText, bool exactSplines, int depth) {
  if (depth > kMaxNesting) return false;
  bool added = false;
  const ObjectId block = insert.blockTableRecord();
  // Only a whole measurement is kept: one cut short by the nesting limit depends on its depth.
  auto* kept = depth == 0 ? internal::BlockBoxScope::Current() : nullptr;
  if (kept) {
    const auto key = std::make_tuple(block.value, withText, exactSplines);
    auto it = kept->find(key);
    if (it == kept->end()) {
      internal::BlockBoxScope::Box box;
      box.added = ContentBox(block, box.extents, withText, exactSplines, depth);
      it = kept->emplace(key, box).first;
    }
    if (it->second.added) extents.add(it->second.extents);
    added = it->second.added;
  } else {
    added = ContentBox(block, extents, withText, exactSplines, depth);
  }

  if (added) {
    extents = extents.transformed(insert.blockTransform());
    ClipToSpatialFilter(insert, extents);
  }
  return added;
}

bool ContentBox(ObjectId block, Extents3d& extents, bool withText, bool exactSplines, int depth) {
  ObjectIdArray ids;
  host::CollectSpaceIds(block, ids);
  const host::DrawingAids& aids = host::Aids();

  bool added = false;
  for (ObjectId id : ids) {
    const host::Entity e = host::OpenEntity(id);
    if (!e) continue;
    const host::EntityClass kind = e.kind();
    if (kind == host::EntityClass::Wipeout) continue;
    if (!e.visible()) continue;
    if (Contains(aids.frozenLayerIds, e.layer())) continue;
    // A nested reference on an off layer stays: its content has layers of its own.
    if (kind != host::EntityClass::BlockReference && Contains(aids.offLayerIds, e.layer())) continue;

    switch (kind) {
      case host::EntityClass::Hatch:
        continue;
      case host::EntityClass::Spline:
        if (exactSplines) {
          Extents3d box;
          SplineExtents(e, box);
          added |= AddBox(extents, box);
        }
        continue;
      case host::EntityClass::MText: {
        if (!withText) continue;
        Extents3d box;
        if (!MTextExtents(e, box)) box = GeomExtents(e);
        added |= AddBox(extents, box);
        continue;
      }
      case host::EntityClass::Dimension:
      case host::EntityClass::Proxy:
        continue;
      case host::EntityClass::BlockReference: {
        Extents3d box;
        if (BlockExtentsAt(e, box, withText, exactSplines, depth + 1)) added |= AddBox(extents, box);
        continue;
      }
      default:
        break;
    }
    if (internal::IsSingleLineText(kind) && !withText) continue;

    const std::optional<Extents3d> box = e.geomExtents();
    if (!box) continue;
    // Other vendors' texts without a shape of their own would drag the box to the block's origin.
    const bool pointLike = box->max.x - box->min.x < 1e-09 && box->max.y - box->min.y < 1e-09;
    if (pointLike) {
      const std::string name = e.dxfName();
      if (SameTextNoCase(name, "TCH_TEXT") || SameTextNoCase(name, "TCH_MTEXT")) continue;
    }
    added |= AddBox(extents, *box);
  }
  return added;
}

}  // namespace

namespace internal {

namespace {
BlockBoxScope* g_scope = nullptr;
}

BlockBoxScope::BlockBoxScope() : owner_(g_scope == nullptr) {
  if (owner_) g_scope = this;
}

BlockBoxScope::~BlockBoxScope() {
  if (owner_) g_scope = nullptr;
}

std::map<std::tuple<std::uint64_t, bool, bool>, BlockBoxScope::Box>* BlockBoxScope::Current() {
  return g_scope ? &g_scope->boxes_ : nullptr;
}

}  // namespace internal

bool BlockExtents(const host::Entity& insert, Extents3d& extents, bool withText, bool exactSplines) {
  if (!insert || insert.kind() != host::EntityClass::BlockReference) return false;
  return BlockExtentsAt(insert, extents, withText, exactSplines, 0);
}

bool ClipToSpatialFilter(const host::Entity& insert, Extents3d& extents) {
  const std::optional<Extents3d> clip = insert.clipBounds();
  if (!clip) return false;
  extents.min = {std::max(extents.min.x, clip->min.x), std::max(extents.min.y, clip->min.y), 0.0};
  extents.max = {std::min(extents.max.x, clip->max.x), std::min(extents.max.y, clip->max.y), 0.0};
  return true;
}

}  // namespace tv::recognition
