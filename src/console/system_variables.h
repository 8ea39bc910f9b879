#pragma once
// The console editor's system variables: stored values with their types, and the variables a
// CAD editor derives from the current space, its UCS and its view. Also keeps the UCS and the
// view of each space.
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "cad/database.h"
#include "host/editor.h"
#include "host/geometry.h"

namespace tv::console {

class SystemVariables {
 public:
  // `path` is the drawing's file (DWGNAME, DWGPREFIX); `screen` the console's screen in pixels.
  SystemVariables(const cad::Database& db, const std::string& path, Point2d screen);

  // nullopt for an unknown name; names compare without regard to case.
  std::optional<host::Value> get(std::string_view name);
  // False for an unknown or read-only name or a value of the wrong type (an integer passes for a
  // real). CVPORT takes 1 (the last paper layout) or 2 (model space).
  bool set(std::string_view name, const host::Value& value);

  // The UCS of the current space.
  CoordSystem ucs();
  // False when the matrix has no usable axes; axes are made orthonormal otherwise.
  bool setUcs(const Matrix3d& ucsToWorld);

  // The view of the current space: centre in user coordinates, height in drawing units.
  void setView(Point3d centreUser, double height);

 private:
  struct View {
    Point3d centreWorld;
    double height = 1;
  };
  struct SpaceKey {
    ObjectId layout;  // null = model space
    bool paper = false;
  };
  SpaceKey currentSpace();
  View& view(const SpaceKey& space);
  View fittedView(const cad::BlockRecord* block, Point2d fallbackMin, Point2d fallbackMax) const;
  double viewTwist();
  bool switchSpace(bool toPaper);

  const cad::Database& db_;
  Point2d screen_;
  std::map<std::string, host::Value> stored_;  // by upper-case name
  std::map<ObjectId, CoordSystem> ucs_;        // by layout id (null: model space)
  std::map<ObjectId, View> views_;
  CoordSystem modelUcs_;
  ObjectId lastPaperLayout_;
};

}  // namespace tv::console
