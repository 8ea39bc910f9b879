#pragma once
// Drawings built in code for the recognition tests: entities are added to a fresh database, then
// Open() installs it with a console editor behind the host seam.
#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "cad/database.h"
#include "console/session.h"
#include "host/editor.h"
#include "host/wrappers.h"
#include "recognition/sheet_records.h"
#include "recognition/working_coordinates.h"
#include "../support/entity_builders.h"
#include "../support/shape_builders.h"

namespace tv::recognition::test {

inline void ExpectNear2d(Point3d actual, Point2d expected, double tol = 1e-9) {
  EXPECT_NEAR(actual.x, expected.x, tol);
  EXPECT_NEAR(actual.y, expected.y, tol);
}

inline void ExpectBox(const Extents3d& box, Point2d min, Point2d max, double tol = 1e-9) {
  ASSERT_FALSE(box.isEmpty());
  ExpectNear2d(box.min, min, tol);
  ExpectNear2d(box.max, max, tol);
}

class DrawingTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ResetUcs();
    host::Aids() = host::DrawingAids{};
    listenForErase = true;
  }
  void TearDown() override {
    session_.reset();
    ResetUcs();
    host::Aids() = host::DrawingAids{};
    listenForErase = true;
  }

  cad::Database& db() { return session_ ? session_->database() : db_; }
  cad::BlockRecord& model() { return *db().modelSpace(); }

  // Installs the drawing and the editor; the layer states are read as a batch command does.
  void Open() {
    console::SessionOptions options;
    options.out = &out_;
    session_ = std::make_unique<console::Session>(std::move(db_), "test.dxf", options);
    host::ReadLayerStates();
  }

  // Makes a UCS current in the editor and in the working coordinates.
  void UseUcs(const Matrix3d& ucsToWorld) {
    ASSERT_TRUE(host::CurrentEditor().setCurrentUcs(ucsToWorld));
    Ucs().active = true;
    Ucs().ucsToWorld = ucsToWorld;
    Ucs().worldToUcs = ucsToWorld.inverse().value_or(Matrix3d::identity());
  }

  template <class T>
  T& Append(std::unique_ptr<T> e, cad::BlockRecord* block = nullptr) {
    return db().append(block ? *block : model(), std::move(e));
  }

  ObjectId AddLine(Point3d a, Point3d b, cad::BlockRecord* block = nullptr, ObjectId layer = {}) {
    auto e = test_support::MakeLine(a, b);
    e->layer = layer;
    return Append(std::move(e), block).id;
  }

  ObjectId AddLw(std::vector<Point2d> points, bool closed, cad::BlockRecord* block = nullptr, ObjectId layer = {}) {
    auto e = test_support::MakeLwPolyline(std::move(points), closed);
    e->layer = layer;
    return Append(std::move(e), block).id;
  }

  // A 2D polyline, or a 3D one, with vertex records.
  ObjectId AddPolyline(const std::vector<Point2d>& points, bool closed, bool is3d) {
    std::vector<Point3d> corners;
    for (Point2d p : points) corners.emplace_back(p);
    const auto flags = static_cast<std::int16_t>((closed ? cad::Polyline::kClosed : 0) | (is3d ? cad::Polyline::k3dPolyline : 0));
    return Append(test_support::MakePolyline(std::move(corners), flags, is3d ? 32 : 0)).id;
  }

  cad::Text& AddText(std::string text, Point3d at, double height, cad::BlockRecord* block = nullptr) {
    return Append(test_support::MakeText(std::move(text), at, height), block);
  }

  cad::MText& AddMText(std::string text, Point3d topLeft, double height, double width, cad::BlockRecord* block = nullptr) {
    auto e = std::make_unique<cad::MText>();
    e->text = std::move(text);
    e->position = topLeft;
    e->height = height;
    e->referenceWidth = width;
    e->attachment = 1;
    return Append(std::move(e), block);
  }

  // A solid hatch over a rectangle.
  ObjectId AddHatch(Point2d min, Point2d max, cad::BlockRecord* block = nullptr) {
    auto e = std::make_unique<cad::Hatch>();
    e->patternName = "SOLID";
    e->solidFill = true;
    cad::HatchPath path;
    path.flags = cad::HatchPath::kExternal | cad::HatchPath::kPolyline;
    path.vertices = {min, {max.x, min.y}, max, {min.x, max.y}};
    e->paths.push_back(path);
    return Append(std::move(e), block).id;
  }

  cad::Insert& AddInsert(const cad::BlockRecord& def, Point3d at, double scale = 1.0, cad::BlockRecord* owner = nullptr,
                         ObjectId layer = {}) {
    auto e = test_support::MakeInsert(def, at, {scale, scale, scale});
    e->layer = layer;
    return Append(std::move(e), owner);
  }

  std::ostringstream out_;
  std::unique_ptr<console::Session> session_;

 private:
  cad::Database db_ = cad::Database::createDefault();
};

}  // namespace tv::recognition::test
