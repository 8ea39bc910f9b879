#pragma once
// Scale and paper of a sheet: how many drawing units one plotted millimetre stands for, which
// paper that gives, the scale a chosen paper implies, and the per-sheet choices the drawing
// remembers between runs.
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "paper/paper.h"
#include "recognition/sheet_records.h"

namespace tv::paper {

using recognition::Plot_Drawing1;
using recognition::SheetJob;

// ---- scale ---------------------------------------------------------------------------------------

// "1:100" for 100, "2:1" for 0.5; empty for scales at or under 1e-05.
std::string ScaleText(double scale);

// The scale a sheet was most likely drawn at: the default scale moved by whole powers of ten until
// the sheet's mean side comes near 500 mm of paper. With `ask`, a result other than the default
// offers to make it the new default (silently, the very first time).
double ScaleOfSheet(const Plot_Drawing1& sheet, bool ask);

// The scale most sheets of the list have; a tie goes to the value met first, and the default
// leads the tally, so an empty list gives the default.
double ScaleOfSheets(const std::vector<Plot_Drawing1*>& sheets, bool ask);

// ---- paper ---------------------------------------------------------------------------------------

// The paper of a sheet at `scale`. With `searchProportion`, a size that is no standard paper is
// replaced by a standard one of the same proportion, preferring one that fits at a whole scale
// near `scale`. False, and `paper` untouched, unless `scale` and the sheet's unitFactor are above 0.
bool PaperOfSheet(const Plot_Drawing1& sheet, MyPaper& paper, double scale, bool searchProportion);

// Gives the sheet this paper: its name, and the smallest scale at which the sheet fits on it.
void ApplyPaperToSheet(Plot_Drawing1& sheet, const MyPaper& paper);

// Called after the papers of a job change, to write the private plotter files for them and make
// the current layout use that plotter. Empty by default.
using PlotterRefresh = std::function<void(const PaperList& papers)>;
void SetPlotterRefresh(PlotterRefresh refresh);

// With `rebuild`, recomputes the job's paper list and every kept sheet's paper name at `scale`
// (a sheet whose paper cannot be found keeps its name). Then, unless the output is DWG, the
// plotter refresh runs, with or without `rebuild`.
void RebuildPapers(SheetJob& job, double scale, bool rebuild, bool searchProportion);
// The plotter refresh alone, for a list of papers built elsewhere.
void RefreshPlotterFiles(const PaperList& papers);

// ---- size limits -----------------------------------------------------------------------------------

inline constexpr std::int32_t kSmallestSide = 50;    // mm
inline constexpr std::int32_t kLargestSide = 5080;   // mm, 200 inches

struct PaperNote {
  std::string text;   // "提示：纸张尺寸过大" / "提示：纸张尺寸过小" / empty
  bool warn = false;  // paint the paper and note cells as warnings
};
// The note column of a row whose paper is `paper`, for output format `format`.
PaperNote PaperSizeNote(const MyPaper& paper, std::int32_t format);

// The checks at the start of a run over every sheet whose paper is in `papers`. A paper side
// under 50 mm asks whether to go on (once); one above 5080 mm stops the run. False ends the run.
bool CheckPaperSizes(const std::vector<Plot_Drawing1*>& sheets, const PaperList& papers, std::int32_t format);
// Only the second check, for papers named by their internal names (the title-block run).
bool CheckPaperCeiling(const std::vector<std::string>& paperNames, const PaperList& papers, std::int32_t format);

// ---- choices remembered in the drawing ---------------------------------------------------------------

// One stored row: the sheet's rectangle and what was chosen for it.
struct InfoRow {
  double minX = 0.0, minY = 0.0, maxX = 0.0, maxY = 0.0;
  double scale = 100.0;
  std::int32_t copies = 1;
  std::string fileName = "1.PDF";
  std::string paperName = "TV_A1";
};

// Blanks become "*?*" and an empty text "<><", so that the text survives as one token.
std::string EncodeXrecordText(const std::string& text);
std::string DecodeXrecordText(const std::string& text);

// The first row whose corners match the sheet's within the point tolerance; -1 when none.
int FindInfoRow(const std::vector<InfoRow>& info, const Plot_Drawing1& sheet);

// Read the stored rows of the working drawing (rows without a paper name are dropped). False when
// the drawing holds no record; `info` is then empty.
bool ReadPaperInfor(std::vector<InfoRow>& info);
bool ReadScInfor(std::vector<InfoRow>& info);
// Store the sheets of the list, followed by the stored rows of sheets not in the list. False when
// the drawing cannot take the record.
bool WritePaperInfor(const std::vector<Plot_Drawing1*>& sheets);
bool WriteScInfor(const std::vector<Plot_Drawing1*>& sheets);

// Applies the stored choices to the sheets: a known paper name is applied as it is; an unknown one
// with a stored scale above 0 adds the paper of that scale to `papers` (`added` then tells that the
// plotter files need writing). Returns how many sheets changed.
int ApplyStoredChoices(const std::vector<Plot_Drawing1*>& sheets, const std::vector<InfoRow>& info, PaperList& papers,
                       bool& added);

}  // namespace tv::paper
