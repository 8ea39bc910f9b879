// The paper a sheet needs at a scale, the scale a chosen paper gives it, and the papers of a job.
#include <algorithm>
#include <cmath>
#include <memory>
#include <utility>

#include "host/editor.h"
#include "paper/scale_fitting.h"
#include "paper/scale_fitting_internal.h"
#include "settings/plot_setting.h"

namespace tv::paper {

namespace {

PlotterRefresh& Refresh() {
  static PlotterRefresh refresh;
  return refresh;
}

// A number is whole when it lies within a thousandth of an integer, on either side: a frame drawn
// as 7425 is often stored as 7424.999999999898.
bool IsWhole(double value) { return std::fabs(value - std::round(value)) < 0.001; }

// Of the standard papers with the sheet's proportion, the one at the scale nearest to `scale`;
// a whole scale beats any fractional one. False when no row has the proportion.
bool SearchProportion(double longSide, double a, double b, double scale, MyPaper& paper) {
  PaperList standard;
  BuildStandardPaperList(standard);
  // Counts as fractional and larger than any real difference.
  double best = std::trunc(scale * 1000.0) + 0.1;
  bool found = false;
  for (const auto& row : standard) {
    if (!row || row->length <= 0 || row->width <= 0) continue;
    if (std::fabs(a / b - static_cast<double>(row->length) / row->width) > 0.002) continue;
    const double d = std::fabs(scale - longSide / row->length);
    const bool dWhole = IsWhole(d), bestWhole = IsWhole(best);
    bool take = false;
    if (dWhole && !bestWhole)
      take = true;
    else if (dWhole == bestWhole)
      take = d < best;
    if (!take) continue;
    paper.length = row->length;
    paper.width = row->width;
    paper.standard = true;
    best = d;
    found = true;
  }
  return found;
}

}  // namespace

bool PaperOfSheet(const Plot_Drawing1& sheet, MyPaper& paper, double scale, bool searchProportion) {
  if (!(scale > 0.0) || !(sheet.unitFactor > 0.0)) return false;
  const double longSide = std::max(sheet.sizeX, sheet.sizeY);
  const double shortSide = std::min(sheet.sizeX, sheet.sizeY);
  const double a = std::max(longSide / scale / sheet.unitFactor, 1.0);
  const double b = std::max(shortSide / scale / sheet.unitFactor, 1.0);
  paper.length = internal::TruncateSide(a + 0.5);
  paper.width = internal::TruncateSide(b + 0.5);
  paper.standard = false;
  NormalizePaperSize(paper);
  if (!paper.standard && searchProportion) SearchProportion(longSide / sheet.unitFactor, a, b, scale, paper);
  return true;
}

void ApplyPaperToSheet(Plot_Drawing1& sheet, const MyPaper& paper) {
  sheet.paperName = PaperNameOf(paper);
  sheet.scale = 100.0;
  const double side1 = sheet.rotated ? paper.width : paper.length;
  const double side2 = sheet.rotated ? paper.length : paper.width;
  if (side1 <= 0.0 || side2 <= 0.0) return;
  // The larger ratio, so that the sheet always fits the paper.
  sheet.scale = std::max(sheet.sizeX / side1, sheet.sizeY / side2);
}

void SetPlotterRefresh(PlotterRefresh refresh) { Refresh() = std::move(refresh); }

void RebuildPapers(SheetJob& job, double scale, bool rebuild, bool searchProportion) {
  if (rebuild) {
    job.paperList.clear();
    BuildStandardPaperList(job.paperList);
    for (Plot_Drawing1* sheet : job.keptSheets) {
      if (!sheet) continue;
      MyPaper paper{297, 210, false};
      if (!PaperOfSheet(*sheet, paper, scale, searchProportion)) continue;  // keeps its former paper
      AppendPaper(job.paperList, paper);
      sheet->paperName = PaperNameOf(paper);
    }
    RemoveDuplicatePapers(job.paperList);
  }
  RefreshPlotterFiles(job.paperList);
}

void RefreshPlotterFiles(const PaperList& papers) {
  if (settings::CurrentPlotSetting().format != settings::kFormatDwg && Refresh()) Refresh()(papers);
}

// ---- size limits -----------------------------------------------------------------------------------

namespace {

constexpr std::string_view kTooSmall =
    "有纸张尺寸过小，小于 50 x 50 mm。\n\n可能打印比例有误，或者选择的打印范围有误。\n\n是否继续 ?";
constexpr std::string_view kTooBig = "有纸张尺寸过大，已超过 5080 mm (即200英寸)。\n\n请检查是否打印比例有误。\n\n打印退出 !";

bool IsTooSmall(const MyPaper& p) { return p.length < kSmallestSide || p.width < kSmallestSide; }
bool IsTooBig(const MyPaper& p) { return p.length > kLargestSide || p.width > kLargestSide; }

}  // namespace

PaperNote PaperSizeNote(const MyPaper& paper, std::int32_t format) {
  const bool dwg = format == settings::kFormatDwg, dwf = format == settings::kFormatDwf;
  if (!dwg && !dwf && IsTooBig(paper)) return {"提示：纸张尺寸过大", true};
  if (!dwg && IsTooSmall(paper)) return {"提示：纸张尺寸过小", true};
  return {};
}

bool CheckPaperSizes(const std::vector<Plot_Drawing1*>& sheets, const PaperList& papers, std::int32_t format) {
  if (format == settings::kFormatDwg) return true;
  for (const Plot_Drawing1* sheet : sheets) {
    if (!sheet) continue;
    const MyPaper* paper = FindPaperByName(papers, sheet->paperName);
    if (!paper || !IsTooSmall(*paper)) continue;
    const auto answer = host::HasEditor()
                            ? host::CurrentEditor().messageBox(kTooSmall, internal::kCaption, host::MessageButtons::YesNo)
                            : host::MessageAnswer::No;
    if (answer != host::MessageAnswer::Yes) return false;
    break;  // asked once per run
  }
  std::vector<std::string> names;
  for (const Plot_Drawing1* sheet : sheets)
    if (sheet) names.push_back(sheet->paperName);
  return CheckPaperCeiling(names, papers, format);
}

bool CheckPaperCeiling(const std::vector<std::string>& paperNames, const PaperList& papers, std::int32_t format) {
  if (format == settings::kFormatDwg || format == settings::kFormatDwf) return true;
  for (const std::string& name : paperNames) {
    const MyPaper* paper = FindPaperByName(papers, name);
    if (!paper || !IsTooBig(*paper)) continue;
    if (host::HasEditor()) host::CurrentEditor().messageBox(kTooBig, internal::kCaption, host::MessageButtons::Ok);
    return false;
  }
  return true;
}

}  // namespace tv::paper
