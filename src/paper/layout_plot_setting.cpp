#include "paper/layout_plot_setting.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <system_error>

#include "host/command_prologue.h"
#include "host/editor.h"
#include "settings/config.h"
#include "settings/folders.h"

namespace tv::paper {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kDefaultCtb = "acad.ctb";
constexpr std::string_view kDefaultStb = "acad.stb";
// Chinese hosts call the empty device so.
constexpr std::string_view kNoDeviceChinese = "无";

// The system's own tables (see the plot style writer) lead every list, in this order.
constexpr std::array<std::string_view, 3> kOwnTableWords{"黑白", "彩色", "蓝白"};

// The private plotter files of the six formats, and the installation's pristine copy of a device
// of that name that a job may have replaced.
struct PrivateFiles {
  std::string_view stem;   // "T_PDF"
  std::string_view model;  // "T_PDF.pmp"
  std::string_view original;  // "Tarvex.prt10"
};
constexpr std::array<PrivateFiles, 6> kPrivateFiles{{
    {"T_PDF", "T_PDF.pmp", "Tarvex.prt10"},
    {"T_DWF", "T_DWF.pmp", "Tarvex.prt11"},
    {"T_JPG", "T_JPG.pmp", "Tarvex.prt12"},
    {"T_PNG", "T_PNG.pmp", "Tarvex.prt13"},
    {"T_PLT", "T_PLT.pmp", "Tarvex.prt14"},
    {"T_EPS", "T_EPS.pmp", "Tarvex.prt15"},
}};

// Device names a paper batch never offers: file devices, the empty device and fax.
constexpr std::array<std::string_view, 8> kNoPaperDevice{"无", "NONE", "DWF", "JPG", "PNG", "T_EPS", "FAX", "MICROSOFT XPS"};

std::string AsciiUpper(std::string text) {
  for (char& c : text)
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  return text;
}

bool Holds(std::string_view text, std::string_view part) { return text.find(part) != std::string_view::npos; }

bool IsBlank(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; });
}

// Characters, not bytes: a folder name of one Chinese character is one character long.
std::size_t CharacterCount(std::string_view utf8) {
  return static_cast<std::size_t>(
      std::count_if(utf8.begin(), utf8.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

bool ColourDependentStyles() { return host::GetIntVar("PSTYLEMODE", 1) == 1; }

}  // namespace

LayoutPlotSetting::LayoutPlotSetting(const tv::settings::PlotSettingRec* active)
    : settings(host::LayoutPlotSettings::Current()), active_(active) {
  // A job gives every layout it opens its own settings back when it ends.
  GlobalSavedPlotter().remember(settings);
  layoutName = settings.layoutName();
  settings.refreshLists();
  ReadStyleList();
  ReadDeviceName();
  ReadMediaList();
}

void LayoutPlotSetting::ReadStyleList() {
  const std::string extension(ColourDependentStyles() ? ".ctb" : ".stb");
  styleName = settings.getCurrentStyleSheet();

  // The host's file system ignores case, so "MONO.CTB" is as good a table as "mono.ctb".
  std::vector<std::string> found;
  for (std::string& name : host::PlotStyleSheetList())
    if (name.size() >= 4 && AsciiUpper(name.substr(name.size() - 4)) == AsciiUpper(extension))
      found.push_back(std::move(name));

  styleList.clear();
  std::vector<bool> taken(found.size(), false);
  auto pass = [&](auto belongs) {
    for (std::size_t i = 0; i < found.size(); ++i)
      if (!taken[i] && belongs(found[i])) {
        taken[i] = true;
        styleList.push_back(found[i]);
      }
  };
  for (std::string_view word : kOwnTableWords) pass([&](const std::string& name) { return Holds(name, word); });
  pass([](const std::string&) { return true; });

  std::vector<std::string> unique;
  for (std::string& name : styleList)
    if (std::find(unique.begin(), unique.end(), name) == unique.end()) unique.push_back(std::move(name));
  styleList = std::move(unique);

  const tv::settings::Config& config = tv::settings::GlobalConfig();
  const std::int32_t format = active_ ? active_->format : tv::settings::CurrentPlotSetting().format;
  // Images have no transparency to plot.
  const bool image = format == tv::settings::kFormatJpg || format == tv::settings::kFormatPng;
  settings.setPrintLineweights(config.plot_lineweights != 0);
  settings.setPlotTransparency(config.plot_transparency != 0 && !image);
  settings.setPlotPlotStyles(true);
}

void LayoutPlotSetting::ReadDeviceName() { deviceName = settings.getPlotCfgName(); }

void LayoutPlotSetting::ReadMediaList() {
  localeMediaList.clear();
  canonicalMediaList.clear();
  const std::string current = settings.getCanonicalMediaName();
  for (const auto& [canonical, locale] : settings.mediaNames()) {
    if (IsBlank(locale) || IsBlank(canonical)) continue;
    localeMediaList.push_back(locale);
    canonicalMediaList.push_back(canonical);
    if (canonical == current) mediaName = locale;
  }
}

std::string LayoutPlotSetting::LocaleToCanonical(const std::string& locale) const {
  auto it = std::find(localeMediaList.begin(), localeMediaList.end(), locale);
  if (it == localeMediaList.end()) return std::string(kBlankMediaName);
  return canonicalMediaList[static_cast<std::size_t>(it - localeMediaList.begin())];
}

std::string LayoutPlotSetting::CanonicalToLocale(const std::string& canonical) const {
  auto it = std::find(canonicalMediaList.begin(), canonicalMediaList.end(), canonical);
  if (it == canonicalMediaList.end()) return std::string(kBlankMediaName);
  return localeMediaList[static_cast<std::size_t>(it - canonicalMediaList.begin())];
}

std::string LayoutPlotSetting::StyleNameAt(int index) const {
  if (styleList.empty()) return std::string(kDefaultCtb);
  if (index < 0 || static_cast<std::size_t>(index) >= styleList.size()) return styleList.front();
  return styleList[static_cast<std::size_t>(index)];
}

bool LayoutPlotSetting::SetDevice(const std::string& name) {
  if (!settings.setPlotCfgName(name)) return false;
  settings.refreshLists();
  ReadDeviceName();
  ReadMediaList();
  return true;
}

void LayoutPlotSetting::SetPaper(const std::string& name, bool rotated) {
  // Every paper has two media: across, and turned ("T"). An upright sheet is plotted on the
  // upright medium, never by a plot rotation.
  const std::string across = name, turned = name + "T";
  const std::string& primary = rotated ? turned : across;
  const std::string& secondary = rotated ? across : turned;
  if (settings.setCanonicalMediaName(LocaleToCanonical(primary)))
    mediaName = primary;
  else if (settings.setCanonicalMediaName(LocaleToCanonical(secondary)))
    mediaName = secondary;
}

std::string LayoutPlotSetting::SetPlotStyle(int index) {
  std::string out(ColourDependentStyles() ? kDefaultCtb : kDefaultStb);
  if (index >= 0 && static_cast<std::size_t>(index) < styleList.size()) {
    out = styleList[static_cast<std::size_t>(index)];
    if (out != styleName) {
      settings.setCurrentStyleSheet(out);
      styleName = out;
    }
  }
  return out;
}

void LayoutPlotSetting::SetWindow(Point2d min, Point2d max, double scale) {
  // A sheet without a margin loses its frame line by a tenth of a millimetre of paper, unless the
  // user wants that line; otherwise the window grows by as much, so the line stays on the paper.
  double d = 0;
  if (active_) {
    const bool dropOuterLine = active_->margin == 0 && tv::settings::GlobalConfig().plot_outer_line == 0;
    d = scale * (dropOuterLine ? -0.1 : 0.1);
  }
  const Point3d target = host::AsPoint(host::GetVar("TARGET")).value_or(Point3d{});
  settings.setPlotWindowArea({min.x - target.x - d, min.y - target.y - d}, {max.x - target.x + d, max.y - target.y + d});
  // The plot is fit to the paper; the margin lies in the media bounds of the private model file.
  settings.setPlotType(host::kPlotWindow);
  settings.setPlotCentered(true);
  settings.setUseStandardScale(true);
  settings.setStdScaleType(host::kScaleToFit);
}

void LayoutPlotSetting::SetRotation(bool /*rotated*/) { settings.setPlotRotation(host::kRotation0); }

bool LayoutPlotSetting::IsPaperWiderThanHigh() const {
  double width = 0, height = 0;
  settings.getPlotPaperSize(width, height);
  return width > height;
}

void LayoutPlotSetting::ListDevices(std::vector<std::string>& out) {
  out.clear();
  for (std::string& name : host::PlotDeviceList())
    if (IsPaperDevice(name)) out.push_back(std::move(name));
}

bool LayoutPlotSetting::IsPaperDevice(const std::string& name) {
  if (name.empty()) return false;
  const std::string upper = AsciiUpper(name);
  if (std::any_of(kNoPaperDevice.begin(), kNoPaperDevice.end(), [&](std::string_view w) { return Holds(upper, w); }))
    return false;
  // File devices write PDF; a printer factory's device (工厂, FACT) that holds "PDF" is paper.
  return !(Holds(upper, "PDF") && !Holds(upper, "FACT") && !Holds(upper, "工厂"));
}

void LayoutPlotSetting::SavePlotter(SavedPlotter& saved) {
  saved.deviceName.clear();
  saved.mediaName.clear();
  saved.layouts.clear();
  saved.recording = true;
  const host::LayoutPlotSettings current = host::LayoutPlotSettings::Current();
  if (!current.valid()) return;
  saved.remember(current);
  saved.deviceName = current.getPlotCfgName();
  saved.mediaName = current.getCanonicalMediaName();
}

void LayoutPlotSetting::RestorePlotter(SavedPlotter& saved) {
  // No private plotter was written; and a developer tracing a job keeps its files to look at.
  if (CharacterCount(saved.pc3Folder) < 2 || host::ShowTimings) return;

  saved.recording = false;
  std::vector<SavedPlotter::LayoutCopy> layouts = std::move(saved.layouts);
  saved.layouts.clear();
  for (SavedPlotter::LayoutCopy& copy : layouts) copy.layout.restore(*copy.settings);
  if (!layouts.empty()) {
    saved.deviceName.clear();
    saved.mediaName.clear();
  } else {
    // Nothing was recorded: the device of the current layout at command start comes back.
    LayoutPlotSetting layout;
    bool restored = false;
    if (!saved.deviceName.empty()) {
      restored = layout.SetDevice(saved.deviceName);
      if (restored && !saved.mediaName.empty()) layout.settings.setCanonicalMediaName(saved.mediaName);
    }
    saved.deviceName.clear();
    saved.mediaName.clear();
    if (!restored && !layout.SetDevice(std::string(host::kNoPlotDevice))) layout.SetDevice(std::string(kNoDeviceChinese));
  }

  for (const PrivateFiles& files : kPrivateFiles) tv::settings::RemoveFile(saved.pmpFolder + "/" + std::string(files.model));

  std::error_code ec;
  std::vector<std::string> doomed;
  for (fs::directory_iterator it(saved.pc3Folder, ec), end; !ec && it != end; it.increment(ec)) {
    const std::string name = it->path().filename().string();
    if (std::any_of(kPrivateFiles.begin(), kPrivateFiles.end(), [&](const PrivateFiles& f) { return name.starts_with(f.stem); }))
      doomed.push_back(it->path().string());
  }
  for (const std::string& path : doomed) tv::settings::RemoveFile(path);

  // A device of the same name that came with the installation gets its own file back.
  const std::string upperPath = AsciiUpper(saved.pc3Path);
  for (const PrivateFiles& files : kPrivateFiles) {
    if (!Holds(upperPath, AsciiUpper(std::string(files.stem) + ".pc3"))) continue;
    const std::string original = tv::settings::InstallFolder() + "/" + std::string(files.original);
    if (fs::is_regular_file(original, ec)) fs::copy_file(original, saved.pc3Path, fs::copy_options::skip_existing, ec);
    break;
  }
}

}  // namespace tv::paper
