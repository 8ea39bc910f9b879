#pragma once
// Shared pieces of the seam's tests: a drawing installed as the working drawing, an editor that
// records what the seam asks of it, and a small entity of the system's own kind.
#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "cad/database.h"
#include "host/cad_binding.h"
#include "host/custom_entity.h"
#include "host/editor.h"
#include "host/null_editor.h"
#include "../support/entity_builders.h"
#include "../support/fake_editor.h"

namespace tv::host::testing {

// A fresh drawing behind the seam for the length of a test.
class HostDrawingTest : public ::testing::Test {
 protected:
  HostDrawingTest() { SetWorkingDatabase(&db); }
  ~HostDrawingTest() override { SetWorkingDatabase(nullptr); }

  cad::BlockRecord& model() { return *db.modelSpace(); }
  cad::BlockRecord& paper() { return *db.paperSpace(); }

  template <class T>
  T& add(std::unique_ptr<T> e, cad::BlockRecord* block = nullptr) {
    return db.append(block ? *block : model(), std::move(e));
  }
  cad::Line& addLine(Point3d a, Point3d b, cad::BlockRecord* block = nullptr) {
    return add(test_support::MakeLine(a, b), block);
  }

  cad::Database db = cad::Database::createDefault();
};

// Installs itself as the platform editor for its lifetime. Variables are plain values; the document
// calls are recorded. Everything else behaves as with no editor at all.
class RecordingEditor final : public test_support::FakeEditor {
 public:
  int modifiedCalls = 0;
  bool modifiedFlag = false;
  int regenCalls = 0;
  std::vector<std::pair<Point3d, double>> views;

  void setModified(bool modified) override {
    ++modifiedCalls;
    modifiedFlag = modified;
  }
  bool modified() override { return modifiedFlag; }
  void regen() override { ++regenCalls; }
  void setView(Point3d centre, double height) override { views.emplace_back(centre, height); }
};

// A rectangle marker: a filled square of side `size` at `corner`, in colour `color`.
class SquareMarker : public CustomEntity {
 public:
  SquareMarker(Point3d corner, double size, std::int16_t color = 1, bool transient = true)
      : corner_(corner), size_(size), color_(color), transient_(transient) {}

  std::string className() const override { return transient_ ? "Temp_PlotRec" : "TV_Stamp"; }
  std::unique_ptr<CustomEntity> clone() const override { return std::make_unique<SquareMarker>(*this); }
  void worldDraw(WorldDraw& draw) const override {
    draw.setColor(color_);
    draw.setFill(true);
    const Point3d c = corner_;
    draw.polygon({c, c + Vector3d{size_, 0, 0}, c + Vector3d{size_, size_, 0}, c + Vector3d{0, size_, 0}});
    draw.setFill(false);
    draw.polyline({c, c + Vector3d{size_, size_, 0}});
  }
  bool isTransient() const override { return transient_; }
  std::vector<std::pair<int, std::string>> dxfGroups() const override {
    return {{100, "TV_Stamp"}, {10, std::to_string(corner_.x)}, {40, std::to_string(size_)}};
  }

  void setSize(double size) { size_ = size; }
  double size() const { return size_; }

 private:
  Point3d corner_;
  double size_;
  std::int16_t color_;
  bool transient_;
};

}  // namespace tv::host::testing
