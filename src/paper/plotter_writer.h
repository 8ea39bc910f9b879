#pragma once
// The private plotter of a job. The host plots only on media its plotter configuration knows, and
// a job needs papers no shipped device has, so the job gets a device of its own: a plotter
// configuration T_PDF.pc3 (T_DWF, T_JPG, T_PNG, T_PLT, T_EPS) whose model file T_PDF.pmp lists
// every paper of the job as a user-defined medium, with the sheet margin built into the media
// bounds. Both are plain text with line feeds, in the ANSI code page, built on the host's own
// driver found on disk.
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "paper/paper.h"

namespace tv::paper {

inline constexpr std::string_view kNoDriverMessage = "未找到AutoCAD内置打印机的驱动文件 !";
inline constexpr std::string_view kNoDriverTitle = "文件执行报错";

// What a write depends on besides the papers.
struct PlotterOptions {
  std::int32_t format = 0;           // 0 PDF, 1 DWF, 2 JPG, 3 PNG, 4 PLT, 5 EPS
  std::int32_t margin = 0;           // mm; above 0 the paper grows, else the printable area shrinks
  std::int32_t red = 255, green = 255, blue = 255;  // background of image output
  std::int32_t vectorStep = 43;      // resolution sliders
  std::int32_t rasterStep = 10;
  std::int32_t imageScaleStep = 10;  // JPG and PNG paper enlargement
  bool textAsGraphics = false;       // "文字转图形"
  double hostVersion = 0;            // major + minor / 10
};

// The options of the current drawing's settings and the configuration. A raster slider above the
// vector slider is lowered to it, in the configuration too.
PlotterOptions CurrentPlotterOptions();

// Dots per inch of a resolution slider step.
std::int32_t DpiOfSlider(std::int32_t step);
// The factor every side and margin of a medium is multiplied by: above 1 for JPG and PNG only,
// so that an image gets that many more pixels.
double EnlargeOf(const PlotterOptions& options);
// The background as the host's files carry it: (blue x 256 + green) x 256 + red.
std::uint32_t BgrOf(const PlotterOptions& options);

// "T_PDF.pc3" … "T_EPS.pc3", and the model files "T_PDF.pmp" …; empty outside 0 to 5.
std::string PrivatePlotterName(std::int32_t format);
std::string PrivateModelName(std::int32_t format);

// One user-defined medium of a model file, in millimetres after margin and enlargement.
struct ModelMedium {
  std::string canonicalName;    // "P_(430.00_x_307.00_MM)"
  std::string localeName;       // the paper's internal name, "T" added for the turned medium
  std::string descriptionName;  // "P_430.00W_x_307.00H_-_(5.00,_5.00)_x_(425.00,_302.00)_=124740.00_MM"
  double width = 0, height = 0;
  double inset = 0;             // printable bounds are inset..width-inset, inset..height-inset
  double printableArea = 0;
};

// The media of a paper list in file order: each paper across, then turned unless it is square.
std::vector<ModelMedium> ModelMediaOf(const PaperList& papers, const PlotterOptions& options);

// The texts of the two files, UTF-8; the writers put them into the ANSI code page.
std::string Pc3Text(const PlotterOptions& options, const std::string& pmpPath, const std::string& hdiPath);
std::string PmpText(const PaperList& papers, const PlotterOptions& options, const std::string& pmpPath,
                    const std::string& hdiPath);

// Write the files with the current options; false when the file could not be written (an old
// file then stays as it was).
bool WritePc3(const std::string& pc3Path, const std::string& pmpPath, const std::string& hdiPath);
bool WritePmp(const PaperList& papers, const std::string& pmpPath, const std::string& hdiPath);

// The folders the private files go to: the first usable of the host's plotter configuration
// folders and of its model file folders.
void FindPlotterFolders(std::string& pc3Folder, std::string& pmpFolder);

// The host driver a format's device is built on: over the ";"-separated folders from the left,
// in each the highest number of the format's range that exists. Empty when none does.
std::string FindPlotterDriver(std::int32_t format, const std::string& driverFolders);

// Writes the private plotter of the current format for `papers`: finds the folders, removes
// copies of the device in sub-folders of the configuration folder, finds the driver, writes both
// files, records the paths in the saved plotter and marks the plotter ready. Without a driver it
// says so and returns false.
bool WritePrivatePlotter(const PaperList& papers);

// Whether a private plotter was written in this process.
bool PrivatePlotterReady();
void SetPrivatePlotterReady(bool ready);

// Gives `folder` the host's standard device of a format ("DWG To PDF.pc3", "DWF6 ePlot.pc3",
// "PublishToWeb JPG.pc3", "PublishToWeb PNG.pc3") by copying a device of a known similar name,
// never overwriting. True when the device is there afterwards. Not needed by a run.
bool EnsureBuiltinPc3(const std::string& folder, std::int32_t format);

}  // namespace tv::paper
