#include "render/plotter_files.h"

#include <charconv>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <mutex>
#include <string_view>
#include <system_error>

#include <sys/stat.h>

#include "cad/codepage.h"

namespace tv::render {

namespace {
namespace fs = std::filesystem;

// One group of the host's text format: `name{`, then `key=value` lines and nested groups, `}`.
struct Group {
  std::string name;
  std::vector<std::pair<std::string, std::string>> values;
  std::vector<Group> groups;

  const std::string* value(std::string_view key) const {
    for (const auto& [k, v] : values)
      if (k == key) return &v;
    return nullptr;
  }
  const Group* group(std::string_view key) const {
    for (const Group& g : groups)
      if (g.name == key) return &g;
    return nullptr;
  }
  std::string text(std::string_view key) const {
    const std::string* v = value(key);
    return v ? *v : std::string();
  }
};

std::string_view Trim(std::string_view s) {
  while (!s.empty() && (s.front() == ' ' || s.front() == '\t')) s.remove_prefix(1);
  while (!s.empty() && (s.back() == ' ' || s.back() == '\t' || s.back() == '\r')) s.remove_suffix(1);
  return s;
}

std::optional<double> Number(const std::string* text) {
  if (!text) return std::nullopt;
  std::string_view s = Trim(*text);
  double v = 0;
  auto [end, ec] = std::from_chars(s.data(), s.data() + s.size(), v);
  if (ec != std::errc() || end == s.data()) return std::nullopt;
  return v;
}

std::optional<long long> Integer(const std::string* text) {
  if (!text) return std::nullopt;
  std::string_view s = Trim(*text);
  long long v = 0;
  auto [end, ec] = std::from_chars(s.data(), s.data() + s.size(), v);
  if (ec != std::errc() || end == s.data()) return std::nullopt;
  return v;
}

bool IsTrue(const std::string* text) {
  if (!text) return false;
  std::string t(Trim(*text));
  for (char& c : t) c = static_cast<char>(c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c);
  return t == "TRUE";
}

// The files are written in the ANSI code page of the system's text files.
std::string ToUtf8(const std::string& bytes) {
  const char* page = std::getenv("TARVEX_ANSI_CODEPAGE");
  std::optional<cad::CodePageDecoder> decoder;
  if (page && *page) decoder = cad::CodePageDecoder::create(page);
  if (!decoder) decoder = cad::CodePageDecoder::create("ANSI_936");
  return decoder ? decoder->toUtf8(bytes) : bytes;
}

bool Fail(std::string* error, std::string message) {
  if (error) *error = std::move(message);
  return false;
}

// Reads and parses a whole file into its top-level group.
bool ParseFile(const std::string& path, Group& root, std::string* error) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return Fail(error, "cannot open " + path);
  const std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  if (in.bad()) return Fail(error, "cannot read " + path);

  const std::size_t firstEnd = bytes.find('\n');
  const std::string_view first = Trim(std::string_view(bytes).substr(0, firstEnd));
  if (!first.starts_with("PIAFILEVERSION")) return Fail(error, path + " is no plotter or plot style file");
  // The host compresses its own files unless told not to; only the plain text form is read here.
  if (first.find("compress") != std::string_view::npos || bytes.find('\0') != std::string::npos)
    return Fail(error, path + " is compressed; only plain text plotter files can be read");

  // Decoded as a whole: a double-byte character may end in a byte that looks like '{' or '}'.
  const std::string text = ToUtf8(firstEnd == std::string::npos ? std::string() : bytes.substr(firstEnd + 1));
  std::vector<Group*> open{&root};
  std::size_t start = 0;
  int lineNumber = 1;
  while (start < text.size()) {
    std::size_t end = text.find('\n', start);
    if (end == std::string::npos) end = text.size();
    const std::string_view line = Trim(std::string_view(text).substr(start, end - start));
    start = end + 1;
    ++lineNumber;
    if (line.empty()) continue;
    if (line == "}") {
      if (open.size() == 1) return Fail(error, path + ": unbalanced \"}\" in line " + std::to_string(lineNumber));
      open.pop_back();
      continue;
    }
    const std::size_t eq = line.find('=');
    if (eq == std::string_view::npos) {
      if (line.back() != '{') continue;  // nothing the host writes; skipped like the host skips it
      Group& child = open.back()->groups.emplace_back();
      child.name = std::string(Trim(line.substr(0, line.size() - 1)));
      open.push_back(&child);
      continue;
    }
    std::string_view value = line.substr(eq + 1);
    // Texts open with a quote and, in the host's files, never close it.
    if (value.starts_with('"')) {
      value.remove_prefix(1);
      if (value.ends_with('"')) value.remove_suffix(1);
    }
    open.back()->values.emplace_back(std::string(Trim(line.substr(0, eq))), std::string(value));
  }
  return true;  // groups left open at the end are taken as closed: a cut file keeps what it has
}

int FormatOfModel(const std::string& model) {
  static constexpr std::pair<std::string_view, int> kModels[] = {
      {"pdf", 0}, {"DWF6_ePlot_for_plotting", 1}, {"jfif", 2}, {"png", 3}, {"DMSXP7595C", 4}, {"PS10", 5}};
  for (const auto& [name, format] : kModels)
    if (model == name) return format;
  return -1;
}

std::string BaseName(const std::string& path) {
  const std::size_t slash = path.find_last_of("/\\");
  return slash == std::string::npos ? path : path.substr(slash + 1);
}

// The model file as named, else one of its name beside the configuration or in the host's
// "PMP Files" folder next to it, as the host looks for a configuration copied between machines.
std::string LocateModel(const std::string& pc3Path, const std::string& modelPath) {
  std::error_code ec;
  if (modelPath.empty()) return {};
  if (fs::is_regular_file(modelPath, ec)) return modelPath;
  const fs::path folder = fs::path(pc3Path).parent_path();
  const std::string base = BaseName(modelPath);
  for (const fs::path& candidate : {folder / base, folder / "PMP Files" / base})
    if (fs::is_regular_file(candidate, ec)) return candidate.string();
  return {};
}

std::vector<PlotterMedium> MediaOf(const Group& root) {
  std::vector<PlotterMedium> media;
  const Group* udm = root.group("udm");
  const Group* list = udm ? udm->group("media") : nullptr;
  if (!list) return media;
  const Group* sizes = list->group("size");
  const Group* descriptions = list->group("description");
  if (!sizes) return media;
  for (const Group& size : sizes->groups) {
    PlotterMedium m;
    m.name = size.text("name");
    m.localeName = size.text("localized_name");
    if (m.localeName.empty()) m.localeName = m.name;
    const std::string descriptionName = size.text("media_description_name");
    const Group* description = nullptr;
    if (descriptions)
      for (const Group& d : descriptions->groups)
        if (d.text("name") == descriptionName) {
          description = &d;
          break;
        }
    if (description) {
      m.widthMm = Number(description->value("media_bounds_urx")).value_or(0);
      m.heightMm = Number(description->value("media_bounds_ury")).value_or(0);
      m.printableLlx = Number(description->value("printable_bounds_llx")).value_or(0);
      m.printableLly = Number(description->value("printable_bounds_lly")).value_or(0);
      m.printableUrx = Number(description->value("printable_bounds_urx")).value_or(m.widthMm);
      m.printableUry = Number(description->value("printable_bounds_ury")).value_or(m.heightMm);
    }
    media.push_back(std::move(m));
  }
  return media;
}

}  // namespace

namespace {

// Which version of a file was read: a rewritten file differs in one of these.
struct FileStamp {
  bool exists = false;
  dev_t device = 0;
  ino_t inode = 0;
  off_t size = 0;
  std::int64_t seconds = 0, nanoseconds = 0;
  bool operator==(const FileStamp&) const = default;
};

FileStamp StampOf(const std::string& path) {
  struct stat st {};
  if (path.empty() || ::stat(path.c_str(), &st) != 0) return {};
  return {true, st.st_dev, st.st_ino, st.st_size, static_cast<std::int64_t>(st.st_mtim.tv_sec),
          static_cast<std::int64_t>(st.st_mtim.tv_nsec)};
}

struct ReadConfig {
  FileStamp pc3, model;
  std::string modelFile;
  PlotterConfig config;
};

std::optional<PlotterConfig> ReadPlotterConfigFresh(const std::string& pc3Path, std::string* error, std::string& modelFile);

}  // namespace

// A batch asks for the same device's media many times a sheet: the files are parsed again only
// when they changed on disk.
std::optional<PlotterConfig> ReadPlotterConfig(const std::string& pc3Path, std::string* error) {
  static std::mutex mutex;
  static std::map<std::string, ReadConfig> read;
  const std::lock_guard lock(mutex);
  const FileStamp pc3 = StampOf(pc3Path);
  if (auto it = read.find(pc3Path); it != read.end() && pc3.exists && it->second.pc3 == pc3 &&
                                     it->second.model == StampOf(it->second.modelFile) &&
                                     LocateModel(pc3Path, it->second.config.modelPath) == it->second.modelFile)
    return it->second.config;
  std::string modelFile;
  std::optional<PlotterConfig> config = ReadPlotterConfigFresh(pc3Path, error, modelFile);
  if (config && pc3.exists && pc3 == StampOf(pc3Path)) read[pc3Path] = {pc3, StampOf(modelFile), modelFile, *config};
  else read.erase(pc3Path);
  return config;
}

namespace {

std::optional<PlotterConfig> ReadPlotterConfigFresh(const std::string& pc3Path, std::string* error, std::string& modelFile) {
  Group root;
  if (!ParseFile(pc3Path, root, error)) return std::nullopt;
  const Group* meta = root.group("meta");
  if (!meta) {
    Fail(error, pc3Path + " holds no plotter description");
    return std::nullopt;
  }
  PlotterConfig config;
  config.path = pc3Path;
  config.modelPath = meta->text("user_defined_model_pathname");
  config.driverPath = meta->text("driver_pathname");
  config.canonicalModelName = meta->text("canonical_model_name");
  config.format = FormatOfModel(config.canonicalModelName);

  if (const Group* custom = root.group("custom")) {
    for (const Group& entry : custom->groups) {
      const std::string name = entry.text("name");
      const std::string* value = entry.value("value");
      if (name == "Hardcopy_Resolution") {
        config.vectorDpi = Number(value).value_or(0);
      } else if (name == "Raster_Limit") {
        config.rasterDpi = Number(value).value_or(0);
      } else if (name == "Background_Color" || name == "RASTER_RGB_Back_Color") {
        if (auto bgr = Integer(value)) config.backgroundBgr = static_cast<std::uint32_t>(*bgr) & 0xFFFFFFu;
      } else if (name == "All_As_Geometry") {
        config.textAsGraphics = IsTrue(value);
      }
    }
  }

  config.media = MediaOf(root);  // a configuration may carry its media itself
  modelFile = LocateModel(pc3Path, config.modelPath);
  if (const std::string& model = modelFile; !model.empty()) {
    Group modelRoot;
    if (ParseFile(model, modelRoot, nullptr)) {
      std::vector<PlotterMedium> media = MediaOf(modelRoot);
      if (!media.empty()) config.media = std::move(media);
    }
  }
  return config;
}

}  // namespace

namespace {

std::optional<PlotStyleTable> ReadPlotStyleTableFresh(const std::string& ctbPath, std::string* error);

}  // namespace

// Every sheet of a batch plots with the same table: it is parsed again only when it changed on disk.
std::optional<PlotStyleTable> ReadPlotStyleTable(const std::string& ctbPath, std::string* error) {
  static std::mutex mutex;
  static std::map<std::string, std::pair<FileStamp, PlotStyleTable>> read;
  const std::lock_guard lock(mutex);
  const FileStamp stamp = StampOf(ctbPath);
  if (auto it = read.find(ctbPath); it != read.end() && stamp.exists && it->second.first == stamp)
    return it->second.second;
  std::optional<PlotStyleTable> table = ReadPlotStyleTableFresh(ctbPath, error);
  if (table && stamp.exists && stamp == StampOf(ctbPath)) read[ctbPath] = {stamp, *table};
  else read.erase(ctbPath);
  return table;
}

namespace {

std::optional<PlotStyleTable> ReadPlotStyleTableFresh(const std::string& ctbPath, std::string* error) {
  Group root;
  if (!ParseFile(ctbPath, root, error)) return std::nullopt;
  const Group* styles = root.group("plot_style");
  if (!styles) {
    Fail(error, ctbPath + " holds no plot styles");
    return std::nullopt;
  }
  PlotStyleTable table;
  table.path = ctbPath;
  if (const Group* weights = root.group("custom_lineweight_table")) {
    for (const auto& [key, value] : weights->values) {
      const auto index = Integer(&key);
      const auto mm = Number(&value);
      if (!index || !mm || *index < 0 || *index > 1000) continue;
      if (table.lineweightsMm.size() <= static_cast<std::size_t>(*index))
        table.lineweightsMm.resize(static_cast<std::size_t>(*index) + 1, 0.0);
      table.lineweightsMm[static_cast<std::size_t>(*index)] = *mm;
    }
  }

  table.styles.resize(255);
  for (std::size_t i = 0; i < table.styles.size(); ++i) table.styles[i].name = "Color_" + std::to_string(i + 1);
  for (const Group& style : styles->groups) {
    const auto index = Integer(&style.name);
    if (!index || *index < 0 || *index >= 255) continue;
    PlotStyleEntry& e = table.styles[static_cast<std::size_t>(*index)];
    if (const std::string* name = style.value("name")) e.name = *name;
    e.color = static_cast<std::int32_t>(Integer(style.value("color")).value_or(-1));
    e.modeColor = static_cast<std::int32_t>(Integer(style.value("mode_color")).value_or(e.color));
    e.colorPolicy = static_cast<int>(Integer(style.value("color_policy")).value_or(1));
    e.screen = static_cast<int>(Integer(style.value("screen")).value_or(100));
    e.lineweightIndex = static_cast<int>(Integer(style.value("lineweight")).value_or(255));
    const auto at = static_cast<std::size_t>(e.lineweightIndex);
    e.objectLineweight =
        e.lineweightIndex < 0 || at >= table.lineweightsMm.size() || table.lineweightsMm[at] <= 0.0;
  }
  return table;
}

}  // namespace

}  // namespace tv::render
