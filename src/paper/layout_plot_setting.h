#pragma once
// Everything `-plot` could be told is set beforehand in the plot settings of the current layout:
// device, paper, plot style, window and scale. Its answers then accept them with Enter. This is
// the scoped wrapper that does so, the reading of the host's lists of devices, media and plot
// style tables, and the putting back of the user's plotter at the end of a job.
#include <string>
#include <string_view>
#include <vector>

#include "host/geometry.h"
#include "host/layout_plot.h"
#include "paper/saved_plotter.h"
#include "settings/plot_setting.h"

namespace tv::paper {

// What a look-up of an unknown media name gives.
inline constexpr std::string_view kBlankMediaName = " ";

// The plot settings of the current layout for one sheet or one fill of a list. Build it, use it,
// drop it: it must not outlive the sheet, for `-plot` works on the layout itself.
class LayoutPlotSetting {
 public:
  // Opens the current layout, has the host refresh its lists, and reads the style list, the device
  // and its media. `active` is the settings record of the running job, if any: the window
  // correction and the transparency rule follow it.
  explicit LayoutPlotSetting(const tv::settings::PlotSettingRec* active = nullptr);
  ~LayoutPlotSetting() = default;
  LayoutPlotSetting(const LayoutPlotSetting&) = delete;
  LayoutPlotSetting& operator=(const LayoutPlotSetting&) = delete;

  // Tables of the plot style mode's kind, the system's own three first; sets the flags for
  // lineweights, transparency and plot styles.
  void ReadStyleList();
  void ReadDeviceName();
  void ReadMediaList();

  // Look-ups in the parallel media lists; kBlankMediaName for a name that isn't there.
  std::string LocaleToCanonical(const std::string& locale) const;
  std::string CanonicalToLocale(const std::string& canonical) const;

  // The style at `index`; the first for an index outside the list, "acad.ctb" for an empty list.
  std::string StyleNameAt(int index) const;

  // Makes `name` the device and reads its media; false, lists untouched, when the host refuses.
  bool SetDevice(const std::string& name);
  // The medium of paper `name`: the one across, or with `rotated` the turned one ("T" added), and
  // the other when the host refuses the first. A second refusal leaves the medium as it was.
  void SetPaper(const std::string& name, bool rotated);
  // The style at `index` becomes the current table; "acad.ctb" (or "acad.stb") when the index is
  // outside the list. Returns the name.
  std::string SetPlotStyle(int index);
  // A window from `min` to `max` (working coordinates), fit to the paper and centred. `scale`
  // (drawing units per plotted millimetre) only sizes the 0.1 mm correction at the edges.
  void SetWindow(Point2d min, Point2d max, double scale);
  // No plot rotation ever: an upright sheet goes on the upright medium. `rotated` is unused.
  void SetRotation(bool rotated);
  bool IsPaperWiderThanHigh() const;

  // The devices a paper batch offers: no file devices, no "None", no fax.
  static void ListDevices(std::vector<std::string>& out);
  // Whether a device name is one a paper batch may plot on, by the same rule; false for none.
  static bool IsPaperDevice(const std::string& name);
  // The device and medium of the current layout now, and from now on the plot settings of every
  // layout a LayoutPlotSetting opens, so that RestorePlotter can put them back.
  static void SavePlotter(SavedPlotter& saved);
  // Puts the saved plot settings back on every layout the job opened and removes the private
  // plotter files of the job.
  static void RestorePlotter(SavedPlotter& saved);

  host::LayoutPlotSettings settings;  // the current layout's settings
  std::string layoutName;
  std::string styleName = "acad.ctb";
  std::vector<std::string> styleList;
  std::string deviceName;
  std::string mediaName = "TV_A1";
  std::vector<std::string> localeMediaList;
  std::vector<std::string> canonicalMediaList;

 private:
  const tv::settings::PlotSettingRec* active_;
};

}  // namespace tv::paper
