// The plot settings validator of this platform: a layout's settings live in its cad::Layout::plot,
// the devices are the plotter configurations in the host's plotter folders and their media come
// from the model files those name. The files are read at each call, so whatever the system wrote
// a moment ago is what the next call sees.
#include "host/layout_plot.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "host/cad_binding.h"
#include "host/print_queues.h"
#include "render/plotter_files.h"
#include "settings/folders.h"

namespace tv::host {

namespace {

// Bits of the layout flags (group 70) that the validator sets.
constexpr std::int16_t kFlagPlotCentered = 4;
constexpr std::int16_t kFlagUseStandardScale = 16;
constexpr std::int16_t kFlagPlotPlotStyles = 32;
constexpr std::int16_t kFlagPrintLineweights = 128;

std::vector<std::string> SplitFolders(const std::string& folders) {
  std::vector<std::string> out;
  std::size_t start = 0;
  while (start <= folders.size()) {
    std::size_t end = folders.find(';', start);
    if (end == std::string::npos) end = folders.size();
    if (end > start) out.push_back(folders.substr(start, end - start));
    start = end + 1;
  }
  return out;
}

std::string AsciiUpper(std::string text) {
  for (char& c : text)
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  return text;
}

struct FolderFile {
  std::string name;
  std::string path;
};

// The files of one extension in a ";"-list of folders, each name once (the first folder wins).
std::vector<FolderFile> FilesOf(const std::string& folders, const std::vector<std::string>& extensions) {
  std::vector<FolderFile> out;
  for (const std::string& folder : SplitFolders(folders))
    for (const std::string& extension : extensions) {
      std::vector<std::string> names;
      settings::ListFiles(folder, extension, names);
      for (std::string& name : names) {
        const bool known = std::any_of(out.begin(), out.end(), [&](const FolderFile& f) { return f.name == name; });
        if (!known) out.push_back({name, folder + "/" + name});
      }
    }
  return out;
}

// A name as listed: exactly, else the same letters in another case, as the host's file system
// would find it.
std::optional<FolderFile> FindListed(const std::vector<FolderFile>& files, const std::string& name) {
  for (const FolderFile& f : files)
    if (f.name == name) return f;
  const std::string upper = AsciiUpper(name);
  for (const FolderFile& f : files)
    if (AsciiUpper(f.name) == upper) return f;
  return std::nullopt;
}

std::vector<FolderFile> DeviceFiles() { return FilesOf(settings::PrinterConfigFolders(), {"pc3"}); }

}  // namespace

std::optional<render::PlotterConfig> PrintQueueDevice(const std::string& queue) {
  if (queue.size() >= 4 && AsciiUpper(queue.substr(queue.size() - 4)) == ".PC3") return std::nullopt;
  std::string error;
  std::vector<PrintMedium> media = QueueMedia(queue, &error);
  if (!error.empty()) return std::nullopt;
  render::PlotterConfig config;
  config.canonicalModelName = "cups";
  config.format = kPrintQueueFormat;
  for (PrintMedium& m : media)
    config.media.push_back(
        {m.name, m.label.empty() ? m.name : m.label, m.widthMm, m.heightMm, m.leftMm, m.bottomMm, m.widthMm - m.rightMm,
         m.heightMm - m.topMm});
  return config;
}

namespace {

// A plotter configuration file of that name, else a print queue.
std::optional<render::PlotterConfig> ReadDevice(const std::string& device, std::string* listedName = nullptr) {
  if (device.empty() || device == kNoPlotDevice) return std::nullopt;
  if (const std::optional<FolderFile> file = FindListed(DeviceFiles(), device)) {
    if (listedName) *listedName = file->name;
    return render::ReadPlotterConfig(file->path);
  }
  if (listedName) *listedName = device;
  return PrintQueueDevice(device);
}

const render::PlotterMedium* FindMedium(const render::PlotterConfig& config, const std::string& canonical) {
  for (const render::PlotterMedium& m : config.media)
    if (m.name == canonical) return &m;
  return nullptr;
}

// The paper the layout records for a medium: its size and the unprintable edges around the
// printable area.
void TakeMedium(cad::PlotSettings& plot, const render::PlotterMedium& m) {
  plot.paperSize = m.name;
  plot.paperUnits = 1;
  plot.paperWidth = m.widthMm;
  plot.paperHeight = m.heightMm;
  const bool hasPrintable = m.printableUrx > m.printableLlx && m.printableUry > m.printableLly;
  plot.marginLeft = hasPrintable ? m.printableLlx : 0;
  plot.marginBottom = hasPrintable ? m.printableLly : 0;
  plot.marginRight = hasPrintable ? m.widthMm - m.printableUrx : 0;
  plot.marginTop = hasPrintable ? m.heightMm - m.printableUry : 0;
}

cad::Layout* LayoutOf(ObjectId id) {
  cad::Database* db = WorkingDatabase();
  return db ? db->objectAs<cad::Layout>(id) : nullptr;
}

void SetFlag(cad::PlotSettings& plot, std::int16_t bit, bool on) {
  plot.layoutFlags = static_cast<std::int16_t>(on ? (plot.layoutFlags | bit) : (plot.layoutFlags & ~bit));
}

}  // namespace

std::vector<std::string> PlotDeviceList() {
  std::vector<std::string> out{std::string(kNoPlotDevice)};
  std::vector<FolderFile> files = DeviceFiles();
  // The printers come first, the default one at their head; a queue named like a file is the file's.
  for (PrintQueue& q : ListPrintQueues()) {
    const bool file = std::any_of(files.begin(), files.end(), [&](const FolderFile& f) { return f.name == q.name; });
    if (!file) out.push_back(std::move(q.name));
  }
  for (FolderFile& f : files) out.push_back(std::move(f.name));
  return out;
}

std::vector<DeviceMedium> DeviceMedia(const std::string& device) {
  std::vector<DeviceMedium> out;
  const std::optional<render::PlotterConfig> config = ReadDevice(device);
  if (!config) return out;
  for (const render::PlotterMedium& m : config->media)
    out.push_back({m.name, m.localeName.empty() ? m.name : m.localeName, m.widthMm, m.heightMm});
  return out;
}

std::vector<std::string> PlotStyleSheetList() {
  std::vector<std::string> out;
  for (FolderFile& f : FilesOf(settings::PrinterStyleFolders(), {"ctb", "stb"})) out.push_back(std::move(f.name));
  std::sort(out.begin(), out.end());
  return out;
}

std::string PlotDeviceFile(const std::string& device) {
  if (device.empty() || device == kNoPlotDevice) return {};
  const std::optional<FolderFile> file = FindListed(DeviceFiles(), device);
  return file ? file->path : std::string{};
}

std::string PlotStyleSheetFile(const std::string& name) {
  if (name.empty()) return {};
  const std::optional<FolderFile> file = FindListed(FilesOf(settings::PrinterStyleFolders(), {"ctb", "stb"}), name);
  return file ? file->path : std::string{};
}

class PlotSettingsCopy {
 public:
  cad::PlotSettings plot;
};

std::shared_ptr<const PlotSettingsCopy> LayoutPlotSettings::copy() const {
  const cad::Layout* layout = LayoutOf(layout_);
  if (!layout) return nullptr;
  auto saved = std::make_shared<PlotSettingsCopy>();
  saved->plot = layout->plot;
  return saved;
}

void LayoutPlotSettings::restore(const PlotSettingsCopy& saved) {
  if (cad::Layout* layout = LayoutOf(layout_)) layout->plot = saved.plot;
}

LayoutPlotSettings LayoutPlotSettings::Current() {
  const ObjectId id = Working().currentLayout;
  return LayoutPlotSettings(LayoutOf(id) ? id : ObjectId{});
}

bool LayoutPlotSettings::valid() const { return LayoutOf(layout_) != nullptr; }

std::string LayoutPlotSettings::layoutName() const {
  const cad::Layout* layout = LayoutOf(layout_);
  return layout ? layout->name : std::string{};
}

bool LayoutPlotSettings::setPlotCfgName(const std::string& device) {
  cad::Layout* layout = LayoutOf(layout_);
  if (!layout) return false;
  cad::PlotSettings& plot = layout->plot;
  if (device == kNoPlotDevice) {
    plot.plotterName = device;
    return true;
  }
  std::string listed;
  const std::optional<render::PlotterConfig> config = ReadDevice(device, &listed);
  if (!config) return false;
  plot.plotterName = listed;
  if (const render::PlotterMedium* kept = FindMedium(*config, plot.paperSize))
    TakeMedium(plot, *kept);
  else if (!config->media.empty())
    TakeMedium(plot, config->media.front());
  return true;
}

std::string LayoutPlotSettings::getPlotCfgName() const {
  const cad::Layout* layout = LayoutOf(layout_);
  return layout ? layout->plot.plotterName : std::string{};
}

void LayoutPlotSettings::refreshLists() {
  // Lists are read afresh at each call; what may be stale is the size kept for the medium.
  cad::Layout* layout = LayoutOf(layout_);
  if (!layout) return;
  if (auto config = ReadDevice(layout->plot.plotterName))
    if (const render::PlotterMedium* m = FindMedium(*config, layout->plot.paperSize)) TakeMedium(layout->plot, *m);
}

std::vector<std::string> LayoutPlotSettings::canonicalMediaNameList() const {
  std::vector<std::string> out;
  const cad::Layout* layout = LayoutOf(layout_);
  if (!layout) return out;
  if (auto config = ReadDevice(layout->plot.plotterName))
    for (const render::PlotterMedium& m : config->media) out.push_back(m.name);
  return out;
}

std::string LayoutPlotSettings::getLocaleMediaName(const std::string& canonical) const {
  const cad::Layout* layout = LayoutOf(layout_);
  if (!layout) return {};
  const std::optional<render::PlotterConfig> config = ReadDevice(layout->plot.plotterName);
  const render::PlotterMedium* m = config ? FindMedium(*config, canonical) : nullptr;
  if (!m) return {};
  return m->localeName.empty() ? m->name : m->localeName;
}

std::vector<std::pair<std::string, std::string>> LayoutPlotSettings::mediaNames() const {
  std::vector<std::pair<std::string, std::string>> out;
  const cad::Layout* layout = LayoutOf(layout_);
  if (!layout) return out;
  if (auto config = ReadDevice(layout->plot.plotterName))
    for (const render::PlotterMedium& each : config->media) {
      const render::PlotterMedium& m = *FindMedium(*config, each.name);  // the first of a name, as by name
      out.emplace_back(each.name, m.localeName.empty() ? m.name : m.localeName);
    }
  return out;
}

bool LayoutPlotSettings::setCanonicalMediaName(const std::string& canonical) {
  cad::Layout* layout = LayoutOf(layout_);
  if (!layout) return false;
  const std::optional<render::PlotterConfig> config = ReadDevice(layout->plot.plotterName);
  const render::PlotterMedium* m = config ? FindMedium(*config, canonical) : nullptr;
  if (!m) return false;
  TakeMedium(layout->plot, *m);
  return true;
}

std::string LayoutPlotSettings::getCanonicalMediaName() const {
  const cad::Layout* layout = LayoutOf(layout_);
  return layout ? layout->plot.paperSize : std::string{};
}

void LayoutPlotSettings::getPlotPaperSize(double& width, double& height) const {
  const cad::Layout* layout = LayoutOf(layout_);
  width = layout ? layout->plot.paperWidth : 0;
  height = layout ? layout->plot.paperHeight : 0;
}

bool LayoutPlotSettings::setCurrentStyleSheet(const std::string& name) {
  cad::Layout* layout = LayoutOf(layout_);
  if (!layout) return false;
  const std::vector<std::string> sheets = PlotStyleSheetList();
  auto it = std::find(sheets.begin(), sheets.end(), name);
  if (it == sheets.end()) {
    const std::string upper = AsciiUpper(name);
    it = std::find_if(sheets.begin(), sheets.end(), [&](const std::string& s) { return AsciiUpper(s) == upper; });
  }
  if (it == sheets.end()) return false;
  layout->plot.styleSheet = *it;
  return true;
}

std::string LayoutPlotSettings::getCurrentStyleSheet() const {
  const cad::Layout* layout = LayoutOf(layout_);
  return layout ? layout->plot.styleSheet : std::string{};
}

bool LayoutPlotSettings::setPlotWindowArea(Point2d min, Point2d max) {
  cad::Layout* layout = LayoutOf(layout_);
  if (!layout) return false;
  layout->plot.windowMin = {std::min(min.x, max.x), std::min(min.y, max.y)};
  layout->plot.windowMax = {std::max(min.x, max.x), std::max(min.y, max.y)};
  return true;
}

void LayoutPlotSettings::getPlotWindowArea(Point2d& min, Point2d& max) const {
  const cad::Layout* layout = LayoutOf(layout_);
  min = layout ? layout->plot.windowMin : Point2d{};
  max = layout ? layout->plot.windowMax : Point2d{};
}

bool LayoutPlotSettings::setPlotType(int type) {
  cad::Layout* layout = LayoutOf(layout_);
  if (!layout || type < kPlotDisplay || type > kPlotLayout) return false;
  layout->plot.plotType = static_cast<std::int16_t>(type);
  return true;
}

int LayoutPlotSettings::getPlotType() const {
  const cad::Layout* layout = LayoutOf(layout_);
  return layout ? layout->plot.plotType : kPlotLayout;
}

void LayoutPlotSettings::setPlotCentered(bool on) {
  if (cad::Layout* layout = LayoutOf(layout_)) SetFlag(layout->plot, kFlagPlotCentered, on);
}

bool LayoutPlotSettings::plotCentered() const {
  const cad::Layout* layout = LayoutOf(layout_);
  return layout && (layout->plot.layoutFlags & kFlagPlotCentered);
}

void LayoutPlotSettings::setUseStandardScale(bool on) {
  if (cad::Layout* layout = LayoutOf(layout_)) SetFlag(layout->plot, kFlagUseStandardScale, on);
}

bool LayoutPlotSettings::useStandardScale() const {
  const cad::Layout* layout = LayoutOf(layout_);
  return layout && (layout->plot.layoutFlags & kFlagUseStandardScale);
}

bool LayoutPlotSettings::setStdScaleType(int type) {
  cad::Layout* layout = LayoutOf(layout_);
  if (!layout || type < kScaleToFit || type > kLastStdScaleType) return false;
  layout->plot.standardScaleType = static_cast<std::int16_t>(type);
  return true;
}

int LayoutPlotSettings::getStdScaleType() const {
  const cad::Layout* layout = LayoutOf(layout_);
  return layout ? layout->plot.standardScaleType : kScaleToFit;
}

bool LayoutPlotSettings::setPlotRotation(int rotation) {
  cad::Layout* layout = LayoutOf(layout_);
  if (!layout || rotation < kRotation0 || rotation > kRotation270) return false;
  layout->plot.rotation = static_cast<std::int16_t>(rotation);
  return true;
}

int LayoutPlotSettings::getPlotRotation() const {
  const cad::Layout* layout = LayoutOf(layout_);
  return layout ? layout->plot.rotation : kRotation0;
}

void LayoutPlotSettings::setPrintLineweights(bool on) {
  if (cad::Layout* layout = LayoutOf(layout_)) SetFlag(layout->plot, kFlagPrintLineweights, on);
}

bool LayoutPlotSettings::printLineweights() const {
  const cad::Layout* layout = LayoutOf(layout_);
  return layout && (layout->plot.layoutFlags & kFlagPrintLineweights);
}

void LayoutPlotSettings::setPlotTransparency(bool on) {
  if (cad::Layout* layout = LayoutOf(layout_)) layout->plot.plotTransparency = on;
}

bool LayoutPlotSettings::plotTransparency() const {
  const cad::Layout* layout = LayoutOf(layout_);
  return layout && layout->plot.plotTransparency;
}

void LayoutPlotSettings::setPlotPlotStyles(bool on) {
  if (cad::Layout* layout = LayoutOf(layout_)) SetFlag(layout->plot, kFlagPlotPlotStyles, on);
}

bool LayoutPlotSettings::plotPlotStyles() const {
  const cad::Layout* layout = LayoutOf(layout_);
  return layout && (layout->plot.layoutFlags & kFlagPlotPlotStyles);
}

}  // namespace tv::host
