// The generic batch's rows as the review list edits them.
#include <algorithm>
#include <cstdio>
#include <map>

#include "host/editor.h"
#include "host/wrappers.h"
#include "paper/scale_fitting.h"
#include "paper/scale_forms.h"
#include "plot/generic_review.h"
#include "plot/list_command.h"
#include "plot/list_controls.h"
#include "plot/output_paths.h"
#include "plot/plot_job.h"
#include "plot/review_forms.h"
#include "plot/review_list.h"
#include "plot/row_preview.h"
#include "plot/sheet_rows.h"
#include "recognition/sheet_geometry.h"
#include "recognition/sheet_order.h"
#include "recognition/sheet_traversal.h"
#include "reports/list_reports.h"
#include "titleblock/file_naming.h"
#include "titleblock/name_rule.h"

namespace tv::plot {

namespace {

using recognition::Plot_Drawing1;

// A text the user typed at a prompt; Enter keeps `current`, "" (two quotes) empties it.
std::optional<std::string> AskText(std::string_view label, const std::string& current) {
  std::string answer;
  if (host::CurrentEditor().getString("\n" + std::string(label) + " <" + current + ">: ", answer) != host::RTNORM)
    return std::nullopt;
  const std::string_view a = TrimAnswer(answer);
  if (a.empty()) return current;
  if (a == "\"\"") return std::string();
  return std::string(a);
}

std::string Shortest(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%g", value);
  return text;
}

class GenericRows final : public ListRows {
 public:
  explicit GenericRows(Dlg_BPlot1& form) : f_(form) {}

  bool titleBlock() const override { return false; }
  bool dwg() const { return f_.setting.format == settings::kFormatDwg; }

  std::vector<std::string> columns() const override {
    if (dwg()) return {"序 号", "  文 件 名  ", "删 除", "图面尺寸"};
    return {"序 号", "预 览", "  文 件 名  ", "删 除", "纸张尺寸", "打印比例", "图面尺寸", "备 注"};
  }
  std::vector<std::vector<std::string>> cells() const override {
    std::vector<std::vector<std::string>> out;
    for (std::size_t i = 0; i < f_.rows.size(); ++i) {
      const BPlot1Row& r = f_.rows[i];
      if (dwg()) out.push_back({RowNumberCell(i), r.sheet->fileName, "删除", r.sizeText});
      else out.push_back({RowNumberCell(i), "预览", r.sheet->fileName, "删除", r.paperText, r.scaleText, r.sizeText, r.note});
    }
    return out;
  }
  std::size_t size() const override { return f_.rows.size(); }
  settings::PlotSettingRec& setting() override { return f_.setting; }
  std::int32_t& styleIndex() override { return f_.styleIndex; }

  paper::PaperList& papers() override { return f_.job.paperList; }
  std::string paperName(std::size_t row) const override {
    return f_.rows[row].paper ? f_.rows[row].sheet->paperName : std::string();
  }
  void drawnSize(std::size_t row, double& x, double& y) const override {
    x = f_.rows[row].sheet->sizeX;
    y = f_.rows[row].sheet->sizeY;
  }
  void setPaper(std::size_t row, const paper::MyPaper& listed) override {
    BPlot1Row& r = f_.rows[row];
    paper::ApplyPaperToSheet(*r.sheet, listed);
    r.paper = listed;
    r.paperText = paper::PaperDisplayName(listed, true, r.sheet->rotated);
    r.scaleText = paper::ScaleText(r.sheet->scale);
  }
  bool paperAtScale(std::size_t row, double scale, paper::MyPaper& out) override {
    // The typed scale is in drawing units per millimetre, as the column shows it; a block sheet
    // measures its paper in the block's units. No search by proportion: it would move an A-shaped
    // sheet back to the paper of a whole scale and undo the edit.
    const Plot_Drawing1& sheet = *f_.rows[row].sheet;
    out = paper::MyPaper{297, 210, false};
    return sheet.unitFactor > 0.0 && paper::PaperOfSheet(sheet, out, scale / sheet.unitFactor, false);
  }
  void refreshNamesAndNotes() override {
    for (BPlot1Row& r : f_.rows) NoteOfRow(r);
    Rename();
  }

  void setName(std::size_t row, const std::string& name) override {
    manual_[f_.rows[row].sheet] = name;
    f_.rows[row].sheet->fileName = name;
  }
  bool hasCopies() const override { return true; }
  std::int32_t copies(std::size_t row) const override { return f_.rows[row].sheet->copies; }
  void setCopies(std::size_t row, std::int32_t copies) override { f_.rows[row].sheet->copies = copies; }

  void remove(const std::vector<std::size_t>& rows) override {
    for (auto it = rows.rbegin(); it != rows.rend(); ++it) {
      manual_.erase(f_.rows[*it].sheet);
      RemoveSheetRow(f_.rows, f_.job, *it);
    }
    Renumber();
  }

  void OnFormatChanged(bool rebuildPapers) override {
    if (rebuildPapers && !dwg()) paper::RefreshPlotterFiles(f_.job.paperList);
    // Notes follow the format; names stay as they are.
    for (BPlot1Row& r : f_.rows) NoteOfRow(r);
  }
  bool preview(std::size_t row) override { return PreviewRow(f_, row); }

  void scaleAndFilter() override {
    paper::Dlg_Sc_SetW form(f_.setting);
    host::Editor& editor = host::CurrentEditor();
    host::Print("\n" + std::string(form.title()));
    double value = form.defaultScale;
    const std::string scalePrompt = "\n" + std::string(form.scaleLabel()) + " <" + paper::ScaleText(form.defaultScale) +
                                    "> " + std::string(paper::kScaleUnit) + ": ";
    int rc = editor.getReal(scalePrompt, value);
    if (rc == host::RTCAN) return;
    if (rc == host::RTNORM) form.defaultScale = value;
    std::string autoAnswer;
    rc = editor.getKeyword("\n" + std::string(form.autoScaleLabel()) + " [是(Y)/否(N)] <" + (form.autoScale ? "是" : "否") +
                               ">: ",
                           "是(Y) 否(N) _ Yes No", autoAnswer);
    if (rc == host::RTCAN) return;
    if (rc == host::RTNORM) form.autoScale = autoAnswer == "Yes";
    value = form.filterRatio;
    rc = editor.getReal("\n" + std::string(paper::kFilterTextBefore) + " <" + Shortest(form.filterRatio) + "> " +
                            std::string(paper::kFilterTextAfter) + ": ",
                        value);
    if (rc == host::RTCAN) return;
    if (rc == host::RTNORM) form.filterRatio = value;
    if (const paper::FormCheck check = form.check(); !check.ok) {
      editor.messageBox(check.message, kPlotCaption, host::MessageButtons::Ok);
      return;
    }
    const settings::PlotSettingRec before = f_.setting;
    form.store(f_.setting);
    if (before.default_scale != f_.setting.default_scale || before.auto_scale != f_.setting.auto_scale) {
      const bool automatic = f_.setting.auto_scale != 0;
      FixedListScale() = automatic ? std::nullopt : std::optional<double>(f_.setting.default_scale);
      RecomputeAll(f_, automatic ? paper::ScaleOfSheets(f_.job.keptSheets, false) : f_.setting.default_scale);
      Rename();
    }
    if (before.filter_ratio != f_.setting.filter_ratio) {
      // Recognition filters by the drawing's record: it sees the list's ratio for this pass only.
      double& stored = settings::CurrentPlotSetting().filter_ratio;
      const double kept = stored;
      stored = f_.setting.filter_ratio;
      const std::size_t count = f_.rows.size();
      recognition::FilterSheets(f_.job);
      stored = kept;
      if (f_.job.keptSheets.size() != count) {
        FillList(f_, true);
        Rename();
        host::RegenDrawing();
      }
    }
  }

  void nameRule() override {
    const std::string drawing = DrawingTitle();
    titleblock::Dlg_Name_Rule form = titleblock::Dlg_Name_Rule::Open(f_.setting, drawing);
    host::Print("\n" + std::string(titleblock::Dlg_Name_Rule::kTitle) + "（回车保留，\"\" 清空）");
    const std::optional<std::string> prefix = AskText("前  缀", form.prefix);
    if (!prefix) return;
    const std::optional<std::string> start = AskText("起始编号", std::to_string(form.start));
    if (!start) return;
    const std::optional<std::string> suffix = AskText("后  缀", form.suffix);
    if (!suffix) return;
    const std::optional<std::string> digits = AskText("编号位数", std::to_string(form.digits));
    if (!digits) return;
    host::Print("\n" + std::string(kSortTypeTitle) + "：");
    for (std::size_t i = 0; i < SortTypeItems().size(); ++i)
      host::Print("\n  " + std::to_string(i + 1) + ". " + SortTypeItems()[i]);
    const std::optional<std::string> order = AskText("排序方式", std::to_string(form.sort_style));
    if (!order) return;
    const std::optional<std::int32_t> startValue = WholeIn(*start, -999999, 999999);
    const std::optional<std::int32_t> digitsValue = WholeIn(*digits, 1, 9);
    const std::optional<std::int32_t> orderValue = WholeIn(*order, 1, 9);
    if (!startValue || !digitsValue || !orderValue) {
      host::Print("\n起始编号应为整数，编号位数和排序方式应在 1 到 9 之间。");
      return;
    }
    form.prefix = *prefix;
    form.start = *startValue;
    form.suffix = *suffix;
    form.digits = *digitsValue;
    form.sort_style = *orderValue;
    host::Print("\n" + form.sample());
    const std::int32_t order_before = f_.setting.sort_style;
    form.ok(f_.setting, drawing);
    if (form.sort_style != order_before) Reorder(form.sort_style);
    manual_.clear();  // a new rule names every row
    Rename();
  }

  void sortType(std::int32_t style) override { Reorder(style); }

 private:
  void Reorder(std::int32_t style) {
    f_.setting.sort_style = style;
    recognition::OrderSheets(f_.job, style);
    FollowSheetOrder(f_.rows, f_.job.keptSheets);
    Renumber();
  }

 public:
  bool run() override { return RunBatch(f_); }
  void paperStatistics(std::int32_t base) override {
    reports::MakePaperStatisticsFromList(f_, static_cast<reports::BaseSize>(base));
  }

 private:
  // The warning of the row's paper for the format; a row without a paper passes silently.
  void NoteOfRow(BPlot1Row& r) const {
    if (!r.paper) return;
    const paper::PaperNote note = paper::PaperSizeNote(*r.paper, f_.setting.format);
    r.note = note.text;
    r.warn = note.warn;
  }
  // Serial names follow the place in the list; the names the user typed stay.
  void Rename() {
    for (std::size_t i = 0; i < f_.rows.size(); ++i) {
      Plot_Drawing1& sheet = *f_.rows[i].sheet;
      const auto typed = manual_.find(&sheet);
      if (typed != manual_.end()) sheet.fileName = typed->second;
      else titleblock::ExpandGenericName(f_.setting, sheet, f_.job.paperList, static_cast<std::int32_t>(i));
    }
  }
  void Renumber() {
    for (std::size_t i = 0; i < f_.rows.size(); ++i)
      recognition::SetMarker(*f_.rows[i].sheet, static_cast<std::int32_t>(i + 1), -1);
    Rename();
  }

  Dlg_BPlot1& f_;
  std::map<const Plot_Drawing1*, std::string> manual_;
};

}  // namespace

bool WorkGenericList(Dlg_BPlot1& form) {
  GenericRows rows(form);
  return WorkReviewList(rows, form.stageTick);
}

}  // namespace tv::plot
