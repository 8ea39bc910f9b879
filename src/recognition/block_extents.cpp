#include <algorithm>
#include <cctype>
#include <string>
#include <vector>

#include "host/walk_limits.h"
#include "host/wrappers.h"
#include "recognition/extents_internal.h"
#include "recognition/sheet_geometry.h"

namespace tv::recognition {

namespace {

using internal::GeomExtents;

// Nesting deeper than this is a block that refers to itself.
constexpr std::size_t kMaxNesting = 32;

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

using BoxMemo = std::map<std::tuple<std::uint64_t, bool, bool>, internal::BlockBoxScope::Box>;

// One measurement of a reference: the box of every block's content is worked out once, in the
// block's own coordinates, whatever the number of references to it below, so that blocks inserting
// each other many times over cost no more than their entities.
struct ContentWalk {
  BoxMemo& memo;
  bool withText = true, exactSplines = true;
  std::vector<std::uint64_t> chain;  // blocks being measured, outermost first
};

// The content's box in block coordinates; true when anything was added to `extents`.
bool ContentBox(ObjectId block, Extents3d& extents, ContentWalk& walk);

const internal::BlockBoxScope::Box& KeptContent(ObjectId block, ContentWalk& walk) {
  static const internal::BlockBoxScope::Box kNothing;
  // A block inside itself, or nested past any real drawing's depth, is cut there.
  if (walk.chain.size() > kMaxNesting || std::find(walk.chain.begin(), walk.chain.end(), block.value) != walk.chain.end()) {
    host::NoteContentLeftOut();
    return kNothing;
  }
  const auto key = std::make_tuple(block.value, walk.withText, walk.exactSplines);
  if (auto it = walk.memo.find(key); it != walk.memo.end()) return it->second;
  internal::BlockBoxScope::Box box;
  walk.chain.push_back(block.value);
  box.added = ContentBox(block, box.extents, walk);
  walk.chain.pop_back();
  return walk.memo.emplace(key, box).first->second;
}

bool BlockExtentsAt(const host::Entity& insert, Extents3d& extents, ContentWalk& walk) {
  const internal::BlockBoxScope::Box& box = KeptContent(insert.blockTableRecord(), walk);
  if (!box.added) return false;
  extents.add(box.extents);
  extents = extents.transformed(insert.blockTransform());
  ClipToSpatialFilter(insert, extents);
  return true;
}

bool ContentBox(ObjectId block, Extents3d& extents, ContentWalk& walk) {
  const bool withText = walk.withText, exactSplines = walk.exactSplines;
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
        if (BlockExtentsAt(e, box, walk)) added |= AddBox(extents, box);
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
  // Kept for the scope when one is open, else for this reference only.
  BoxMemo own;
  BoxMemo* kept = internal::BlockBoxScope::Current();
  ContentWalk walk{kept ? *kept : own, withText, exactSplines, {}};
  return BlockExtentsAt(insert, extents, walk);
}

bool ClipToSpatialFilter(const host::Entity& insert, Extents3d& extents) {
  const std::optional<Extents3d> clip = insert.clipBounds();
  if (!clip) return false;
  extents.min = {std::max(extents.min.x, clip->min.x), std::max(extents.min.y, clip->min.y), 0.0};
  extents.max = {std::min(extents.max.x, clip->max.x), std::min(extents.max.y, clip->max.y), 0.0};
  return true;
}

}  // namespace tv::recognition
