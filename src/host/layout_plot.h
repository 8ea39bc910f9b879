#pragma once
// The plot settings of a layout as the host's plot settings validator edits them: device, media,
// plot style table, window, plot type, centring, scale and the plot flags. The system writes them
// into the current layout before `-plot`, whose answers then accept them with Enter. A setter that
// the host refuses returns false and changes nothing.
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/geometry.h"
#include "host/object_id.h"

namespace tv::host {

// The device that plots nowhere; every host lists it.
inline constexpr std::string_view kNoPlotDevice = "None";

// Plot types of setPlotType.
inline constexpr int kPlotDisplay = 0;
inline constexpr int kPlotExtents = 1;
inline constexpr int kPlotLimits = 2;
inline constexpr int kPlotView = 3;
inline constexpr int kPlotWindow = 4;
inline constexpr int kPlotLayout = 5;

// Standard scale types of setStdScaleType: 0 fits the plot to the paper, 16 is 1:1, 32 the last.
inline constexpr int kScaleToFit = 0;
inline constexpr int kLastStdScaleType = 32;

// Plot rotations of setPlotRotation, in quarter turns.
inline constexpr int kRotation0 = 0;
inline constexpr int kRotation270 = 3;

// The plot devices the host offers: kNoPlotDevice, the printers (print queues, the default one
// first), then the plotter configuration files of its plotter folders ("DWG To PDF.pc3"), each
// name once, folder by folder.
std::vector<std::string> PlotDeviceList();
// The plot style tables of the host's plot style folders (".ctb" and ".stb"), each name once.
std::vector<std::string> PlotStyleSheetList();
// Where the files of a listed device and of a listed plot style table are; empty when the name
// isn't listed. Only a host's own plot engine needs them.
std::string PlotDeviceFile(const std::string& device);
// The media of a listed device with their sizes in millimetres, in the order of its files or of
// its print queue; empty for a device that can't be read.
struct DeviceMedium {
  std::string canonical, locale;
  double widthMm = 0, heightMm = 0;
};
std::vector<DeviceMedium> DeviceMedia(const std::string& device);
std::string PlotStyleSheetFile(const std::string& name);

// A layout's plot settings, whole, as the host keeps them. A job takes one of every layout it
// changes and gives each back at its end, a device the host no longer lists included.
class PlotSettingsCopy;

// The plot settings of one layout. A handle: it names the layout and every call reads or writes
// the layout's settings at once, so no layout stays open across a prompt or a plot.
class LayoutPlotSettings {
 public:
  // The current layout; invalid when there is no working drawing or it has no such layout.
  static LayoutPlotSettings Current();

  bool valid() const;
  ObjectId layoutId() const { return layout_; }
  std::string layoutName() const;

  // Everything below at once: null for an invalid handle; `restore` puts a copy back as it was.
  std::shared_ptr<const PlotSettingsCopy> copy() const;
  void restore(const PlotSettingsCopy& saved);

  // ---- device and media ----------------------------------------------------------------------
  // Takes a device of PlotDeviceList (its exact name, else the same name in another case). The
  // current medium stays when the device has it, else the device's first medium is taken.
  // False for an unknown device or a configuration that can't be read.
  bool setPlotCfgName(const std::string& device);
  std::string getPlotCfgName() const;
  // Reads the device's files again, so that media written since the device was set are seen.
  void refreshLists();
  // The canonical names of the device's media, in the order of its model file.
  std::vector<std::string> canonicalMediaNameList() const;
  // The name users see for a canonical one; empty when the device has no such medium.
  std::string getLocaleMediaName(const std::string& canonical) const;
  // Both at once for every medium: (canonical name, name users see), in the order of
  // canonicalMediaNameList, from one reading of the device's files.
  std::vector<std::pair<std::string, std::string>> mediaNames() const;
  // False when the device doesn't list the medium.
  bool setCanonicalMediaName(const std::string& canonical);
  std::string getCanonicalMediaName() const;
  // Width and height of the current medium in millimetres, as the device describes it.
  void getPlotPaperSize(double& width, double& height) const;

  // ---- plot style table ------------------------------------------------------------------------
  // False for a table that isn't in PlotStyleSheetList.
  bool setCurrentStyleSheet(const std::string& name);
  std::string getCurrentStyleSheet() const;

  // ---- what is plotted and how ------------------------------------------------------------------
  // Corners relative to the view target of the layout's space, as display coordinates have them.
  bool setPlotWindowArea(Point2d min, Point2d max);
  void getPlotWindowArea(Point2d& min, Point2d& max) const;
  bool setPlotType(int type);
  int getPlotType() const;
  void setPlotCentered(bool on);
  bool plotCentered() const;
  void setUseStandardScale(bool on);
  bool useStandardScale() const;
  bool setStdScaleType(int type);
  int getStdScaleType() const;
  bool setPlotRotation(int rotation);
  int getPlotRotation() const;
  void setPrintLineweights(bool on);
  bool printLineweights() const;
  void setPlotTransparency(bool on);
  bool plotTransparency() const;
  void setPlotPlotStyles(bool on);
  bool plotPlotStyles() const;

 private:
  explicit LayoutPlotSettings(ObjectId layout) : layout_(layout) {}
  ObjectId layout_;
};

}  // namespace tv::host
