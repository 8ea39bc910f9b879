#pragma once
// The system's own layer over the host: spaces, layouts, layers, appending and erasing, fences.
// Later code calls these and never the drawing model. Wrappers don't report: a failed open leaves
// the result empty or false and the caller moves on.
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "host/custom_entity.h"
#include "host/editor.h"
#include "host/entity.h"
#include "host/geometry.h"
#include "host/object_id.h"

namespace tv::host {

// ---- layers ----------------------------------------------------------------------------------------

struct LayerFacts {
  ObjectId id;
  std::string name;
  bool off = false;
  bool frozen = false;
  bool locked = false;
  bool plottable = true;
};

// Layers the current batch treats as absent; refilled by ReadLayerStates.
struct DrawingAids {
  ObjectIdArray frozenLayerIds;
  ObjectIdArray offLayerIds;
};
DrawingAids& Aids();

// Which flag SetLayerFlag and GetLayerFlag address.
inline constexpr int kLayerOff = 1;
inline constexpr int kLayerFrozen = 2;
inline constexpr int kLayerLocked = 3;
inline constexpr int kLayerPlottable = 4;

std::optional<LayerFacts> ReadLayer(ObjectId layerId);
std::vector<LayerFacts> ListLayers();
// Case-exact scan of the layer table; a new layer gets all defaults. Null id when the drawing has
// no layer table.
ObjectId FindOrAddLayer(const std::string& name, bool* existed = nullptr);
void SetLayerFlag(ObjectId layerId, int which, bool value);
// An index colour 1..255 for the layer; other values change nothing.
void SetLayerColor(ObjectId layerId, std::int16_t colorIndex);
// True for an unknown `which`.
bool GetLayerFlag(ObjectId layerId, int which);
// Refills Aids().frozenLayerIds and Aids().offLayerIds from the layer table.
void ReadLayerStates();

// ---- spaces and layouts ------------------------------------------------------------------------------

struct LayoutFacts {
  ObjectId id;
  std::string name;
  ObjectId blockId;  // its block table record; null when it has none
  int tabOrder = 0;
};

// cvport is 1: a layout's paper space is the current space.
bool IsPaperSpace();
ObjectId ModelSpaceId();
// The block table record of the current space ("*Paper_Space" of the current layout or "*Model_Space").
ObjectId OpenCurrentSpace();
// The layouts in the order of the layout dictionary.
std::vector<LayoutFacts> ListLayouts();
// The block table record's name ("*Model_Space", "TITLE" …); empty when the id is no block.
std::string BlockName(ObjectId blockId);
// Block table record by name, compared without regard to case; null when absent.
ObjectId FindBlock(const std::string& name);
// Every block table record of the working drawing (spaces and blocks), in table order.
ObjectIdArray BlockRecordIds();
// Every live entity of the record, in its own order, appended to `ids`.
void CollectSpaceIds(ObjectId blockId, ObjectIdArray& ids);
// Makes the layout of a block table record current; nothing for a bad or null id or a record
// without a layout.
void ActivateLayoutOf(ObjectId blockId);

// ---- writing -------------------------------------------------------------------------------------------

// Appends to the record `recordId` or, when null, to the current space. The colour is set only
// when it lies in 1..256 and the layer only when `layerId` isn't null. Null id on failure.
ObjectId AppendToSpace(Entity entity, int colorIndex, ObjectId layerId, ObjectId recordId = {});
// Unlocks the entity's layer for the moment if it is locked, erases, locks it again.
bool EraseEntity(ObjectId id);
// The same with the first entity's layer only; true when all were erased; empties `ids`.
bool EraseEntities(ObjectIdArray& ids);
// Moves, turns or scales an entity of the drawing in place, its layer unlocked for the moment. False
// when it cannot be opened or its class cannot carry the transform.
bool TransformEntity(ObjectId id, const Matrix3d& xf);
// A block of the working drawing that nothing inserts, where entities whose data can be read only
// while they belong to a drawing stay for the moment. Made on first use.
ObjectId ScratchSpace();
// Keeps an entity out of UNDO (on = false) or back in it.
void SetUndoRecording(ObjectId id, bool on);
// Opens one of the system's own entities for write and lets `edit` change it; `edit` returns
// whether it changed anything, so the entity is only touched when it did. False when the id is not
// such an entity.
bool ModifyCustomEntity(ObjectId id, const std::function<bool(CustomEntity&)>& edit);
void RegenDrawing();

// ---- selections ----------------------------------------------------------------------------------------

// A selection set as the host returns it.
using SelectionSet = ObjectIdArray;
// Appends the set's ids to `ids` in selection order and frees the set.
void SelectionToIds(SelectionSet& set, ObjectIdArray& ids);
// Selects with a fence of straight segments through `points`; adds ids not yet in `ids`. True
// when anything was crossed. Always empties `points`.
bool SelectFence(std::vector<Point3d>& points, ObjectIdArray& ids);
// The same with an entity type filter ("ViewPort", "LINE" …).
bool SelectFenceOfType(const std::string& typeName, std::vector<Point3d>& points, ObjectIdArray& ids);

// ---- the view --------------------------------------------------------------------------------------------

// The rectangle the screen shows, in user coordinates of the current space.
struct ViewRect {
  Point2d lowerLeft;
  Point2d upperRight;
};
// From VIEWCTR, VIEWSIZE and SCREENSIZE: height VIEWSIZE, width by the screen's proportion.
ViewRect ShowActiveView();
// Shows the rectangle from `lowerLeft` to `upperRight`.
void ZoomView(Point2d lowerLeft, Point2d upperRight);

}  // namespace tv::host
