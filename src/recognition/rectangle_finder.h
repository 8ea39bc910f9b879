#pragma once
// Which closed polylines and block references are sheets. Candidates are visited from the largest
// area down, so an outer frame is met before anything inside it, and each batch of found frames
// throws its contents out of the candidate list before anyone looks at them.
#include <cstddef>
#include <functional>
#include <memory>
#include <vector>

#include "host/entity.h"
#include "host/geometry.h"
#include "host/object_id.h"
#include "recognition/sheet_geometry.h"
#include "recognition/sheet_records.h"

namespace tv::recognition {

// Sheets of one scan, owned.
using SheetList = std::vector<std::unique_ptr<Plot_Drawing1>>;

// Found sheets are pruned and purge the candidate list every this many.
inline constexpr std::size_t kSheetBatch = 50;

// Stage 1 of a scan: inserts become block candidates whatever their visibility; of the rest,
// invisible entities and those on frozen or off layers are skipped; polylines of the three classes
// become polyline candidates; lines go to `lines` when loose-line frames are wanted.
void ClassifyEntities(const ObjectIdArray& ids, TempIdArray& candidates, TempIdArray& lines);

// The candidate as a polyline sheet when it is a rectangle; inserted at the front of `batch`.
bool TryPolylineSheet(const Temp_Id& candidate, SheetList& batch, ObjectId spaceId, ObjectId layerId);
// Every insert is a sheet; appended to `batch`.
void AddBlockSheet(const Temp_Id& candidate, SheetList& batch, ObjectId spaceId, ObjectId layerId);
// An insert is a sheet when its definition draws its own outer edge; the verdict on a definition
// is cached in the two lists (never for dynamic blocks). The sheet goes straight to `master`.
void AddFrameBlockSheet(const Temp_Id& candidate, SheetList& master, ObjectId spaceId, ObjectId layerId,
                        ObjectIdArray& frameBlockIds, ObjectIdArray& plainBlockIds);
// Whether the definition of `reference` (or a nested one) draws the box p0-p1 as a rectangular
// polyline or as four lines of one definition. `stack` holds the transforms above `reference`.
bool BlockHoldsFrame(const host::Entity& reference, Point3d p0, Point3d p1, MatrixStack& stack);
// p within t of a and q within t of b, coordinate by coordinate, or the same exchanged; strict.
bool SegmentMatches(Point3d p, Point3d q, double ax, double ay, double bx, double by, double t);

// Drops sheets with a side under 0.001, then every sheet lying wholly in another within a hundredth
// of the shorter side (of equal ones the later survives); sets hasContent on a container that holds
// a sheet well inside it.
void PruneSheets(SheetList& sheets);
// Candidates from `start` on that lie strictly inside a sheet's inner box leave the list; the
// first such sheet gets hasContent.
void DropContainedIds(SheetList& sheets, TempIdArray& candidates, std::size_t start);
// The rectangle shrunk by a fiftieth of each side, computed once.
void EnsureInnerBox(Plot_Drawing1& sheet);

// Stage 3 of a scan: the polyline and block candidates, largest first, in batches. What is left in
// `candidates` are polylines that aren't rectangles and inserts that weren't taken. `tick` is called
// before each batch is pruned.
void ExamineCandidates(TempIdArray& candidates, SheetList& master, ObjectId spaceId, ObjectId layerId,
                       ObjectIdArray& frameBlockIds, ObjectIdArray& plainBlockIds, const std::function<void()>& tick);

}  // namespace tv::recognition
