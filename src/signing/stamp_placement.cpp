#include "signing/stamp_placement.h"

#include <cmath>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <numbers>
#include <system_error>

#include "host/editor.h"
#include "host/raster_images.h"
#include "host/wrappers.h"
#include "settings/config.h"
#include "settings/folders.h"
#include "signing/stamp_library.h"
#include "titleblock/title_sheets.h"

namespace tv::signing {

namespace fs = std::filesystem;

namespace {

constexpr std::array<char, kStampKindCount> kKindLetters{'A', 'B', 'C', 'D'};

// "%Y%m%d%H%M%S" without the century: twelve digits.
std::string ShortTimeStamp() {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  char text[32];
  std::strftime(text, sizeof text, "%Y%m%d%H%M%S", &local);
  return std::string(text).substr(2);
}

// The layer "TV_Stamp", made with its colour when missing.
ObjectId StampLayer() {
  bool existed = false;
  const ObjectId layer = host::FindOrAddLayer(kStampLayerName, &existed);
  if (!existed) host::SetLayerColor(layer, kStampLayerColor);
  return layer;
}

// Off, frozen and locked are cleared while the image is appended, and put back after.
class LayerOpen {
 public:
  explicit LayerOpen(ObjectId layer) : layer_(layer) {
    for (std::size_t i = 0; i < kFlags.size(); ++i) {
      saved_[i] = host::GetLayerFlag(layer_, kFlags[i]);
      host::SetLayerFlag(layer_, kFlags[i], false);
    }
  }
  ~LayerOpen() {
    for (std::size_t i = 0; i < kFlags.size(); ++i) host::SetLayerFlag(layer_, kFlags[i], saved_[i]);
  }
  LayerOpen(const LayerOpen&) = delete;
  LayerOpen& operator=(const LayerOpen&) = delete;

 private:
  static constexpr std::array<int, 3> kFlags{host::kLayerOff, host::kLayerFrozen, host::kLayerLocked};
  ObjectId layer_;
  std::array<bool, 3> saved_{};
};

}  // namespace

std::array<StampChoice, kStampKindCount> StampChoices(const settings::PlotSettingRec& s) {
  return {StampChoice{s.stamp_register_on != 0, s.stamp_register_name}, StampChoice{s.stamp_issue_on != 0, s.stamp_issue_name},
          StampChoice{s.stamp_project_on != 0, s.stamp_project_name},
          StampChoice{s.stamp_completed_on != 0, s.stamp_completed_name}};
}

void SetStampChoice(settings::PlotSettingRec& s, std::size_t kind, const StampChoice& c) {
  const std::int32_t on = c.on ? 1 : 0;
  switch (kind) {
    case 0: s.stamp_register_on = on, s.stamp_register_name = c.name; break;
    case 1: s.stamp_issue_on = on, s.stamp_issue_name = c.name; break;
    case 2: s.stamp_project_on = on, s.stamp_project_name = c.name; break;
    case 3: s.stamp_completed_on = on, s.stamp_completed_name = c.name; break;
    default: break;
  }
}

bool FormatTakesStamps(std::int32_t format) {
  return format != settings::kFormatPlt && format != settings::kFormatDwg;
}

bool RandomStampAngle() { return settings::GlobalConfig().stamp_option_a != 0; }
bool StampBehind() { return settings::GlobalConfig().stamp_option_b != 0; }

void PrepareStampFolder(PlotStamps& run) {
  run.folder = settings::TempFolder();
  std::error_code ec;
  fs::create_directories(run.folder, ec);
  // Files only: the folders other runs keep there stay.
  for (const fs::directory_entry& entry : fs::directory_iterator(run.folder, ec))
    if (entry.is_regular_file(ec) || entry.is_symlink(ec)) fs::remove(entry.path(), ec);
}

void WriteStampImage(PlotStamps& run, std::size_t kind, const std::string& stampName) {
  if (kind >= kStampKindCount) return;
  const TV_Stamp* stamp = FindStampByName(GlobalStampLibrary(), stampName);
  if (!stamp) return;
  run.image_files[kind] = run.folder + "/" + kKindLetters[kind] + ShortTimeStamp();
  SaveStampImage(*stamp, run.image_files[kind]);
}

void RemoveStampDictionaryEntries() {
  for (const char* key : kStampImageKeys) host::RemoveImageDefinition(key);
}

void InsertStamp(PlotStamps& run, std::size_t kind, const std::string& stampName, Point2d position, double scale,
                 double rotation) {
  if (kind >= kStampKindCount) return;
  if (std::abs(position.x - titleblock::kNoStampPoint.x) <= kTol &&
      std::abs(position.y - titleblock::kNoStampPoint.y) <= kTol)
    return;
  const TV_Stamp* stamp = FindStampByName(GlobalStampLibrary(), stampName);
  if (!stamp) return;
  // Whole drawing units, as the image's corner is computed from them.
  const auto width = static_cast<std::int64_t>(scale * stamp->width);
  const auto height = static_cast<std::int64_t>(scale * stamp->height);
  const ObjectId id = InsertRasterImage(kStampImageKeys[kind], run.image_files[kind], position, width, height, rotation);
  if (!id.isNull()) run.inserted.push_back(id);
}

ObjectId InsertRasterImage(const std::string& dictionaryKey, const std::string& imageFile, Point2d centre,
                           std::int64_t width, std::int64_t height, double rotation) {
  host::ImageDefinitionFailure why = host::ImageDefinitionFailure::None;
  const ObjectId definition = host::AddImageDefinition(dictionaryKey, imageFile, why);
  if (definition.isNull()) {
    host::Print(why == host::ImageDefinitionFailure::NoDictionary ? "\n Failed，未能生成imageDictionary !\n"
                                                                   : "\n Failed，未能生成ImageDef !\n");
    return {};
  }
  const Point3d lowerLeft{centre.x - static_cast<double>(width / 2), centre.y - static_cast<double>(height / 2), 0};
  ObjectId id;
  {
    const ObjectId layer = StampLayer();
    LayerOpen open(layer);
    id = host::AppendImage(definition, lowerLeft, static_cast<double>(width), static_cast<double>(height), layer);
  }
  if (id.isNull()) {
    host::Print("\n Failed，未能生成AcDbRasterImage !\n");
    return {};
  }
  const Point3d pivot{centre.x, centre.y, 0};
  if (rotation != 0) host::TransformEntity(id, Matrix3d::rotation(rotation, Vector3d::zAxis(), pivot));
  // A few degrees either way, different for each stamp, so that stamps don't look printed.
  if (RandomStampAngle()) {
    const double degrees = static_cast<double>(std::rand() % 30 - 15);
    host::TransformEntity(id, Matrix3d::rotation(degrees / 180.0 * std::numbers::pi, Vector3d::zAxis(), pivot));
  }
  host::MoveInDrawOrder(id, !StampBehind());
  return id;
}

void EndPlotStamps(PlotStamps& run) {
  if (!run.inserted.empty()) host::EraseEntities(run.inserted);
  run.inserted.clear();
  // The definitions go too, and the dictionary a drawing without pictures got for them: the
  // drawing keeps nothing of the run.
  RemoveStampDictionaryEntries();
  host::DropEmptyImageDictionary();
  run.image_files = {};
}

StampRun::StampRun(const settings::PlotSettingRec& setting) : choices_(StampChoices(setting)) {
  RemoveStampDictionaryEntries();  // what an earlier run may have left
  if (!FormatTakesStamps(setting.format)) return;
  PrepareStampFolder(run_);
  if (setting.plot_stamps == 0) return;
  for (std::size_t kind = 0; kind < kStampKindCount; ++kind) {
    if (!choices_[kind].on) continue;
    WriteStampImage(run_, kind, choices_[kind].name);
    active_ = true;
  }
  if (!active_) return;
  // The frames of the images must not print.
  settings::PlotSettingRec& stored = settings::CurrentPlotSetting();
  if (host::GetIntVar("IMAGEFRAME", 1) != 0 || stored.stamp_authorised == 0) {
    host::SetVar("IMAGEFRAME", std::int32_t{1});
    host::SetVar("IMAGEFRAME", std::int32_t{0});
    stored.stamp_authorised = 1;
  }
}

StampRun::~StampRun() { EndPlotStamps(run_); }

void StampRun::PutOn(const std::array<Point2d, kStampKindCount>& points, double scale, double rotation) {
  if (!active_) return;
  for (std::size_t kind = 0; kind < kStampKindCount; ++kind)
    if (choices_[kind].on) InsertStamp(run_, kind, choices_[kind].name, points[kind], scale, rotation);
}

}  // namespace tv::signing
