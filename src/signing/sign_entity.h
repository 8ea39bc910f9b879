#pragma once
// Signatures placed in a drawing: the outlines of a library signature in world coordinates, with
// the person they belong to and the approval of their owner. They stay in the drawing (a DXF
// round trip brings them back alive) and draw themselves hatched, as a skeleton, or not at all.
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/custom_entity.h"

namespace tv::signing {

// What the three classes are registered with.
host::EntityClassData SignClassData();
// The runtime classes of signatures, registered with the host, and their readers, so that a
// drawing read from now on brings its signatures back alive. Calling it again changes nothing.
void RegisterSignClasses();
void UnregisterSignClasses();

// Outlines as loop sizes (negative for a hole) and the vertices of all loops one after the other,
// each loop open: the closing edge is implied.
class Sign_Base : public host::CustomEntity {
 public:
  std::vector<std::int32_t> loop_sizes;
  std::vector<Point3d> points;

  std::string className() const override { return "Sign_Base"; }
  std::unique_ptr<host::CustomEntity> clone() const override { return std::make_unique<Sign_Base>(*this); }
  // A plain outline entity fills its outer loops.
  void worldDraw(host::WorldDraw& draw) const override;
  bool isTransient() const override { return false; }
  host::DxfGroupList dxfGroups() const override;
  std::optional<host::EntityClassData> classData() const override { return SignClassData(); }
  // Every vertex follows the transform, whatever it is.
  bool transformBy(const Matrix3d& xf) override;

  // The loops as closed rings of points; loops running past the points are cut short.
  std::vector<std::vector<Point3d>> loops() const;
  Extents3d extents() const;
  // Reads the groups dxfGroups wrote from `at` on; false for groups that don't make outlines.
  bool readBase(const host::DxfGroupList& groups, std::size_t& at);
};

class TV_Sign_Class final : public Sign_Base {
 public:
  TV_Sign_Class();

  std::int32_t person_id = 0;
  std::string person_name = "A";
  std::int32_t auth_code = 0;
  std::int32_t auth_start = -1;  // first valid day, yyyymmdd
  std::int32_t auth_end = -1;    // last valid day, yyyymmdd
  bool code_ok = true;
  bool date_ok = true;
  // The approval generation the two flags were computed in; not stored.
  std::int32_t library_generation = 0;

  std::string className() const override { return "TV_Sign_Class"; }
  std::unique_ptr<host::CustomEntity> clone() const override { return std::make_unique<TV_Sign_Class>(*this); }
  // In full when approved; otherwise a skeleton on screen and nothing in a plot.
  void worldDraw(host::WorldDraw& draw) const override;
  host::DxfGroupList dxfGroups() const override;

  // The console's listing of the entity: "\n签名：\n" and the fields, the approval code left out.
  std::string listing() const;
  // The entity from its saved groups, its approval evaluated; null for groups that don't make one.
  static std::unique_ptr<TV_Sign_Class> FromGroups(const host::DxfGroupList& groups);

  // Drawing recomputes stale flags although it draws a const entity: they are a cache.
  void refreshIfStale() const;
};

// The outline dragged while the second corner is picked; never saved.
class Temp_Sign final : public host::CustomEntity {
 public:
  Point3d first_point;
  Point3d current_point;
  std::vector<Point3d> points;  // library position
  std::vector<std::int32_t> loop_sizes;
  double size_x = 1.0, size_y = 1.0;
  Point3d centre;

  std::string className() const override { return "Temp_Sign"; }
  std::unique_ptr<host::CustomEntity> clone() const override { return std::make_unique<Temp_Sign>(*this); }
  void worldDraw(host::WorldDraw& draw) const override;
};

// The full drawing: thin outlines and the 45-degree hatching whose spacing follows the size.
void DrawSignFull(const Sign_Base& sign, host::WorldDraw& draw);
// A third of the edges of each outline, the closing edge never.
void DrawSignSkeleton(const Sign_Base& sign, host::WorldDraw& draw);

}  // namespace tv::signing
