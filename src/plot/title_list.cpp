// The title-block batch's rows as the review list edits them.
#include <algorithm>
#include <map>

#include "host/editor.h"
#include "paper/scale_fitting.h"
#include "plot/plot_job.h"
#include "plot/review_forms.h"
#include "plot/review_list.h"
#include "plot/list_command.h"
#include "plot/row_preview.h"
#include "plot/title_numbering.h"
#include "plot/title_review.h"
#include "recognition/sheet_geometry.h"
#include "reports/drawn_index.h"
#include "reports/file_list.h"
#include "reports/list_reports.h"

namespace tv::plot {

namespace {

using titleblock::Plot_Drawing2;

// Columns a drawing file has no use for: preview, paper, scale and note.
constexpr std::size_t kPlotOnlyColumns[] = {1, 4, 5, 9};

template <typename Row>
Row WithoutPlotColumns(const Row& row) {
  Row out;
  for (std::size_t c = 0; c < row.size(); ++c)
    if (std::find(std::begin(kPlotOnlyColumns), std::end(kPlotOnlyColumns), c) == std::end(kPlotOnlyColumns))
      out.push_back(row[c]);
  return out;
}

class TitleRows final : public ListRows {
 public:
  explicit TitleRows(Dlg_BPlot2& form) : f_(form) {}

  bool titleBlock() const override { return true; }
  bool dwg() const { return f_.setting.format == settings::kFormatDwg; }

  std::vector<std::string> columns() const override {
    return dwg() ? WithoutPlotColumns(BPlot2Columns()) : BPlot2Columns();
  }
  std::vector<std::vector<std::string>> cells() const override {
    std::vector<std::vector<std::string>> all = BPlot2Cells(f_);
    if (dwg())
      for (auto& row : all) row = WithoutPlotColumns(row);
    return all;
  }
  std::size_t size() const override { return f_.rows.size(); }
  settings::PlotSettingRec& setting() override { return f_.setting; }
  std::int32_t& styleIndex() override { return f_.styleIndex; }

  paper::PaperList& papers() override { return f_.job.paperList; }
  std::string paperName(std::size_t row) const override { return f_.rows[row].paperName; }
  void drawnSize(std::size_t row, double& x, double& y) const override {
    x = f_.rows[row].sheet->width;
    y = f_.rows[row].sheet->height;
  }
  void setPaper(std::size_t row, const paper::MyPaper& listed) override {
    BPlot2Row& r = f_.rows[row];
    Plot_Drawing2& s = *r.sheet;
    r.paper = listed;
    r.paperName = paper::PaperNameOf(listed);
    r.paperText = paper::PaperDisplayName(listed, true, s.portrait);
    // The scale at which the frame fills the paper along its tighter side.
    const double longSide = std::max(s.width, s.height), shortSide = std::min(s.width, s.height);
    if (listed.length > 0 && listed.width > 0) s.scale = std::max(longSide / listed.length, shortSide / listed.width);
    r.scaleText = paper::ScaleText(s.scale);
  }
  bool paperAtScale(std::size_t row, double scale, paper::MyPaper& out) override {
    Plot_Drawing2& s = *f_.rows[row].sheet;
    const double kept = s.scale;
    s.scale = scale;
    paper::MyPaper p{297, 210, false};
    const bool ok = titleblock::SheetPaper(s, p);
    s.scale = kept;
    if (ok) out = p;
    return ok;
  }
  void refreshNamesAndNotes() override {
    Notes();
    for (BPlot2Row& r : f_.rows) {
      const auto typed = manual_.find(r.sheet);
      if (typed != manual_.end()) r.sheet->file_name = typed->second;
      else titleblock::ExpandNameRule(*r.sheet);  // the rule may hold the paper
    }
  }

  void setName(std::size_t row, const std::string& name) override {
    manual_[f_.rows[row].sheet] = name;
    f_.rows[row].sheet->file_name = name;
  }
  bool hasCopies() const override { return false; }
  std::int32_t copies(std::size_t) const override { return 1; }
  void setCopies(std::size_t, std::int32_t) override {}

  void remove(const std::vector<std::size_t>& rows) override {
    for (auto it = rows.rbegin(); it != rows.rend(); ++it) {
      Plot_Drawing2* sheet = f_.rows[*it].sheet;
      recognition::EraseMarker(sheet->rec_id);
      manual_.erase(sheet);
      f_.rows.erase(f_.rows.begin() + static_cast<std::ptrdiff_t>(*it));
      std::erase_if(f_.job.sheets, [sheet](const auto& owned) { return owned.get() == sheet; });
    }
    for (std::size_t i = 0; i < f_.rows.size(); ++i) {
      f_.rows[i].sheet->number = static_cast<std::int32_t>(i + 1);
      recognition::SetMarker(f_.rows[i].sheet->rec_id, f_.rows[i].sheet->number, -1);
    }
  }

  void OnFormatChanged(bool rebuildPapers) override {
    if (rebuildPapers && !dwg()) paper::RefreshPlotterFiles(f_.job.paperList);
    Notes();
  }
  bool preview(std::size_t row) override { return PreviewRow(f_, row); }
  bool run() override { return RunTitleBatch(f_); }
  void makeIndex() override { reports::MakeIndexFromList(f_); }
  void makeFileList() override { reports::MakeFileListFromList(f_); }
  void drawIndex() override { reports::DrawIndexFromList(f_); }
  bool serialNaming(const std::string& typed) override { return EditSerialNaming(typed); }
  bool renumber(const std::string& typed) override {
    std::vector<std::size_t> rows;
    if (typed.empty()) {
      for (std::size_t i = 0; i < f_.rows.size(); ++i) rows.push_back(i);
    } else {
      std::string error;
      rows = ParseRows(typed, f_.rows.size(), error);
      if (rows.empty()) {
        host::Print("\n" + error);
        return false;
      }
    }
    const std::optional<titleblock::Dlg_TuHao> numbers = AskRenumbering(rows.size());
    if (!numbers) return false;
    RenumberRows(f_, rows, *numbers);
    refreshNamesAndNotes();
    return true;
  }
  void paperStatistics(std::int32_t base) override {
    reports::MakePaperStatisticsFromList(f_, static_cast<reports::BaseSize>(base));
  }

 private:
  // The warning of the row's paper for the format; a row without a paper passes silently.
  void NoteOfRow(BPlot2Row& r) const {
    if (!r.paper) return;
    const paper::PaperNote note = paper::PaperSizeNote(*r.paper, f_.setting.format);
    r.note = note.text;
    r.warn = note.warn;
  }
  void Notes() {
    for (BPlot2Row& r : f_.rows) NoteOfRow(r);
  }

  Dlg_BPlot2& f_;
  std::map<const Plot_Drawing2*, std::string> manual_;
};

}  // namespace

bool WorkTitleList(Dlg_BPlot2& form) {
  TitleRows rows(form);
  return WorkReviewList(rows, form.stageTick);
}

}  // namespace tv::plot
