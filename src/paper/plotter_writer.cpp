// Writing the private plotter: its folders, the host driver it is built on, and the two files.
#include "paper/plotter_writer.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <system_error>
#include <vector>

#include "host/editor.h"
#include "host/text_files.h"
#include "paper/saved_plotter.h"
#include "settings/config.h"
#include "settings/folders.h"
#include "settings/plot_setting.h"

namespace tv::paper {

namespace {
namespace fs = std::filesystem;

bool g_privatePlotterReady = false;

std::string Upper(std::string text) {
  for (char& c : text)
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  return text;
}

std::vector<std::string> SplitList(const std::string& list) {
  std::vector<std::string> entries;
  std::size_t start = 0;
  while (start <= list.size()) {
    const std::size_t end = std::min(list.find(';', start), list.size());
    if (end > start) entries.push_back(list.substr(start, end - start));
    start = end + 1;
  }
  return entries;
}

// The driver file names of a format, highest number first.
struct DriverRange {
  const char* pattern;
  int high;
  int low;
};

constexpr std::array<DriverRange, 6> kDriverRanges{{
    {"pdfplot%d.hdi", 25, 8},
    {"dwfplot%d.hdi", 25, 8},
    {"raster%d.hdi", 25, 8},
    {"raster%d.hdi", 25, 8},
    {"hpgl%d.hdi", 250, 29},
    {"ps%d.hdi", 25, 8},
}};

std::string FirstUsable(const std::string& folders) {
  return folders.empty() ? std::string() : settings::FirstUsableFolder(folders);
}

// A device of the same name in a sub-folder would shadow ours in the host's device list.
void RemoveShadowingCopies(const std::string& pc3Folder, const std::string& deviceName) {
  const std::string wanted = Upper(deviceName);
  std::vector<fs::path> doomed;
  std::error_code ec;
  for (fs::recursive_directory_iterator it(pc3Folder, fs::directory_options::skip_permission_denied, ec), end;
       !ec && it != end; it.increment(ec)) {
    if (it.depth() < 1 || !it->is_regular_file(ec)) continue;
    if (Upper(it->path().filename().string()) == wanted) doomed.push_back(it->path());
  }
  for (const fs::path& p : doomed) fs::remove(p, ec);
}

void MakeWritable(const std::string& path) {
  std::error_code ec;
  if (fs::exists(path, ec)) fs::permissions(path, fs::perms::owner_write, fs::perm_options::add, ec);
}

}  // namespace

PlotterOptions CurrentPlotterOptions() {
  const settings::PlotSettingRec& rec = settings::CurrentPlotSetting();
  settings::Config& config = settings::GlobalConfig();
  if (config.raster_dpi_step > config.vector_dpi_step) config.raster_dpi_step = config.vector_dpi_step;
  PlotterOptions options;
  options.format = rec.format;
  options.margin = rec.margin;
  options.red = rec.back_red;
  options.green = rec.back_green;
  options.blue = rec.back_blue;
  options.vectorStep = config.vector_dpi_step;
  options.rasterStep = config.raster_dpi_step;
  options.imageScaleStep = config.image_scale_step;
  options.textAsGraphics = config.text_as_graphics != 0;
  options.hostVersion = settings::HostVersion();
  return options;
}

bool WritePc3(const std::string& pc3Path, const std::string& pmpPath, const std::string& hdiPath) {
  return host::WriteTextFileReplacing(pc3Path, Pc3Text(CurrentPlotterOptions(), pmpPath, hdiPath));
}

bool WritePmp(const PaperList& papers, const std::string& pmpPath, const std::string& hdiPath) {
  return host::WriteTextFileReplacing(pmpPath, PmpText(papers, CurrentPlotterOptions(), pmpPath, hdiPath));
}

void FindPlotterFolders(std::string& pc3Folder, std::string& pmpFolder) {
  pc3Folder = FirstUsable(settings::PrinterConfigFolders());
  pmpFolder = FirstUsable(settings::PrinterDescFolders());
}

std::string FindPlotterDriver(std::int32_t format, const std::string& driverFolders) {
  if (format < 0 || format >= static_cast<std::int32_t>(kDriverRanges.size())) return {};
  const DriverRange& range = kDriverRanges[static_cast<std::size_t>(format)];
  for (const std::string& folder : SplitList(driverFolders)) {
    for (int n = range.high; n >= range.low; --n) {
      char name[32];
      std::snprintf(name, sizeof name, range.pattern, n);
      const std::string path = folder + "/" + name;
      std::error_code ec;
      if (fs::is_regular_file(path, ec)) return path;
    }
  }
  return {};
}

bool WritePrivatePlotter(const PaperList& papers) {
  const PlotterOptions options = CurrentPlotterOptions();
  const std::string deviceName = PrivatePlotterName(options.format);
  if (deviceName.empty()) return false;  // DWG output has no plotter
  std::string pc3Folder, pmpFolder;
  FindPlotterFolders(pc3Folder, pmpFolder);
  // The host's folder preferences were checked, with a warning, when the module loaded.
  if (pc3Folder.empty() || pmpFolder.empty()) return false;
  const std::string pc3Path = pc3Folder + "/" + deviceName;
  const std::string pmpPath = pmpFolder + "/" + PrivateModelName(options.format);

  RemoveShadowingCopies(pc3Folder, deviceName);
  MakeWritable(pc3Path);
  MakeWritable(pmpPath);

  const std::string hdiPath = FindPlotterDriver(options.format, settings::DriverFolders());
  if (hdiPath.empty()) {
    if (host::HasEditor()) host::CurrentEditor().messageBox(kNoDriverMessage, kNoDriverTitle, host::MessageButtons::Ok);
    return false;
  }

  const bool written = host::WriteTextFileReplacing(pc3Path, Pc3Text(options, pmpPath, hdiPath)) &&
                       host::WriteTextFileReplacing(pmpPath, PmpText(papers, options, pmpPath, hdiPath));

  SavedPlotter& saved = GlobalSavedPlotter();
  saved.pc3Folder = pc3Folder;
  saved.pmpFolder = pmpFolder;
  saved.pc3Path = pc3Path;
  saved.pmpPath = pmpPath;
  if (written) g_privatePlotterReady = true;
  return written;
}

bool PrivatePlotterReady() { return g_privatePlotterReady; }
void SetPrivatePlotterReady(bool ready) { g_privatePlotterReady = ready; }

bool EnsureBuiltinPc3(const std::string& folder, std::int32_t format) {
  struct Builtin {
    const char* name;
    std::vector<std::string> prefixes;
  };
  static const std::array<Builtin, 4> kBuiltins{{
      {"DWG To PDF.pc3", {"DWG TO PDF", "AUTOCAD PDF (H", "AUTOCAD PDF (G", "AUTOCAD PDF"}},
      {"DWF6 ePlot.pc3", {"DWF6 EPLOT", "DWG TO DWF"}},
      {"PublishToWeb JPG.pc3", {"PUBLISHTOWEB JPG", "DWG TO JPG"}},
      {"PublishToWeb PNG.pc3", {"PUBLISHTOWEB PNG", "DWG TO PNG"}},
  }};
  if (format < 0 || format >= static_cast<std::int32_t>(kBuiltins.size()) || folder.empty()) return false;
  const Builtin& builtin = kBuiltins[static_cast<std::size_t>(format)];
  const fs::path target = fs::path(folder) / builtin.name;
  std::error_code ec;
  if (fs::exists(target, ec)) return true;

  std::vector<std::string> files;
  settings::ListFiles(folder, "pc3", files);
  for (const std::string& prefix : builtin.prefixes) {
    for (const std::string& file : files) {
      if (!Upper(file).starts_with(prefix)) continue;
      fs::copy_file(fs::path(folder) / file, target, fs::copy_options::skip_existing, ec);
      return fs::exists(target, ec);
    }
  }
  return false;
}

}  // namespace tv::paper
