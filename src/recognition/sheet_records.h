#pragma once
// The records a sheet lives in from its discovery to its plot, the light record of a scanned
// entity, and the job that holds the lists of one batch.
#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "host/geometry.h"
#include "host/object_id.h"
#include "paper/paper.h"

namespace tv::recognition {

// Cleared while the system erases its own markers, so that the review list doesn't take the
// erasure for the user's.
extern bool listenForErase;

// How a sheet was found.
enum class SheetKind : std::int32_t {
  Polyline = 0,  // a closed polyline rectangle
  Lines = 1,     // built from loose lines
  Block = 2,     // a block reference
};

// What a scanned entity is to recognition.
enum class TempKind : std::int32_t {
  Line = 0,
  Polyline = 1,  // any of the three polyline classes
  BlockReference = 2,
};

// What recognition keeps of one entity, so that it needn't open it again. Lives for one scan.
struct Temp_Id {
  ObjectId id;
  Extents3d extents;  // in working coordinates
  // (sizeY x 0.001) x (sizeX x 0.001), kept in a small range; 0 for lines.
  double area = 0.0;
  TempKind kind = TempKind::Line;
  // Lines: whether the end of greater x is also the end of greater y. With `extents` that gives
  // both ends back without opening the line again.
  bool rising = true;

  // Corners of `extents`, z 0. Computed rather than stored: a scan holds millions of these
  // records and sorts them, so every byte saved is memory traffic saved.
  Point3d minPt() const { return {extents.min.x, extents.min.y, 0.0}; }
  Point3d maxPt() const { return {extents.max.x, extents.max.y, 0.0}; }
};
using TempIdArray = std::vector<Temp_Id>;

// One sheet: a rectangle that becomes one page of output. It owns its on-screen marker, which
// goes when the record does.
class Plot_Drawing1 {
 public:
  Plot_Drawing1() = default;
  ~Plot_Drawing1();
  Plot_Drawing1(const Plot_Drawing1&) = delete;
  Plot_Drawing1& operator=(const Plot_Drawing1&) = delete;

  SheetKind kind = SheetKind::Polyline;
  // Polyline and block sheets: the entity, then nulls. Line sheets: bottom, top, left, right line.
  std::array<ObjectId, 4> sourceIds{};
  ObjectId spaceId;   // block table record the sheet lies in; null when the user picked it
  ObjectId markerId;  // its Temp_PlotRec
  std::int32_t sequence = 0;  // index of sourceIds[0] among the scanned entities; -1 when absent
  double unitFactor = 1.0;    // block sheets: the reference's X scale
  bool rotated = false;       // sizeX < sizeY
  // Corners in working coordinates.
  double minX = 0.0, minY = 0.0;
  double maxX = 0.0, maxY = 0.0;
  double sizeX = 1.0, sizeY = 1.0;  // absolute sides
  std::string fileName = "1.PDF";
  std::string paperName = "TV_A1";
  double scale = 100.0;  // drawing units per plotted millimetre
  std::int32_t copies = 1;
  double margin = 0.0;  // containment tolerance
  bool hasContent = false;
  bool innerReady = false;
  // The rectangle shrunk by a fiftieth of each side: minX, maxX, minY, maxY.
  std::array<double, 4> innerBox{};
  bool redundant = false;
  std::int32_t copiesLeft = 0;  // collated plots still to make
};

// The sheets of one batch, embedded in each review form.
struct SheetJob {
  std::int32_t largestSizeX = 0, largestSizeY = 0;  // sides of the largest sheet, truncated
  std::vector<std::unique_ptr<Plot_Drawing1>> allSheets;  // every sheet found
  std::vector<Plot_Drawing1*> keptSheets;                 // those that pass the filter; not owning
  paper::PaperList paperList;  // the papers the sheets use, standard ones first
  ObjectId currentSpaceId;     // current when the scan began
  ObjectIdArray frameBlockIds; // block definitions known to hold a frame
  ObjectIdArray plainBlockIds; // block definitions known not to

  // Drops every sheet, and with them their markers, as a new batch does.
  void Clear();
};

}  // namespace tv::recognition
