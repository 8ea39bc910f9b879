#pragma once
// Readers of the plotter configuration (.pc3 with its .pmp media file) and of the colour-dependent
// plot style tables (.ctb) the plotting system writes for the host. The plot engine draws with
// what they hold. The files are the host's plain text format: nested groups `name{ ... }`, lines
// `key=value`, texts `key="value` without a closing quote.
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tv::render {

struct PlotterMedium {
  std::string name;        // canonical media name as the PMP lists it ("P_(841.00_x_594.00_MM)")
  std::string localeName;  // display name ("TV_A1", "TV_A1T"); the canonical one when none is listed
  double widthMm = 0, heightMm = 0;                  // media bounds as written (enlarged for rasters)
  double printableLlx = 0, printableLly = 0;         // printable bounds, mm, as written
  double printableUrx = 0, printableUry = 0;
};

struct PlotterConfig {
  std::string path;                 // the .pc3 read
  std::string modelPath;            // user_defined_model_pathname (the .pmp)
  std::string driverPath;           // driver_pathname
  std::string canonicalModelName;   // "pdf", "DWF6_ePlot_for_plotting", "jfif", "png", "DMSXP7595C", "PS10"
  int format = -1;                  // 0 PDF, 1 DWF, 2 JPG, 3 PNG, 4 PLT, 5 EPS, from the model name
  double vectorDpi = 0, rasterDpi = 0;   // as the files carry them (0 when absent)
  std::uint32_t backgroundBgr = 0xFFFFFF; // as the files carry it
  bool textAsGraphics = false;           // as the files carry it
  std::vector<PlotterMedium> media;      // in file order
};

// Reads a .pc3 and the .pmp it names. The .pmp is looked for where the .pc3 says, then by its name
// beside the .pc3 and in "PMP Files" there; a missing or unreadable .pmp leaves `media` empty.
// On failure returns nothing and, when `error` is given, says why.
std::optional<PlotterConfig> ReadPlotterConfig(const std::string& pc3Path, std::string* error = nullptr);

struct PlotStyleEntry {
  std::int32_t color = -1;       // raw color= value: -1 the object's colour, else 0xC3RRGGBB-style
  int lineweightIndex = 0;       // raw lineweight= value, an index into PlotStyleTable::lineweightsMm
  // No pen width of its own: lineweight=255, a value beyond the table, or an entry of 0.0 mm (the
  // plotting system's tables write 0 for "the object's lineweight").
  bool objectLineweight = true;
  std::string name;              // "Color_1" …
  std::int32_t modeColor = -1;   // raw mode_color= value
  int colorPolicy = 1;           // with 4 set the pen colour applies, with 2 set it greys
  int screen = 100;              // percent of ink
};

struct PlotStyleTable {
  std::string path;
  std::vector<PlotStyleEntry> styles;   // 255 entries, ACI 1..255 at index 0..254
  std::vector<double> lineweightsMm;    // the table's lineweight list
};

// Reads a .ctb. On failure returns nothing and, when `error` is given, says why.
std::optional<PlotStyleTable> ReadPlotStyleTable(const std::string& ctbPath, std::string* error = nullptr);

}  // namespace tv::render
