#pragma once
// Stamps on the sheets for the time of a plot: the chosen stamps' pictures written to temporary
// files, one raster image per sheet and stamp kind at the sheet's stamp point, and all of them
// erased again when the run ends, so that the drawing keeps none.
#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "host/geometry.h"
#include "host/object_id.h"
#include "settings/plot_setting.h"

namespace tv::signing {

// The four kinds in the order of a run: register, issue, project and completed stamp.
inline constexpr std::size_t kStampKindCount = 4;
inline constexpr std::array<const char*, kStampKindCount> kStampImageKeys{"Temp_Pic1", "Temp_Pic2", "Temp_Pic3",
                                                                          "Temp_Pic4"};
inline constexpr const char* kStampLayerName = "TV_Stamp";
inline constexpr int kStampLayerColor = 118;

// One kind's choice in the settings: whether it plots, and the stamp's name.
struct StampChoice {
  bool on = false;
  std::string name;
};
std::array<StampChoice, kStampKindCount> StampChoices(const settings::PlotSettingRec& setting);
void SetStampChoice(settings::PlotSettingRec& setting, std::size_t kind, const StampChoice& choice);

// PLT and DWG output carry no stamps.
bool FormatTakesStamps(std::int32_t format);

// The stamp options of the settings: "印章随机旋转微小角度" and "印章后置".
bool RandomStampAngle();
bool StampBehind();

// One plot run's stamps.
struct PlotStamps {
  std::string folder;                                   // the temporary folder
  std::array<std::string, kStampKindCount> image_files;  // per kind; empty when not used
  std::vector<ObjectId> inserted;                       // every image inserted so far
};

// `folder` = the system's temporary folder ("Tarvex_Temp"), made when missing and emptied of files.
void PrepareStampFolder(PlotStamps& run);
// Writes the picture of the stamp named `stampName` to the kind's file: the kind's letter A to D
// and the local time as twelve digits, no extension. Nothing when the library has no such stamp.
void WriteStampImage(PlotStamps& run, std::size_t kind, const std::string& stampName);
// Takes "Temp_Pic1" to "Temp_Pic4" out of the image dictionary of the working drawing.
void RemoveStampDictionaryEntries();
// Puts the stamp on a sheet at `position` (the no-position marker: nothing), `scale` drawing units
// a millimetre, turned by `rotation`.
void InsertStamp(PlotStamps& run, std::size_t kind, const std::string& stampName, Point2d position, double scale,
                 double rotation);
// One raster image of `imageFile` centred on `centre`, the definition entered under
// `dictionaryKey` (or the one there already). Null, with a line on the command line, on failure.
ObjectId InsertRasterImage(const std::string& dictionaryKey, const std::string& imageFile, Point2d centre,
                           std::int64_t width, std::int64_t height, double rotation);
// Erases every inserted image and the definitions; the files stay until the next run prepares
// the folder.
void EndPlotStamps(PlotStamps& run);

// The stamps of one run as a scope: the start of the run on construction, the clean-up on
// destruction, so that a failed sheet, a cancel or an exception can't leave stamps behind.
class StampRun {
 public:
  explicit StampRun(const settings::PlotSettingRec& setting);
  ~StampRun();
  StampRun(const StampRun&) = delete;
  StampRun& operator=(const StampRun&) = delete;

  // Before a sheet is plotted: each chosen kind at the sheet's point of that kind.
  void PutOn(const std::array<Point2d, kStampKindCount>& points, double scale, double rotation);

 private:
  PlotStamps run_;
  std::array<StampChoice, kStampKindCount> choices_;
  bool active_ = false;
};

}  // namespace tv::signing
