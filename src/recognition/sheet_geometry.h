#pragma once
// The geometry recognition shares: exact extents in working coordinates, the rectangle test of
// drawn frames, scanned-entity records and sheet markers.
#include <vector>

#include "host/entity.h"
#include "host/geometry.h"
#include "host/object_id.h"
#include "recognition/sheet_records.h"

namespace tv::recognition {

// Matrices of nested block references, outermost first.
using MatrixStack = std::vector<Matrix3d>;

// ---- extents ---------------------------------------------------------------------------------------

// Extents of an entity in working coordinates, text included and splines exact; empty when the
// entity can't be opened.
Extents3d EntityExtents(ObjectId id);
// The same for an open entity. Without text, texts give the box 0,0,0 - 0,0,0 (not an empty one).
Extents3d EntityExtentsOpen(const host::Entity& entity, bool withText, bool exactSplines);
// Adds the extents of what an insert's content plots (no wipeouts, hidden layers, hatches,
// dimensions or proxies), in the insert's space and clipped by its spatial filter. False, with
// `extents` untouched, when nothing counted.
bool BlockExtents(const host::Entity& insert, Extents3d& extents, bool withText, bool exactSplines);
// Sets `extents` to the box of the letters of a multiline text, which is often much narrower
// than its frame. Always true.
bool MTextExtents(const host::Entity& mtext, Extents3d& extents);
// Adds the extents of a spline's flattened curve (its plain extents when it can't be flattened).
void SplineExtents(const host::Entity& spline, Extents3d& extents);
// The union of the entities' extents.
Extents3d SelectionExtents(const ObjectIdArray& ids);
// Intersects `extents` with a reference's non-inverted spatial clip, z 0; true when one applied.
bool ClipToSpatialFilter(const host::Entity& insert, Extents3d& extents);

// ---- rectangles ---------------------------------------------------------------------------------------

// Whether a polyline of any class is a rectangle along the working axes; its corners go to
// `minPt` and `maxPt` (z 0). With `useStack`, vertices are first taken through `stack`.
bool IsRectanglePolyline(const host::Entity& entity, bool useStack, const MatrixStack& stack, Point3d& minPt,
                         Point3d& maxPt);
// Applies the matrices of `stack` from the last to the first.
Point3d TransformByStack(Point3d point, const MatrixStack& stack);

// ---- records and markers ----------------------------------------------------------------------------

// Appends the record of a scanned entity. A slanted line (its box more than 0.002 of its
// diagonal in both directions) and an entity without extents give none: false.
bool MakeTempId(TempKind kind, ObjectId id, TempIdArray& array);
// The same for an entity already open, so that a scan opens each entity once.
bool MakeTempId(TempKind kind, const host::Entity& entity, TempIdArray& array);
// Fills the rectangle of a new sheet and puts its marker on `layerId` in the current space. False
// when the sheet has no source entity or the box is not wider and higher than 1e-05.
bool AddMarker(Plot_Drawing1& sheet, ObjectId layerId, const Extents3d& box, double unitFactor);
// Sets the marker's number and state, each only when not negative and different; the marker is
// touched only when something changes. True when it did.
bool SetMarker(const Plot_Drawing1& sheet, std::int32_t number, std::int32_t state);
bool SetMarker(ObjectId markerId, std::int32_t number, std::int32_t state);
// A marker over `box` (working coordinates) on `layerId` in `spaceId` (null: the current space),
// kept out of UNDO.
ObjectId NewMarker(ObjectId layerId, const Extents3d& box, ObjectId spaceId = {});
// Erases a marker of the system's own, without the review list taking it for the user's doing.
void EraseMarker(ObjectId& markerId);
Point3d CentreOf(const Extents3d& box);

}  // namespace tv::recognition
