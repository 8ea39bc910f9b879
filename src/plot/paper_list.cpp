// The paper batch's rows as the review list edits them: copies, media of the device, deleted rows.
#include <algorithm>
#include <cstdio>

#include "host/editor.h"
#include "host/wrappers.h"
#include "paper/scale_fitting.h"
#include "plot/list_command.h"
#include "plot/paper_job.h"
#include "plot/paper_review.h"
#include "plot/plot_job.h"
#include "plot/review_list.h"
#include "plot/row_preview.h"
#include "plot/sheet_rows.h"
#include "recognition/sheet_geometry.h"
#include "recognition/sheet_order.h"

namespace tv::plot {

namespace {

using recognition::Plot_Drawing1;

std::string Lower(std::string_view text) {
  std::string out(text);
  for (char& c : out)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  return out;
}

std::string SizeText(const host::DeviceMedium& m) {
  char text[64];
  std::snprintf(text, sizeof text, "%.0fx%.0f", m.widthMm, m.heightMm);
  return text;
}

// A medium of the device named by its name, by an ISO A size ("A3") or by its sides ("594x420").
const host::DeviceMedium* TypedMedium(const std::vector<host::DeviceMedium>& media, const std::string& typed) {
  const std::string t = Lower(WithoutBlanks(typed));
  for (const host::DeviceMedium& m : media)
    if (Lower(m.canonical) == t || Lower(m.locale) == t) return &m;
  static const struct {
    const char* name;
    double a, b;
  } kIso[] = {{"a4", 210, 297}, {"a3", 297, 420}, {"a2", 420, 594}, {"a1", 594, 841}, {"a0", 841, 1189}};
  double a = 0, b = 0;
  for (const auto& iso : kIso)
    if (t == iso.name) a = iso.a, b = iso.b;
  if (a == 0) {
    char tail = 0;
    if (std::sscanf(t.c_str(), "%lfx%lf%c", &a, &b, &tail) != 2) return nullptr;
  }
  return MediumOfSize(media, a, b);
}

class PaperRows final : public ListRows {
 public:
  explicit PaperRows(Dlg_BPlot3& form) : f_(form) {}

  bool titleBlock() const override { return false; }
  std::string_view title() const override { return kBPlot3Title; }
  std::vector<ListControl> controls() override { return PaperControls(); }
  Dlg_BPlot3* paperForm() override { return &f_; }

  std::vector<std::string> columns() const override { return BPlot3Columns(); }
  std::vector<std::vector<std::string>> cells() const override { return BPlot3Cells(f_); }
  std::size_t size() const override { return f_.rows.size(); }
  settings::PlotSettingRec& setting() override { return f_.setting; }
  std::int32_t& styleIndex() override { return f_.styleIndex; }

  paper::PaperList& papers() override { return f_.job.paperList; }
  std::string paperName(std::size_t row) const override { return f_.rows[row].sheet->paperName; }
  void drawnSize(std::size_t row, double& x, double& y) const override {
    x = f_.rows[row].sheet->sizeX;
    y = f_.rows[row].sheet->sizeY;
  }
  void setPaper(std::size_t row, const paper::MyPaper& listed) override {
    BPlot3Row& r = f_.rows[row];
    paper::ApplyPaperToSheet(*r.sheet, listed);
    r.paper = listed;
    MatchRowMedium(f_, r);
  }
  bool paperAtScale(std::size_t, double, paper::MyPaper&) override { return false; }
  void refreshNamesAndNotes() override {}

  void setName(std::size_t row, const std::string& name) override { f_.rows[row].sheet->fileName = name; }
  bool hasCopies() const override { return true; }
  std::int32_t copies(std::size_t row) const override { return f_.rows[row].sheet->copies; }
  void setCopies(std::size_t row, std::int32_t copies) override { f_.rows[row].sheet->copies = copies; }

  void remove(const std::vector<std::size_t>& rows) override {
    for (auto it = rows.rbegin(); it != rows.rend(); ++it) RemoveSheetRow(f_.rows, f_.job, *it);
    Renumber();
  }

  void OnFormatChanged(bool) override {}
  bool preview(std::size_t row) override { return PreviewRow(f_, row); }
  void sortType(std::int32_t style) override {
    f_.setting.sort_style = style;
    recognition::OrderSheets(f_.job, style);
    FollowSheetOrder(f_.rows, f_.job.keptSheets);
    Renumber();
  }
  void paperStatistics(std::int32_t) override {}
  bool run() override { return RunBatch(f_); }

 private:
  void Renumber() {
    for (std::size_t i = 0; i < f_.rows.size(); ++i)
      recognition::SetMarker(*f_.rows[i].sheet, static_cast<std::int32_t>(i + 1), -1);
  }

  Dlg_BPlot3& f_;
};

}  // namespace

bool UnifyMedia(Dlg_BPlot3& form, const std::vector<std::size_t>& rows, const std::string& typed) {
  if (rows.empty()) return false;
  if (form.media.empty()) {
    host::Print("\n打印机“" + (form.device.empty() ? std::string("无") : form.device) + "”没有可用的纸张。");
    return false;
  }
  const host::DeviceMedium* chosen = nullptr;
  if (TrimAnswer(typed).empty()) {
    std::vector<std::string> items;
    int current = -1;
    for (std::size_t i = 0; i < form.media.size(); ++i) {
      items.push_back(form.media[i].locale + "  " + SizeText(form.media[i]));
      if (form.media[i].canonical == form.rows[rows.front()].sheet->paperName) current = static_cast<int>(i);
    }
    const bool all = form.rows.size() >= 2 && rows.size() == form.rows.size();
    const std::optional<int> picked =
        host::CurrentEditor().chooseItem(all ? "统 一 修 改 纸 张" : "选  择  纸  张", items, current);
    if (!picked || *picked < 0 || static_cast<std::size_t>(*picked) >= form.media.size()) return false;
    chosen = &form.media[static_cast<std::size_t>(*picked)];
  } else {
    chosen = TypedMedium(form.media, typed);
    if (!chosen) {
      host::Print("\n打印机“" + form.device + "”没有纸张 " + typed + "。");
      return false;
    }
  }
  for (std::size_t row : rows) SetRowMedium(form, form.rows[row], *chosen);
  return true;
}

bool WorkPaperList(Dlg_BPlot3& form) {
  PaperRows rows(form);
  return WorkReviewList(rows, form.stageTick);
}

}  // namespace tv::plot
