#pragma once
// Frames drawn with single lines, unclosed polylines or exploded blocks: every remaining line and
// polyline segment becomes a horizontal or vertical segment, and pairs of equal horizontals joined
// at both ends by verticals make rectangles. Sorted arrays and bands of a tolerance width keep it
// fast on drawings of tens of thousands of lines.
#include <cstddef>
#include <functional>
#include <vector>

#include "host/geometry.h"
#include "host/object_id.h"
#include "recognition/rectangle_finder.h"
#include "recognition/sheet_records.h"

namespace tv::recognition {

// Two families of parallel arrays, kept strictly in step; points in working coordinates.
struct SegmentArrays {
  ObjectIdArray hIds;
  std::vector<Point2d> hStarts;  // left ends
  std::vector<Point2d> hEnds;    // right ends
  ObjectIdArray vIds;
  std::vector<Point2d> vStarts;  // lower ends
  std::vector<Point2d> vEnds;    // upper ends
};

// Turns the lines and polylines of `remaining` into segments; a segment strictly inside a sheet's
// inner box is content of that sheet instead.
void SplitIntoSegments(SheetList& sheets, const TempIdArray& remaining, SegmentArrays& segments);
// As above, with `lines` following `remaining` as though appended to it; the lines of a large
// drawing are too many to copy.
void SplitIntoSegments(SheetList& sheets, const TempIdArray& remaining, const TempIdArray& lines,
                       SegmentArrays& segments);
// `p` and `q` in world coordinates. Slanted segments are dropped.
void AddSegment(ObjectId id, Point3d p, Point3d q, SheetList& sheets, SegmentArrays& segments);
// The five stages; each reports its text to the stage timer. Found sheets are appended to `result`.
// `tick` is called before each purge of 300 found sheets.
void FindLooseRectangles(SegmentArrays& segments, ObjectId spaceId, ObjectId layerId, SheetList& result,
                         const std::function<void()>& tick);
// Removes horizontals from `firstH` on and verticals whose ends lie strictly in a sheet's inner box.
void DropSegmentsInSheets(std::size_t firstH, SheetList& sheets, SegmentArrays& segments);
// Sorts [lo, hi] of the three arrays together by the x (or y) of `starts`.
void SortSegments(std::vector<Point2d>& starts, std::ptrdiff_t lo, std::ptrdiff_t hi, bool byY,
                  std::vector<Point2d>& ends, ObjectIdArray& ids);
// The first index whose x (y) is at least `value`; 0 when there is none.
std::size_t FirstAtX(const std::vector<Point2d>& starts, double value);
std::size_t FirstAtY(const std::vector<Point2d>& starts, double value);

}  // namespace tv::recognition
