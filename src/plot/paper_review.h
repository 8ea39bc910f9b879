#pragma once
// The review of the paper batch ("批打印至纸张"): one row per sheet with its copies and the medium
// of the chosen printer it goes on, between recognition and printing. The sheets are found as the
// generic file batch finds them; the paper column holds media of the device, not private papers.
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/layout_plot.h"
#include "paper/paper.h"
#include "recognition/sheet_records.h"
#include "settings/plot_setting.h"

namespace tv::plot {

inline constexpr std::string_view kBPlot3Title = "批打印至纸张";

struct BPlot3Row {
  recognition::Plot_Drawing1* sheet = nullptr;
  std::optional<paper::MyPaper> paper;  // the sheet's own paper; unset when it can't be worked out
  bool onDevice = false;                // sheet->paperName is a medium of the device
  std::string paperText;                // " 纸 张 ": the medium as users see it
  std::string sizeText;                 // " 图面尺寸 "
  std::string note;                     // " 备 注 "
};

struct Dlg_BPlot3 {
  recognition::SheetJob job;
  settings::PlotSettingRec setting;  // the form's copy of the drawing's settings
  double scale = 100.0;
  std::vector<BPlot3Row> rows;       // in the order of job.keptSheets
  std::vector<std::string> devices;  // ListDevices: the default printer first
  std::string device;                // the chosen one; empty when there is none
  std::vector<host::DeviceMedium> media;  // its media
  std::int32_t styleIndex = 0;
  bool collate = false;     // "逐份打印"
  bool toPlt = false;       // "输出为PLT"
  std::string pltFolder;    // where the PLT files went last
  bool openFolder = false;  // open the PLT folder at the end
  bool plot_started = false;
  bool cancel_requested = false;
  std::int64_t stageTick = 0;
};

Dlg_BPlot3* PaperReview();
Dlg_BPlot3& NewPaperReview();
void DestroyPaperReview();

// Recognises the sheets into a new paper form, lists the devices and takes the first. Null when
// nothing was found or the user cancelled.
Dlg_BPlot3* RecognisePaperBatch(bool askScale, std::optional<double> scale);
// Orders the sheets when `reorder`, numbers the markers, fills the rows and gives each a medium.
void FillPaperList(Dlg_BPlot3& form, bool reorder);
// Makes `device` the form's device, reads its media and matches every row again. False, nothing
// changed, for a device that isn't listed.
bool ChoosePaperDevice(Dlg_BPlot3& form, const std::string& device);
// The medium of `media` whose size is `a` x `b` in either orientation (to 1 mm); null when none is.
const host::DeviceMedium* MediumOfSize(const std::vector<host::DeviceMedium>& media, double a, double b);
// The row's medium: the device's medium of the sheet's paper size, else the smallest that holds
// the sheet (or the largest), with a note that says so.
void MatchRowMedium(Dlg_BPlot3& form, BPlot3Row& row);
// Gives the row the medium `canonical` of the device.
void SetRowMedium(Dlg_BPlot3& form, BPlot3Row& row, const host::DeviceMedium& medium);

std::vector<std::string> BPlot3Columns();
std::vector<std::vector<std::string>> BPlot3Cells(const Dlg_BPlot3& form);

}  // namespace tv::plot
