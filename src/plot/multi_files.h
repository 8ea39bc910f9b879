#pragma once
// The list of drawings of a multi-file run, each with its own choices, and the record that keeps
// those choices from one use to the next ("MutiFiels.tmp" in the data folder, spelled so on
// purpose). A run over several documents keeps all its state here and in the settings, never in a
// form, because control has to survive each document switch.
#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace tv::settings {
struct PlotSettingRec;
}

namespace tv::plot {

inline constexpr const char* kMultiFilesName = "MutiFiels.tmp";
inline constexpr std::int32_t kMultiFilesVersion = 20260101;
inline constexpr std::size_t kMultiFilesMaxRows = 50;

// One drawing of the list, with the choices it is plotted with.
struct Single_Dwg {
  std::int32_t number = 0;
  std::string path;
  std::string name;
  std::int32_t sort_order = 1;
  double scale = 100.0;
  std::int32_t auto_scale = 0;
  std::int32_t margin = 0;
  std::int32_t plot_signatures = 0;
  std::int32_t stamp_on = 0;
  std::array<std::int32_t, 5> flags{};  // the further flags and style fields of the settings
  double filter_ratio = 0.0;
  std::int32_t paper_mode = 1;  // 1-5 A4..A0, 6 by the plot scale, 7 by the frame
  std::int32_t style_index = 0;
  std::int32_t range = 0;  // 0 model, 1 layouts, 2 both
  std::int32_t order_mode = 0;
  std::int32_t last_flag = 0;

  bool operator==(const Single_Dwg&) const = default;
};

// A new row with the choices of `rec` (the defaults when there are no settings).
Single_Dwg NewRow(const settings::PlotSettingRec* rec);

// Where the record lies: the data folder's MutiFiels.tmp.
std::string MultiFilesPath();

// The record's text and back. Reading gives no rows for a text that doesn't hold a whole record.
std::string MultiFileRowsText(const std::vector<Single_Dwg>& current, const std::vector<Single_Dwg>& stored);
std::vector<Single_Dwg> ParseMultiFileRows(const std::string& text);

// Reads the record; a missing or unreadable file gives an empty store.
void LoadMultiFileRows(std::vector<Single_Dwg>& store, const std::string& file = MultiFilesPath());
// Writes the current rows, then the stored ones not among them, each path once (case aside), at
// most 50: the most recent choices win. False when the file can't be written.
bool SaveMultiFileRows(const std::vector<Single_Dwg>& current, const std::vector<Single_Dwg>& store,
                       const std::string& file = MultiFilesPath());
// Copies the choices (sort_order on) of the stored row with the same path into `row`; false when
// the store has none.
bool ApplyStoredRow(const std::vector<Single_Dwg>& store, Single_Dwg& row);

// Whether a name counts as a drawing of the list: upper-cased it holds ".DWG" and it has a
// folder part.
bool CountsAsDrawing(const std::string& name);
// Appends a row for each dropped file and for each counting file of a dropped folder (walked
// recursively, in name order), with the stored choices; a path already listed stands once.
void AddFiles(std::vector<Single_Dwg>& rows, const std::vector<std::string>& files,
              const std::vector<Single_Dwg>& store, const settings::PlotSettingRec* rec);

}  // namespace tv::plot
