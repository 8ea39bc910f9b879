#include "aids/frame_fit.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "host/editor.h"
#include "host/entity.h"
#include "host/entity_copy.h"
#include "host/frame_files.h"
#include "host/input_state.h"
#include "host/wrappers.h"
#include "plot/typed_point.h"
#include "recognition/sheet_geometry.h"
#include "recognition/sheet_traversal.h"
#include "recognition/working_coordinates.h"
#include "settings/config.h"
#include "titleblock/frame_library.h"

namespace tv::aids {

namespace {

constexpr const char* kFormTitle = "选 择 图 框";
constexpr const char* kSettingsRow = "设  置";
constexpr const char* kPickRow = "直接从图中选图框";
constexpr const char* kFramePrompt = "\n选择图框：";
constexpr const char* kNoArea = "未能获得图框的绘图区域，退出 !";
constexpr const char* kContentPrompt = "\n选择套图框的图形：( 按Tab键-->改变图框方向 )";
constexpr const char* kFirstCorner = "\n指定图框第一角点：( 按Tab键-->改变图框方向 )";
constexpr const char* kSecondCorner = "\n指定图框第二角点：( 按Tab键-->改变图框方向 )";
constexpr int kDeepest = 16;
// Entities looked at for one frame, nested ones included: blocks used many times at every level
// can't hold the command up.
constexpr long kMostEntities = 1'000'000;

// Set as the command ends: its own second entry finds it and ends at once.
bool& JustFinished() {
  static bool flag = false;
  return flag;
}

Point2d Working2d(Point3d world) { return recognition::ToWorking(world).to2d(); }

void AddSegments(const host::Entity& e, std::vector<FrameSegment>& out, std::vector<std::string>& blocks, int depth,
                 long& budget) {
  if (!e || --budget < 0) return;
  if (e.kind() == host::EntityClass::Line) {
    out.push_back({Working2d(e.startPoint()), Working2d(e.endPoint())});
  } else if (host::IsPolylineClass(e.kind())) {
    const std::vector<Point2d> v = e.vertices();
    for (std::size_t i = 0; i + 1 < v.size(); ++i)
      out.push_back({Working2d({v[i].x, v[i].y, 0}), Working2d({v[i + 1].x, v[i + 1].y, 0})});
    if (e.closed() && v.size() > 2) out.push_back({Working2d({v.back().x, v.back().y, 0}), Working2d({v[0].x, v[0].y, 0})});
  } else if (e.kind() == host::EntityClass::BlockReference && depth < kDeepest) {
    if (!e.attributeIds().empty()) {
      const std::string name = host::BlockName(e.blockTableRecord());
      if (std::find(blocks.begin(), blocks.end(), name) == blocks.end()) blocks.push_back(name);
    }
    for (const host::Entity& piece : e.explode()) AddSegments(piece, out, blocks, depth + 1, budget);
  }
}

// The two lines of the frame along one axis that bound its drawing area, as their positions across
// it. Segments of equal length on two lines form a pair; a frame drawn with a border inside its
// edge has two pairs, one within the other, and the drawing area is within the inner one.
// Without any pair the longest segment and the longest on another line are taken.
std::optional<std::pair<double, double>> BoundingPair(const std::vector<FrameSegment>& segments, bool horizontal) {
  struct Run {
    double length, at;
  };
  std::vector<Run> runs;
  for (const FrameSegment& s : segments) {
    const double along = horizontal ? s.b.x - s.a.x : s.b.y - s.a.y;
    const double across = horizontal ? s.b.y - s.a.y : s.b.x - s.a.x;
    const double length = std::abs(along);
    if (length <= 0 || std::abs(across) > length * 1e-3) continue;
    runs.push_back({length, horizontal ? (s.a.y + s.b.y) / 2 : (s.a.x + s.b.x) / 2});
  }
  std::stable_sort(runs.begin(), runs.end(), [](const Run& a, const Run& b) { return a.length > b.length; });
  if (runs.empty()) return std::nullopt;
  const double tolerance = runs.front().length * 1e-6;
  struct Pair {
    double low, high;
  };
  std::vector<Pair> pairs;  // longest first
  for (std::size_t i = 0; i < runs.size(); ++i)
    for (std::size_t j = i + 1; j < runs.size() && runs[i].length - runs[j].length <= tolerance; ++j)
      if (std::abs(runs[i].at - runs[j].at) > tolerance)
        pairs.push_back({std::min(runs[i].at, runs[j].at), std::max(runs[i].at, runs[j].at)});
  if (!pairs.empty()) {
    for (const Pair& p : pairs)
      if (p.low > pairs.front().low + tolerance && p.high < pairs.front().high - tolerance) return std::pair{p.low, p.high};
    return std::pair{pairs.front().low, pairs.front().high};
  }
  for (std::size_t i = 1; i < runs.size(); ++i)
    if (std::abs(runs[i].at - runs.front().at) > tolerance)
      return std::pair{std::min(runs[i].at, runs.front().at), std::max(runs[i].at, runs.front().at)};
  return std::nullopt;
}

// A corner; Tab turns the frame a step further and asks again. nullopt when the user stops.
std::optional<Point3d> AskCorner(const char* prompt, int& direction) {
  host::Editor& editor = host::CurrentEditor();
  for (;;) {
    std::string answer;
    if (editor.getString(prompt, answer) != host::RTNORM) return std::nullopt;
    const std::string_view given = plot::TrimTyped(answer);
    if (answer == "\t" || given == "TAB" || given == "Tab" || given == "tab") {
      direction = (direction + 1) % 3;
      continue;
    }
    if (given.empty()) return std::nullopt;
    if (std::optional<Point3d> p = plot::ParseTypedPoint(given)) return p;
    host::Print("\n需要点或选项关键字。");
  }
}

Point3d UserToWorking(Point3d p) { return recognition::ToWorking(host::Trans(p, host::kUser, host::kWorld)); }

// Places the frame: its own entities moved when they are new to the drawing, copies otherwise.
void Place(const FrameFitState& state, const Matrix3d& working, bool own) {
  const recognition::UcsState& ucs = recognition::Ucs();
  const Matrix3d world = ucs.active ? ucs.ucsToWorld * working * ucs.worldToUcs : working;
  for (ObjectId id : state.ids) {
    const ObjectId target = own ? id : host::CopyEntity(id);
    if (target) host::TransformEntity(target, world);
  }
}

bool TwoCornerFit(FrameFitState& state, bool own) {
  int direction = 0;
  const std::optional<Point3d> first = AskCorner(kFirstCorner, direction);
  if (!first) return false;
  const std::optional<Point3d> second = AskCorner(kSecondCorner, direction);
  if (!second) return false;
  state.corner1 = UserToWorking(*first);
  state.corner2 = UserToWorking(*second);
  Place(state, FitTransform(state.area, state.corner1, state.corner2, direction), own);
  return true;
}

// The frame goes around what the selections hold, the drawing area covering their extents; each
// selection made with Tab held turns it a step further.
bool SelectionFit(FrameFitState& state, bool own) {
  int direction = 0;
  ObjectIdArray content;
  for (;;) {
    ObjectIdArray ids;
    const int status = host::CurrentEditor().select("_:$", {kContentPrompt, ""}, {}, {}, ids);
    const bool tab = host::KeyHeldAtSelection(host::kTabKey);
    if (tab) direction = (direction + 1) % 3;
    if (status != host::RTNORM || (ids.empty() && !tab)) break;
    // The frame itself is never what it goes around.
    for (ObjectId id : ids)
      if (std::find(state.ids.begin(), state.ids.end(), id) == state.ids.end()) content.push_back(id);
  }
  const Extents3d box = recognition::SelectionExtents(content);
  if (content.empty() || box.isEmpty()) return false;
  state.corner1 = box.min;
  state.corner2 = box.max;
  Place(state, AroundTransform(state.area, box.min, box.max, direction), own);
  return true;
}

}  // namespace

Extents3d AreaOfSegments(const std::vector<FrameSegment>& segments) {
  const auto ys = BoundingPair(segments, true), xs = BoundingPair(segments, false);
  if (!ys || !xs) return {};
  return Extents3d({xs->first, ys->first, 0}, {xs->second, ys->second, 0});
}

bool FindFrameArea(const ObjectIdArray& ids, FrameFitState& state) {
  state = {};
  state.ids = ids;
  std::vector<FrameSegment> segments;
  long budget = kMostEntities;
  for (ObjectId id : ids) AddSegments(host::OpenEntity(id), segments, state.attributedBlocks, 0, budget);
  state.extents = recognition::SelectionExtents(ids);
  state.area = AreaOfSegments(segments);
  if (state.area.isEmpty()) state.area = state.extents;
  if (state.area.isEmpty() || state.area.width() <= 0 || state.area.height() <= 0) return false;
  state.corner1 = state.area.min;
  state.corner2 = state.area.max;
  state.centre = state.area.center();
  return true;
}

Matrix3d FitTransform(const Extents3d& area, Point3d corner1, Point3d corner2, int direction) {
  const Point3d centre = area.center();
  const bool across = direction == 1 || direction == 2;
  const double w = across ? area.height() : area.width(), h = across ? area.width() : area.height();
  const double spanX = std::abs(corner2.x - corner1.x), spanY = std::abs(corner2.y - corner1.y);
  const double s = std::min(w > 0 ? spanX / w : 1, h > 0 ? spanY / h : 1);
  const double angle = direction == 1 ? kPi / 2 : direction == 2 ? -kPi / 2 : 0;
  const Vector3d move{(corner1.x + corner2.x) / 2 - centre.x, (corner1.y + corner2.y) / 2 - centre.y, 0};
  return Matrix3d::translation(move) * Matrix3d::scaling(s > 0 ? s : 1, centre) * Matrix3d::rotation(angle, Vector3d::zAxis(), centre);
}

Matrix3d AroundTransform(const Extents3d& area, Point3d corner1, Point3d corner2, int direction) {
  const bool across = direction == 1 || direction == 2;
  const double w = across ? area.height() : area.width(), h = across ? area.width() : area.height();
  const double spanX = std::abs(corner2.x - corner1.x), spanY = std::abs(corner2.y - corner1.y);
  // The larger of the two ratios: the area covers the box on both axes.
  const double s = std::max(w > 0 ? spanX / w : 0, h > 0 ? spanY / h : 0);
  const double sx = s > 0 ? s * w : 1, sy = s > 0 ? s * h : 1;
  const Point3d mid{(corner1.x + corner2.x) / 2, (corner1.y + corner2.y) / 2, 0};
  return FitTransform(area, {mid.x - sx / 2, mid.y - sy / 2, 0}, {mid.x + sx / 2, mid.y + sy / 2, 0}, direction);
}

void FrameFitCommand() {
  if (JustFinished()) {
    JustFinished() = false;
    return;
  }
  recognition::RefreshUcs(false);
  host::Editor& editor = host::CurrentEditor();
  std::vector<titleblock::FrameEntry> frames;
  int chosenRow = 0;
  for (;;) {
    frames = titleblock::FillFrameList(settings::FrameFolder());
    std::vector<std::string> rows{kSettingsRow, kPickRow};
    for (const titleblock::FrameEntry& f : frames) rows.push_back(titleblock::ShownFrameName(f));
    const std::optional<int> chosen = editor.chooseItem(kFormTitle, rows, 0);
    if (!chosen) return;
    if (*chosen == 0) {
      titleblock::PutFrameSettingForm();
      continue;
    }
    chosenRow = *chosen;
    break;
  }
  FrameFitState state;
  ObjectIdArray ids;
  const bool fromFolder = chosenRow >= 2 && static_cast<std::size_t>(chosenRow - 2) < frames.size();
  if (fromFolder) {
    // The frame's file joins the drawing; it is moved into place, or taken out again when the
    // placing stops.
    ids = host::CopyDrawingFileEntities(frames[chosenRow - 2].path).value_or(ObjectIdArray{});
  } else if (editor.select("_:$", {kFramePrompt, ""}, {}, {}, ids) != host::RTNORM || ids.empty()) {
    return;
  }
  if (!FindFrameArea(ids, state)) {
    if (fromFolder) host::EraseEntities(ids);
    host::Print(std::string("\n") + kNoArea);
    return;
  }
  const bool placed = PlaceFrame(state, settings::GlobalConfig().put_frame_mode, fromFolder);
  if (fromFolder && !placed) host::EraseEntities(ids);
  // The copies carry their attributes with them, so they are already in step with their
  // definitions; a host whose clone drops them would send "_ATTSYNC Name %s" here for
  // state.attributedBlocks. The command's second entry only ends it, from a clean command context.
  editor.sendStringToExecute("TV_BatchPlot_18\n");
  editor.sendStringToExecute("\x03\x03");
  JustFinished() = true;
}

bool PlaceFrame(FrameFitState& state, int mode, bool own) {
  return mode == 1 ? SelectionFit(state, own) : TwoCornerFit(state, own);
}

}  // namespace tv::aids
