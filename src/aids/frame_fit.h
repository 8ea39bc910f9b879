#pragma once
// TV_BatchPlot_18: a title block fitted around drawing content, taken from the frame folder or
// picked in the drawing. Its drawing area is found from its lines, then the frame is placed with
// that area on two corners or around selected graphics.
#include <string>
#include <vector>

#include "host/geometry.h"
#include "host/object_id.h"

namespace tv::aids {

struct FrameFitState {
  ObjectIdArray ids;                      // the frame's entities
  std::vector<std::string> attributedBlocks;
  Extents3d extents;                      // of the frame, working coordinates
  Extents3d area;                         // its drawing area
  Point3d corner1, corner2, centre;       // of the area
};

// A straight piece of the frame in working coordinates.
struct FrameSegment {
  Point2d a, b;
};
// The drawing area the frame's segments bound: along each axis the longest pair of equal segments
// on two lines, or the longest pair inside it when the frame has a border within its edge. Empty
// when either axis gives no two lines.
Extents3d AreaOfSegments(const std::vector<FrameSegment>& segments);

// Fills the state from the selected frame: segments, attributed blocks, extents and area (the
// extents when the segments give none). False when no area results.
bool FindFrameArea(const ObjectIdArray& ids, FrameFitState& state);

// The transform, in working coordinates, that turns the frame by `direction` (0 none, 1 a quarter
// counter-clockwise, 2 clockwise) about the area's centre, scales it so that the area fits
// between the corners keeping its proportions, and centres it there.
Matrix3d FitTransform(const Extents3d& area, Point3d corner1, Point3d corner2, int direction);

// As FitTransform, but the area covers the box between the corners on both axes (the larger of
// the two ratios), centred on it.
Matrix3d AroundTransform(const Extents3d& area, Point3d corner1, Point3d corner2, int direction);

// Places the frame of the state: mode 0 on two corners the user gives, mode 1 around the graphics
// the user selects. `own`: the state's entities are new to the drawing and are moved, else copies
// are placed. False when the user gave no corners or nothing to go around.
bool PlaceFrame(FrameFitState& state, int mode, bool own);

// The command body: a frame of the frame folder, or one picked in the drawing, placed by the
// configured put_frame_mode.
void FrameFitCommand();

}  // namespace tv::aids
