// The console editor's selections: answers typed at a selection prompt, and the fence, window,
// crossing and whole-drawing modes the logic asks for directly.
#include <algorithm>
#include <functional>

#include "cad/entity_geometry.h"
#include "cad/selection_geometry.h"
#include "console/answer_parse.h"
#include "console/console_editor.h"
#include "console/selection_filter.h"
#include "console/text_match.h"
#include "console/user_box_selection.h"
#include "host/cad_binding.h"
#include "host/doc_state.h"
#include "host/input_state.h"

namespace tv::console {

namespace {

using host::RTCAN;
using host::RTERROR;
using host::RTNORM;

bool OnHiddenLayer(const cad::Entity& e, const cad::Database& db, bool offCounts) {
  const cad::Layer* layer = db.objectAs<cad::Layer>(e.layer);
  if (!layer) return false;
  return layer->isFrozen() || (offCounts && !layer->isOn());
}

// What W, C and F see: entities the filter lets through on layers that are on and thawed.
std::function<bool(const cad::Entity&)> VisibleAndAccepted(const cad::Database& db, const EntityFilter& filter) {
  return [&db, &filter](const cad::Entity& e) { return !OnHiddenLayer(e, db, true) && filter.accepts(e, db); };
}

const cad::BlockRecord* CurrentSpace(const cad::Database& db) {
  return db.objectAs<cad::BlockRecord>(host::CurrentSpaceBlockId());
}

std::vector<Point2d> ToWorld2d(const std::vector<Point3d>& userPoints, const Matrix3d& ucsToWorld) {
  std::vector<Point2d> world;
  world.reserve(userPoints.size());
  for (const Point3d& p : userPoints) world.push_back(ucsToWorld.transform(p).to2d());
  return world;
}

int Finish(const std::vector<ObjectId>& found, ObjectIdArray& ids) {
  ids.insert(ids.end(), found.begin(), found.end());
  return found.empty() ? RTERROR : RTNORM;
}

// The parsed answer of a selection prompt.
struct SelectionAnswer {
  enum class Kind { All, Window, Crossing, Fence, Handles } kind = Kind::All;
  std::vector<Point3d> points;
  std::vector<ObjectId> handles;
};

std::optional<SelectionAnswer> ParseSelectionAnswer(std::string_view text) {
  const std::vector<std::string> words = SplitBlanks(text);
  if (words.empty()) return std::nullopt;
  const std::string keyword = AsciiUpper(words.front());
  SelectionAnswer a;
  if (keyword == "ALL" || keyword == "全部") {
    if (words.size() != 1) return std::nullopt;
    return a;
  }
  if (keyword == "H") {
    a.kind = SelectionAnswer::Kind::Handles;
    for (std::size_t i = 1; i < words.size(); ++i) {
      ObjectId id = ObjectId::fromHandleText(words[i]);
      if (id.isNull()) return std::nullopt;
      a.handles.push_back(id);
    }
    return a.handles.empty() ? std::nullopt : std::optional(a);
  }
  if (keyword == "W") a.kind = SelectionAnswer::Kind::Window;
  else if (keyword == "C") a.kind = SelectionAnswer::Kind::Crossing;
  else if (keyword == "F") a.kind = SelectionAnswer::Kind::Fence;
  else return std::nullopt;
  for (std::size_t i = 1; i < words.size(); ++i) {
    auto p = ParsePoint(words[i]);
    if (!p) return std::nullopt;
    a.points.push_back(*p);
  }
  const bool box = a.kind != SelectionAnswer::Kind::Fence;
  if (box ? a.points.size() != 2 : a.points.size() < 2) return std::nullopt;
  return a;
}

// The system's markers, which no window of the drawing's content takes, inside the box (or, for
// `crossing`, meeting it): what a user picking on screen could take when erasing.
void AddMarkersInBox(const cad::Database& db, const cad::BlockRecord& space, const Point3d& a, const Point3d& b,
                     const Matrix3d& ucs, bool crossing, const EntityFilter& filter, std::vector<ObjectId>& found) {
  const Point3d p = ucs.transform(a), q = ucs.transform(b);
  const double minX = std::min(p.x, q.x), maxX = std::max(p.x, q.x), minY = std::min(p.y, q.y), maxY = std::max(p.y, q.y);
  db.forEachEntity(space, [&](const cad::Entity& e) {
    const auto* custom = cad::As<cad::CustomEntity>(&e);
    if (!custom || !custom->isTransient() || OnHiddenLayer(e, db, true) || !filter.accepts(e, db)) return;
    const std::optional<Extents3d> box = cad::EntityExtents(e, db);
    if (!box) return;
    const bool inside = box->min.x >= minX && box->max.x <= maxX && box->min.y >= minY && box->max.y <= maxY;
    const bool meets = box->min.x <= maxX && box->max.x >= minX && box->min.y <= maxY && box->max.y >= minY;
    if ((crossing ? meets : inside) && std::find(found.begin(), found.end(), e.id) == found.end()) found.push_back(e.id);
  });
}

}  // namespace

cad::SelectionIndex& ConsoleEditor::selectionIndex(const cad::BlockRecord& space) {
  std::unique_ptr<cad::SelectionIndex>& index = selectionIndexes_[space.id];
  if (!index || &index->space() != &space) index = std::make_unique<cad::SelectionIndex>(db_, space);
  return *index;
}

void ConsoleEditor::noteEntityChange(const cad::Entity& e) {
  for (auto& [space, index] : selectionIndexes_) index->noteChanged(e);
}

int ConsoleEditor::select(std::string_view mode, const std::vector<std::string>& prompts,
                          const std::vector<Point3d>& points, const host::SelectionFilter& filter, ObjectIdArray& ids) {
  const std::optional<EntityFilter> compiled = EntityFilter::Compile(filter);
  const std::string m = AsciiUpper(mode);
  if (m == "_:$" || m.empty()) {
    // A malformed filter lets nothing through, but the prompt is still asked and answered.
    return selectInteractively(prompts, compiled ? *compiled : EntityFilter(), ids, compiled.has_value());
  }
  if (!compiled) return RTERROR;
  const EntityFilter& f = *compiled;

  if (m == "X") {
    std::vector<ObjectId> found;
    std::vector<const cad::BlockRecord*> spaces;
    if (const cad::BlockRecord* model = db_.modelSpace()) spaces.push_back(model);
    for (const cad::Layout* layout : db_.layoutsInTabOrder()) {
      const cad::BlockRecord* block = db_.blockOf(*layout);
      if (block && std::find(spaces.begin(), spaces.end(), block) == spaces.end()) spaces.push_back(block);
    }
    for (const cad::BlockRecord* space : spaces)
      db_.forEachEntity(*space, [&](const cad::Entity& e) {
        if (f.accepts(e, db_)) found.push_back(e.id);
      });
    return Finish(found, ids);
  }

  const cad::BlockRecord* space = CurrentSpace(db_);
  if (!space) return RTERROR;
  const Matrix3d ucs = currentUcs();
  if (m == "F") {
    if (points.size() < 2) return RTERROR;
    return Finish(cad::SelectByFence(db_, selectionIndex(*space), ToWorld2d(points, ucs), VisibleAndAccepted(db_, f)), ids);
  }
  if (m == "W" || m == "C") {
    if (points.size() < 2) return RTERROR;
    return Finish(SelectByUserBox(db_, selectionIndex(*space), points[0], points[1], m == "C", ucs, VisibleAndAccepted(db_, f)), ids);
  }
  return RTERROR;
}

int ConsoleEditor::selectInteractively(const std::vector<std::string>& prompts, const EntityFilter& filter,
                                       ObjectIdArray& ids, bool filterValid) {
  const std::string prompt = prompts.empty() ? std::string("\n选择对象: ") : prompts.front();
  while (true) {
    auto reply = ask(prompt);
    host::NoteSelectionInput(false, std::nullopt);
    if (!reply) return RTCAN;
    std::string_view typed = TrimBlanks(*reply);
    // A key the input filter watches, typed alone, acts while the prompt stands.
    // The key watcher sees the key first, as the host's message watcher would.
    if (typed.size() == 1 &&
        host::KeyWatcher(host::WM_KEYDOWN, static_cast<unsigned char>(typed.front())) != host::KeyAction::None)
      continue;
    if (typed.size() == 1 && host::RunSelectionKey(typed.front())) continue;
    // "TAB" ahead of an answer: the Tab key was held as the selection ended.
    const std::vector<std::string> words = SplitBlanks(typed);
    const bool tabHeld = !words.empty() && AsciiUpper(words.front()) == "TAB";
    if (tabHeld) typed = TrimBlanks(typed.substr(words.front().size()));
    if (typed.empty()) {
      host::NoteSelectionInput(tabHeld, std::nullopt);
      return RTERROR;
    }
    const std::optional<SelectionAnswer> answer = ParseSelectionAnswer(typed);
    if (!answer) {
      print("\n无效的选择。");
      continue;
    }
    const cad::BlockRecord* space = CurrentSpace(db_);
    if (!space || !filterValid) return RTERROR;

    std::vector<ObjectId> found;
    const Matrix3d ucs = currentUcs();
    switch (answer->kind) {
      case SelectionAnswer::Kind::All:
        db_.forEachEntity(*space, [&](const cad::Entity& e) {
          if (!OnHiddenLayer(e, db_, false) && filter.accepts(e, db_)) found.push_back(e.id);
        });
        break;
      case SelectionAnswer::Kind::Handles:
        for (ObjectId id : answer->handles) {
          const cad::Entity* e = db_.entity(id);
          if (e && !e->isErased() && e->owner == space->id && filter.accepts(*e, db_) &&
              std::find(found.begin(), found.end(), id) == found.end())
            found.push_back(id);
        }
        break;
      case SelectionAnswer::Kind::Fence:
        found = cad::SelectByFence(db_, selectionIndex(*space), ToWorld2d(answer->points, ucs), VisibleAndAccepted(db_, filter));
        break;
      case SelectionAnswer::Kind::Window:
      case SelectionAnswer::Kind::Crossing:
        found = SelectByUserBox(db_, selectionIndex(*space), answer->points[0], answer->points[1],
                                answer->kind == SelectionAnswer::Kind::Crossing, ucs, VisibleAndAccepted(db_, filter));
        break;
    }
    if (selectMarkers_ && (answer->kind == SelectionAnswer::Kind::Window || answer->kind == SelectionAnswer::Kind::Crossing))
      AddMarkersInBox(db_, *space, answer->points[0], answer->points[1], ucs,
                      answer->kind == SelectionAnswer::Kind::Crossing, filter, found);
    if (!found.empty()) print("\n找到 " + std::to_string(found.size()) + " 个");
    // The cursor rests where the answer's last point was picked.
    const bool picked = answer->kind != SelectionAnswer::Kind::All && answer->kind != SelectionAnswer::Kind::Handles;
    host::NoteSelectionInput(tabHeld, picked ? std::optional(answer->points.back()) : std::nullopt);
    return Finish(found, ids);
  }
}

}  // namespace tv::console
