#pragma once
// Drawings and sessions for the console host's tests, built in code.
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "cad/database.h"
#include "console/console_editor.h"
#include "console/session.h"
#include "../support/entity_builders.h"

namespace tv::console::testing {

inline cad::Layer& Layer(cad::Database& db, const std::string& name) { return db.addLayer(name); }

inline ObjectId AddLine(cad::Database& db, cad::BlockRecord& space, Point3d a, Point3d b, const std::string& layer = "0") {
  auto line = test_support::MakeLine(a, b);
  line->layer = db.addLayer(layer).id;
  return db.append(space, std::move(line)).id;
}

inline ObjectId AddRectangle(cad::Database& db, cad::BlockRecord& space, Point2d lo, Point2d hi,
                             const std::string& layer = "0") {
  auto pl = test_support::MakeLwPolyline({lo, {hi.x, lo.y}, hi, {lo.x, hi.y}}, true);
  pl->layer = db.addLayer(layer).id;
  return db.append(space, std::move(pl)).id;
}

inline ObjectId AddCircle(cad::Database& db, cad::BlockRecord& space, Point3d centre, double radius,
                          const std::string& layer = "0") {
  auto c = test_support::MakeCircle(centre, radius);
  c->layer = db.addLayer(layer).id;
  return db.append(space, std::move(c)).id;
}

// A block "FRAME" holding a 10 x 10 square, inserted at `at`.
inline ObjectId AddFrameInsert(cad::Database& db, cad::BlockRecord& space, Point3d at, const std::string& layer = "0") {
  cad::BlockRecord* block = db.findBlock("FRAME");
  if (!block) {
    block = &db.addBlock("FRAME");
    AddRectangle(db, *block, {0, 0}, {10, 10});
  }
  auto insert = test_support::MakeInsert(*block, at);
  insert->layer = db.addLayer(layer).id;
  return db.append(space, std::move(insert)).id;
}

inline ObjectId AddPolyline2d(cad::Database& db, cad::BlockRecord& space, std::vector<Point3d> points,
                              const std::string& layer = "0") {
  auto pl = std::make_unique<cad::Polyline>();
  for (const Point3d& p : points) {
    cad::PolylineVertex v;
    v.position = p;
    pl->vertices.push_back(v);
  }
  pl->layer = db.addLayer(layer).id;
  return db.append(space, std::move(pl)).id;
}

// A session writing into a string, with a list of answers and optionally a terminal.
class ScriptedSession {
 public:
  explicit ScriptedSession(cad::Database db, std::vector<std::string> answers = {}, std::istream* terminal = nullptr,
                           std::string path = "/tmp/plans/plan.dxf") {
    SessionOptions options;
    options.out = &out_;
    options.answers = std::move(answers);
    options.terminal = terminal;
    session_ = std::make_unique<Session>(std::move(db), std::move(path), std::move(options));
  }
  Session& session() { return *session_; }
  ConsoleEditor& editor() { return session_->editor(); }
  cad::Database& db() { return session_->database(); }
  std::string out() const { return out_.str(); }
  void clearOut() { out_.str({}); }

 private:
  std::ostringstream out_;
  std::unique_ptr<Session> session_;
};

}  // namespace tv::console::testing
