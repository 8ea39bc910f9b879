#pragma once
// Reading order of the sheets: the outermost row (or column) is peeled off, narrowed crosswise,
// and the first of it taken, again and again. A neighbour overlapping a row by more than a quarter
// of its own height joins it, which allows for rough alignment.
#include <cstdint>
#include <vector>

#include "host/geometry.h"
#include "recognition/sheet_records.h"

namespace tv::recognition {

// 1..8: rows or columns (see the table in sheet_order.cpp); 9: the order of scanning.
using OrderMode = std::int32_t;
// Directions of a band.
inline constexpr int kTop = 1;
inline constexpr int kBottom = 2;
inline constexpr int kRight = 3;
inline constexpr int kLeft = 4;

inline constexpr double kBandOverlap = 0.25;
inline constexpr int kPassLimit = 10;

// Orders `keptSheets` in place, each space kept together in the order spaces first appear, and
// numbers the markers from 1.
void OrderSheets(SheetJob& job, OrderMode mode);
// The index of the rectangle that comes first under `mode`; -1 when a pass found nothing; 0 when
// `mode` is outside 1..8 or there are fewer than two rectangles.
int PickNextSheet(std::vector<Point3d> minCorners, std::vector<Point3d> maxCorners, OrderMode mode);
// The band of rectangles at the `direction` edge of the set, `indexes` travelling along. Returns
// the count selected into the out arrays.
int BandSelect(const std::vector<Point3d>& minCorners, const std::vector<Point3d>& maxCorners,
               const std::vector<int>& indexes, int direction, std::vector<Point3d>& outMin,
               std::vector<Point3d>& outMax, std::vector<int>& outIndexes);
// The first rectangle reaching furthest in `direction`; 0 for fewer than two.
int ExtremeOf(const std::vector<Point3d>& minCorners, const std::vector<Point3d>& maxCorners, int direction);

}  // namespace tv::recognition
