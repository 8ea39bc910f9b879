#pragma once
// The marker drawn over a sheet: a coloured ring with the sheet's number, or a cross when the
// sheet has no place in the list.
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "host/custom_entity.h"
#include "host/geometry.h"

namespace tv::recognition {

// The runtime class, as the module registers it.
inline constexpr std::string_view kPlotRecClassName = "Temp_PlotRec";
inline constexpr std::string_view kPlotRecDxfName = "Temp_PlotRec";
inline constexpr std::string_view kPlotRecAppName = "\"TV_Soft_BatchPlot\"";
inline constexpr int kPlotRecDwgVersion = 33;
inline constexpr int kPlotRecMaintenanceVersion = 327;
inline constexpr int kPlotRecProxyFlags = 3071;

// Marker states.
inline constexpr std::int32_t kMarkerActive = 0;
inline constexpr std::int32_t kMarkerHighlighted = 1;
inline constexpr std::int32_t kMarkerHidden = 2;

class Temp_PlotRec final : public host::CustomEntity {
 public:
  std::int32_t number = 0;  // shown in the middle; 0 means none
  Point3d corner0;          // lower left, working coordinates
  Point3d corner1;          // upper right
  std::int32_t state = kMarkerActive;
  bool inUcs = false;       // working coordinates were a UCS at creation
  Matrix3d matrix;          // world to UCS at creation; kept, not used for drawing

  std::string className() const override { return std::string(kPlotRecClassName); }
  std::unique_ptr<host::CustomEntity> clone() const override { return std::make_unique<Temp_PlotRec>(*this); }
  void worldDraw(host::WorldDraw& draw) const override;
};

}  // namespace tv::recognition
