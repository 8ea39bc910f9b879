#include "reports/report_rows.h"

#include "paper/scale_fitting.h"
#include "plot/generic_review.h"
#include "plot/output_paths.h"
#include "plot/title_review.h"
#include "titleblock/field_extraction.h"

namespace tv::reports {

namespace {

std::string Trimmed(const std::string& text) {
  const std::size_t first = text.find_first_not_of(' ');
  if (first == std::string::npos) return {};
  return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

}  // namespace

std::vector<ReportRow> RowsOfTitleList(const plot::Dlg_BPlot2& form) {
  std::vector<ReportRow> rows;
  rows.reserve(form.rows.size());
  for (const plot::BPlot2Row& r : form.rows) {
    ReportRow row;
    row.fileName = r.sheet->file_name;
    if (r.paper) {
      row.paper = *r.paper;
      row.paperName = paper::PaperNameOf(*r.paper);
    }
    row.scale = r.sheet->scale;
    row.fields = r.sheet->field_text;
    rows.push_back(std::move(row));
  }
  return rows;
}

std::vector<ReportRow> RowsOfGenericList(const plot::Dlg_BPlot1& form) {
  std::vector<ReportRow> rows;
  rows.reserve(form.rows.size());
  for (const plot::BPlot1Row& r : form.rows) {
    ReportRow row;
    row.fileName = r.sheet->fileName;
    if (r.paper) {
      row.paper = *r.paper;
      row.paperName = paper::PaperNameOf(*r.paper);
    }
    row.scale = r.sheet->scale;
    row.copies = r.sheet->copies;
    rows.push_back(std::move(row));
  }
  return rows;
}

std::string ReportScaleText(double scale) { return paper::ScaleText(scale); }

std::string ReportPaperText(const paper::MyPaper& paper) { return paper::PaperDisplayName(paper, false, false); }

std::string TitleCellText(const std::string& title) { return plot::WithTitleSeparator(title, "  "); }

std::vector<std::string> TitlePieces(const std::string& title) {
  std::vector<std::string> pieces;
  std::string rest = Trimmed(title);
  const std::string mark(titleblock::kLineMark);
  for (std::size_t at; (at = rest.find(mark)) != std::string::npos;) {
    pieces.push_back(Trimmed(rest.substr(0, at)));
    rest = Trimmed(rest.substr(at + mark.size()));
  }
  pieces.push_back(rest);
  return pieces;
}

}  // namespace tv::reports
