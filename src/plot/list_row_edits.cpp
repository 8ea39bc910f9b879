#include "plot/list_row_edits.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "host/editor.h"
#include "paper/new_paper_form.h"
#include "paper/scale_fitting.h"
#include "paper/scale_forms.h"
#include "plot/list_command.h"
#include "plot/paper_choice.h"
#include "plot/plot_job.h"
#include "titleblock/file_name_form.h"

namespace tv::plot {

namespace {

std::optional<double> Real(std::string_view text) {
  text = TrimAnswer(text);
  double value = 0.0;
  const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (ec != std::errc() || end != text.data() + text.size() || !std::isfinite(value)) return std::nullopt;
  return value;
}

// "50" and "1:50" are 50 drawing units a millimetre; "2:1" is 0.5.
std::optional<double> ScaleOfText(std::string_view typed) {
  std::string text(typed);
  for (std::size_t at = 0; (at = text.find("：", at)) != std::string::npos;) text.replace(at, 3, ":");
  const std::size_t colon = text.find(':');
  if (colon == std::string::npos) return Real(text);
  const std::optional<double> paperPart = Real(std::string_view(text).substr(0, colon));
  const std::optional<double> drawnPart = Real(std::string_view(text).substr(colon + 1));
  if (!paperPart || !drawnPart || *paperPart <= 0.0) return std::nullopt;
  return *drawnPart / *paperPart;
}

void Say(std::string_view text) { host::Print("\n" + std::string(text)); }
void Box(std::string_view text) { host::CurrentEditor().messageBox(text, kPlotCaption, host::MessageButtons::Ok); }

}  // namespace

bool RowEdits::Rename(const std::vector<std::size_t>& rows, const std::string& typed) {
  titleblock::Dlg_FileName form;
  form.name = typed;
  std::string stem, message;
  if (!form.ok(stem, message)) {
    Box(message);
    return false;
  }
  if (rows.size() == 1) {
    rows_.setName(rows.front(), stem);
    return true;
  }
  // Several rows at once: the stem with a running number, as the batch numbers its names.
  const settings::PlotSettingRec& s = rows_.setting();
  for (std::size_t k = 0; k < rows.size(); ++k)
    rows_.setName(rows[k], titleblock::Dlg_FileName::UnifiedName(stem, s.name_start, s.name_digits, k));
  return true;
}

std::optional<paper::MyPaper> RowEdits::NewPaper(std::optional<PaperRequest> typed) {
  paper::Dlg_New_Paper form;
  host::Editor& editor = host::CurrentEditor();
  if (typed) {
    form.length = typed->sideA;
    form.width = typed->sideB;
  } else {
    Say(std::string(paper::Dlg_New_Paper::kTitle) + " " + std::string(paper::Dlg_New_Paper::kSizeLabel));
    for (double* side : {&form.length, &form.width}) {
      double value = *side;
      const int rc = editor.getReal(side == &form.length ? "\n长 (mm): " : "\n宽 (mm): ", value);
      if (rc == host::RTCAN) return std::nullopt;
      if (rc == host::RTNORM) *side = value;
    }
  }
  std::string message;
  paper::Dlg_New_Paper::Field focus{};
  const bool ok = form.Accept(
      [&](std::string_view question) {
        return editor.messageBox(question, paper::Dlg_New_Paper::kTitle, host::MessageButtons::YesNo) ==
               host::MessageAnswer::Yes;
      },
      message, focus);
  if (!ok) {
    if (!message.empty()) Box(message);
    return std::nullopt;
  }
  return paper::MyPaper{std::max(form.customLength, form.customWidth), std::min(form.customLength, form.customWidth),
                        false};
}

bool RowEdits::UnifyPaper(const std::vector<std::size_t>& rows, const std::string& typed) {
  std::vector<std::string> rowPapers;
  for (std::size_t i = 0; i < rows_.size(); ++i) rowPapers.push_back(rows_.paperName(i));
  const PaperChoiceList list = PaperChoices(rowPapers, rows_.papers(), rows_.paperName(rows.front()));
  std::optional<PaperRequest> request;
  std::optional<paper::MyPaper> fixed;  // one paper for every row
  // A bare number is the entry of the choice list as it is shown, from 1.
  std::optional<int> chosen;
  if (!typed.empty() && typed.find_first_not_of("0123456789") == std::string::npos && typed.size() <= 3) {
    const int n = std::stoi(typed);
    if (n < 1 || n > static_cast<int>(list.items.size())) {
      Say("纸张列表没有第 " + typed + " 项（1 到 " + std::to_string(list.items.size()) + "）。");
      return false;
    }
    chosen = n - 1;
  }
  if (typed.empty() || chosen) {
    if (!chosen)
      chosen = host::CurrentEditor().chooseItem(UnifyPaperTitle(rows.size(), rows_.size()), list.items, list.preselected);
    if (!chosen) return false;
    const auto k = static_cast<std::size_t>(*chosen);
    if (k + 1 == list.items.size()) {
      fixed = NewPaper(std::nullopt);
      if (!fixed) return false;
    } else if (k >= kFixedPaperChoices) {
      fixed = list.customPapers[k - kFixedPaperChoices];
    } else {
      request = PaperRequest{static_cast<int>(k), 0, 0};
    }
  } else {
    request = ParsePaperText(typed);
    if (!request) {
      Say("无法识别的纸张：" + typed + "（应如 A2、A3加长 或 594x420）。");
      return false;
    }
    if (request->choice < 0) {
      fixed = NewPaper(request);
      if (!fixed) return false;
      request.reset();
    }
  }
  // Every row's paper first, so that a paper that can't be made leaves every row as it was.
  std::vector<paper::MyPaper> wanted;
  for (std::size_t row : rows) {
    if (fixed) {
      wanted.push_back(*fixed);
      continue;
    }
    double x = 0, y = 0;
    rows_.drawnSize(row, x, y);
    const std::optional<paper::MyPaper> p = PaperForRequest(*request, x, y);
    if (!p) {
      Say("第 " + std::to_string(row + 1) + " 行无法使用该纸张。");
      return false;
    }
    wanted.push_back(*p);
  }
  bool anyAdded = false;
  for (std::size_t k = 0; k < rows.size(); ++k) {
    bool added = false;
    const paper::MyPaper* listed = paper::AddPaper(rows_.papers(), wanted[k].length, wanted[k].width, added);
    anyAdded = anyAdded || added;
    if (listed && paper::PaperNameOf(*listed) != rows_.paperName(rows[k])) rows_.setPaper(rows[k], *listed);
  }
  if (anyAdded && rows_.setting().format != settings::kFormatDwg) paper::RefreshPlotterFiles(rows_.papers());
  rows_.refreshNamesAndNotes();
  return true;
}

bool RowEdits::UnifyScale(const std::vector<std::size_t>& rows, const std::string& typed) {
  const bool unified = rows_.size() >= 2 && rows.size() == rows_.size();
  paper::Dlg_Sc_Set form(100.0, unified);
  if (typed.empty()) {
    double value = 0;
    const int rc = host::CurrentEditor().getReal(
        "\n" + std::string(form.title()) + " " + std::string(paper::kScaleLabel) + " ? " + std::string(paper::kScaleUnit) +
            ": ",
        value);
    if (rc != host::RTNORM) return false;
    form.scale = value;
  } else {
    const std::optional<double> value = ScaleOfText(typed);
    if (!value) {
      Say("无法识别的打印比例：" + typed + "（应如 50 或 1:50）。");
      return false;
    }
    form.scale = *value;
  }
  if (const paper::FormCheck check = form.check(); !check.ok) {
    Box(check.message);
    return false;
  }
  std::vector<paper::MyPaper> wanted(rows.size());
  for (std::size_t k = 0; k < rows.size(); ++k)
    if (!rows_.paperAtScale(rows[k], form.scale, wanted[k])) {
      Say("第 " + std::to_string(rows[k] + 1) + " 行在该比例下无法确定纸张。");
      return false;
    }
  bool anyAdded = false;
  for (std::size_t k = 0; k < rows.size(); ++k) {
    bool added = false;
    const paper::MyPaper* listed = paper::AddPaper(rows_.papers(), wanted[k].length, wanted[k].width, added);
    anyAdded = anyAdded || added;
    if (listed) rows_.setPaper(rows[k], *listed);
  }
  if (anyAdded && rows_.setting().format != settings::kFormatDwg) paper::RefreshPlotterFiles(rows_.papers());
  rows_.refreshNamesAndNotes();
  return true;
}

bool RowEdits::UnifyCopies(const std::vector<std::size_t>& rows, const std::string& typed) {
  if (!rows_.hasCopies()) {
    Say("输出到文件时每张图纸生成一个文件，该列表没有打印份数。");
    return false;
  }
  std::int32_t copies = 0;
  if (typed.empty()) {
    std::vector<std::string> items;
    for (int n = 1; n <= 20; ++n) items.push_back(std::to_string(n));
    const bool all = rows_.size() >= 2 && rows.size() == rows_.size();
    const std::optional<int> chosen = host::CurrentEditor().chooseItem(
        all ? "统一设置打印份数" : "打 印 份 数", items, rows_.copies(rows.front()) - 1);
    if (!chosen) return false;
    copies = *chosen + 1;
  } else {
    const std::optional<std::int32_t> value = WholeOfText(typed);
    if (!value) {
      Say("无法识别的打印份数：" + typed + "。");
      return false;
    }
    copies = *value;
  }
  if (copies < 1) {
    Box("打印份数不能小于 1 !");
    return false;
  }
  if (copies > 20) {
    Say("打印份数不能大于 20 !");
    return false;
  }
  for (std::size_t row : rows) rows_.setCopies(row, copies);
  return true;
}

bool RowEdits::Delete(const std::vector<std::size_t>& rows) {
  if (rows.size() >= rows_.size()) {
    Say("不能删除全部图纸；不打印请输入 C 关闭列表。");
    return false;
  }
  rows_.remove(rows);
  return true;
}

std::optional<std::int32_t> WholeOfText(std::string_view text) {
  text = TrimAnswer(text);
  if (!text.empty() && text.front() == '+') text.remove_prefix(1);
  std::int32_t value = 0;
  const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (text.empty() || ec != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

}  // namespace tv::plot
