#include "aids/frame_fit.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "host/editor.h"
#include "host/entity.h"
#include "host/entity_copy.h"
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

void TwoCornerFit(FrameFitState& state) {
  int direction = 0;
  const std::optional<Point3d> first = AskCorner(kFirstCorner, direction);
  if (!first) return;
  const std::optional<Point3d> second = AskCorner(kSecondCorner, direction);
  if (!second) return;
  state.corner1 = UserToWorking(*first);
  state.corner2 = UserToWorking(*second);
  const Matrix3d working = FitTransform(state.area, state.corner1, state.corner2, direction);
  const recognition::UcsState& ucs = recognition::Ucs();
  const Matrix3d world = ucs.active ? ucs.ucsToWorld * working * ucs.worldToUcs : working;
  for (ObjectId id : state.ids)
    if (const ObjectId copy = host::CopyEntity(id)) host::TransformEntity(copy, world);
}

// This mode places nothing: the selections are taken and let go.
void SelectionFit() {
  for (;;) {
    ObjectIdArray ids;
    if (host::CurrentEditor().select("_:$", {kContentPrompt, ""}, {}, {}, ids) != host::RTNORM || ids.empty()) return;
  }
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

void FrameFitCommand() {
  if (JustFinished()) {
    JustFinished() = false;
    return;
  }
  recognition::RefreshUcs(false);
  host::Editor& editor = host::CurrentEditor();
  for (;;) {
    std::vector<std::string> rows{kSettingsRow, kPickRow};
    for (const titleblock::FrameEntry& f : titleblock::FillFrameList(settings::FrameFolder()))
      rows.push_back(titleblock::ShownFrameName(f));
    const std::optional<int> chosen = editor.chooseItem(kFormTitle, rows, 0);
    if (!chosen) return;
    if (*chosen == 0) {
      titleblock::PutFrameSettingForm();
      continue;
    }
    break;
  }
  FrameFitState state;
  ObjectIdArray ids;
  if (editor.select("_:$", {kFramePrompt, ""}, {}, {}, ids) != host::RTNORM || ids.empty()) return;
  if (!FindFrameArea(ids, state)) {
    host::Print(std::string("\n") + kNoArea);
    return;
  }
  if (settings::GlobalConfig().put_frame_mode == 1) SelectionFit();
  else TwoCornerFit(state);
  // The copies carry their attributes with them, so they are already in step with their
  // definitions; a host whose clone drops them would send "_ATTSYNC Name %s" here for
  // state.attributedBlocks. The command's second entry only ends it, from a clean command context.
  editor.sendStringToExecute("TV_BatchPlot_18\n");
  editor.sendStringToExecute("\x03\x03");
  JustFinished() = true;
}

}  // namespace tv::aids
