// Paper values: snapping onto the catalogue, internal names, and the paper lists of a job.
#include "paper/paper.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>

#include "paper/paper_tables_internal.h"

namespace tv::paper {
namespace {

using internal::PaperSize;

// Whole millimetres, cut towards zero, kept inside the 32-bit range so that nonsense input
// cannot overflow.
std::int32_t ToSide(double value) {
  if (!(value == value)) return 0;  // NaN
  constexpr double kMax = std::numeric_limits<std::int32_t>::max();
  constexpr double kMin = std::numeric_limits<std::int32_t>::min();
  return static_cast<std::int32_t>(std::clamp(std::trunc(value), kMin, kMax));
}

bool TakeRow(MyPaper& paper, std::span<const PaperSize> rows, double tolerance, double absolute) {
  for (const PaperSize& row : rows) {
    const double dl = std::fabs(static_cast<double>(paper.length) - row.length);
    const double dw = std::fabs(static_cast<double>(paper.width) - row.width);
    if (dl / row.length < tolerance && dw / row.width < tolerance && dl < absolute && dw < absolute) {
      paper.length = row.length;
      paper.width = row.width;
      paper.standard = true;
      return true;
    }
  }
  return false;
}

// A width close to a series width becomes that width, the length keeping the proportion. Unlike
// the row tests, the gap is measured on the sheet's own width and the bound counts as inside: a
// sheet drawn 300 mm wide (exactly 1 % over A3's 297) is still meant as A3 width.
void SnapWidth(MyPaper& paper, std::int32_t value, double tolerance) {
  if (paper.width <= 0) return;
  const double gap = std::fabs(static_cast<double>(paper.width) - value) / paper.width;
  if (gap <= tolerance) {
    paper.length = ToSide(static_cast<double>(value) / paper.width * paper.length + 0.5);
    paper.width = value;
  }
}

MyPaper LongSideFirst(double a, double b) {
  MyPaper paper;
  paper.length = ToSide(std::max(a, b));
  paper.width = ToSide(std::min(a, b));
  return paper;
}

}  // namespace

void NormalizePaperSize(MyPaper& paper) {
  paper.standard = false;
  constexpr double kNoBound = std::numeric_limits<double>::infinity();
  if (TakeRow(paper, internal::SnapRowsA(), 0.01, kNoBound)) return;
  if (TakeRow(paper, internal::SnapRowsB(), 0.003, 4.0)) return;
  for (std::int32_t value : {148, 210, 297, 420, 594, 841}) SnapWidth(paper, value, 0.01);
  for (std::int32_t value : {176, 250, 353, 500, 707, 1000}) SnapWidth(paper, value, 0.003);
  TakeRow(paper, internal::SnapRowsLengthened(), 0.006, 6.0);
}

std::string PaperNameOf(const MyPaper& paper) {
  for (const internal::NamedSize& row : internal::PaperNameRows()) {
    if (row.length == paper.length && row.width == paper.width) return std::string(row.name);
  }
  for (const internal::WidthBase& row : internal::WidthBaseRows()) {
    if (row.width == paper.width) return std::string(row.base) + "_Plus_" + std::to_string(paper.length);
  }
  return "TV_" + std::to_string(paper.length) + "x" + std::to_string(paper.width);
}

MyPaper* AddPaper(PaperList& list, double a, double b, bool& added) {
  MyPaper paper = LongSideFirst(a, b);
  NormalizePaperSize(paper);
  for (const auto& row : list) {
    if (row && row->length == paper.length && row->width == paper.width) {
      added = false;
      return row.get();
    }
  }
  added = true;
  list.push_back(std::make_unique<MyPaper>(paper));
  return list.back().get();
}

MyPaper* AppendPaper(PaperList& list, MyPaper paper) {
  NormalizePaperSize(paper);
  list.push_back(std::make_unique<MyPaper>(paper));
  return list.back().get();
}

MyPaper* FindPaperByName(const PaperList& list, const std::string& name) {
  for (const auto& row : list) {
    if (row && PaperNameOf(*row) == name) return row.get();
  }
  return nullptr;
}

void RemoveDuplicatePapers(PaperList& list) {
  PaperList kept;
  kept.reserve(list.size());
  for (auto& row : list) {
    if (!row) continue;
    const bool seen = std::any_of(kept.begin(), kept.end(), [&](const auto& k) {
      return k->length == row->length && k->width == row->width;
    });
    if (!seen) kept.push_back(std::move(row));
  }
  list = std::move(kept);
}

void BuildStandardPaperList(PaperList& list) {
  for (const PaperSize& row : internal::StandardPaperRows()) {
    list.push_back(std::make_unique<MyPaper>(MyPaper{row.length, row.width, true}));
  }
}

bool PaperForChoice(std::int32_t choice, double drawnX, double drawnY, std::int32_t& outLength,
                    std::int32_t& outWidth) {
  static constexpr PaperSize kPlain[] = {{297, 210}, {420, 297}, {594, 420}, {841, 594}, {1189, 841}};
  if (choice < 0 || choice > 9) return false;
  double length = kPlain[choice % 5].length;
  const double width = kPlain[choice % 5].width;
  if (choice >= 5) {
    length = 297;  // kept when the drawn sheet has no extent
    const double shortSide = std::min(drawnX, drawnY);
    if (shortSide > 0) length = ToSide(std::max(drawnX, drawnY) / shortSide * width + 0.5);
  }
  MyPaper paper = LongSideFirst(length, width);
  NormalizePaperSize(paper);
  outLength = paper.length;
  outWidth = paper.width;
  return true;
}

}  // namespace tv::paper
