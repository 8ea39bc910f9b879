#include "plot/title_review.h"

#include <algorithm>
#include <memory>
#include <set>

#include "host/command_prologue.h"
#include "host/editor.h"
#include "host/notices.h"
#include "host/wrappers.h"
#include "paper/scale_fitting.h"
#include "plot/output_paths.h"
#include "plot/review_forms.h"
#include "plot/stored_choices.h"
#include "settings/config.h"
#include "titleblock/field_extraction.h"
#include "titleblock/file_naming.h"
#include "titleblock/tk_library.h"

namespace tv::plot {

namespace {

std::unique_ptr<Dlg_BPlot2>& Slot() {
  static std::unique_ptr<Dlg_BPlot2> form;
  return form;
}

std::string FoldCase(std::string text) {
  for (char& c : text)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  return text;
}

// A field as it shows: its line marks as the title separator.
std::string Shown(const std::string& field) {
  return WithTitleSeparator(field, titleblock::GlobalTkLibrary().TitleSeparator);
}

// Once per drawing, however often its list is filled: the names show "_" where its text was garbled.
void TellUnreadableNames(const Dlg_BPlot2& form) {
  static std::set<std::string> told;
  const bool garbled = std::any_of(form.rows.begin(), form.rows.end(),
                                   [](const BPlot2Row& row) { return titleblock::NameHasUnreadableText(*row.sheet); });
  if (!garbled || !host::HasEditor()) return;
  const std::string drawing = host::CurrentEditor().documentPath();
  if (told.insert(drawing).second) host::Notify(UnreadableNamesMessage(drawing));
}

}  // namespace

std::string UnreadableNamesMessage(const std::string& drawing) {
  return "\n图纸 < " + drawing + " > 中有无法识别的文字（编码有误），文件名中以“_”代替。";
}

Dlg_BPlot2* TitleReview() { return Slot().get(); }

Dlg_BPlot2& NewTitleReview() {
  DestroyReviewForms();
  Slot() = std::make_unique<Dlg_BPlot2>();
  Slot()->setting = settings::CurrentPlotSetting();
  return *Slot();
}

void DestroyTitleReview() { Slot().reset(); }

Dlg_BPlot2* RecogniseTitleBatch() {
  host::ReadLayerStates();
  titleblock::RefreshLiveLayers();
  Dlg_BPlot2& form = NewTitleReview();
  titleblock::ScanTitleBlocks(form.job.sheets);
  if (form.job.sheets.empty()) {
    DestroyTitleReview();
    return nullptr;
  }
  SetPlotStamp();
  const std::int64_t tick = host::StageClock();
  FillTitleList(form);
  ApplyStoredChoices(form);
  form.stageTick = host::StageTimer(tick, "更新对话框");
  return &form;
}

void FillTitleList(Dlg_BPlot2& form) {
  form.job.paperList.clear();
  paper::BuildStandardPaperList(form.job.paperList);
  form.rows.clear();
  form.rows.reserve(form.job.sheets.size());
  for (const auto& sheet : form.job.sheets) {
    BPlot2Row row;
    row.sheet = sheet.get();
    paper::MyPaper p{297, 210, false};
    if (titleblock::SheetPaper(*sheet, p)) {
      bool added = false;
      const paper::MyPaper* listed = paper::AddPaper(form.job.paperList, p.length, p.width, added);
      if (listed) {
        row.paper = *listed;
        row.paperName = paper::PaperNameOf(*listed);
        row.paperText = paper::PaperDisplayName(*listed, true, sheet->portrait);
        const paper::PaperNote note = paper::PaperSizeNote(*listed, form.setting.format);
        row.note = note.text;
        row.warn = note.warn;
      }
    }
    row.scaleText = paper::ScaleText(sheet->scale);
    // The name may hold the paper, which the scale just fixed.
    titleblock::ExpandNameRule(*sheet);
    form.rows.push_back(std::move(row));
  }
  TellUnreadableNames(form);
  paper::RefreshPlotterFiles(form.job.paperList);
}

std::string TitleFileName(const titleblock::Plot_Drawing2& sheet) {
  // The separator is the user's, so the joined name is cleaned again: nothing may lead out of
  // the output folder.
  const std::string separator = titleblock::CleanFileName(titleblock::GlobalTkLibrary().TitleSeparator, true);
  return titleblock::CleanFileName(WithTitleSeparator(sheet.file_name, separator), true);
}

std::vector<std::string> TitleFileNames(const Dlg_BPlot2& form) {
  const titleblock::TK_Library& library = titleblock::GlobalTkLibrary();
  std::vector<std::string> names;
  names.reserve(form.rows.size());
  std::set<std::string> taken;
  for (std::size_t i = 0; i < form.rows.size(); ++i) {
    std::string name = TitleFileName(*form.rows[i].sheet);
    if (library.InsertSerial != 0) {
      const auto serial = library.SerialStart + static_cast<std::int32_t>(i);
      name = titleblock::CleanFileName(
          library.SerialPrefix + titleblock::SerialText(serial, library.SerialDigits) + library.SerialSuffix + name, true);
    }
    // Within what the file system takes, the "(2)" of a second sheet of the name included.
    const std::size_t room = FileNameRoom(form.setting.format);
    std::string unique = FitFileName(name, room);
    for (int copy = 2; !taken.insert(FoldCase(unique)).second; ++copy) {
      const std::string suffix = "(" + std::to_string(copy) + ")";
      unique = FitFileName(name, room - suffix.size()) + suffix;
    }
    names.push_back(std::move(unique));
  }
  return names;
}

std::vector<std::string> BPlot2Columns() {
  return {"序 号", "预 览", "  文 件 名  ", "删 除", "纸 张", "打印比例", "图 号", "版 次", "日 期", "备 注"};
}

std::vector<std::vector<std::string>> BPlot2Cells(const Dlg_BPlot2& form) {
  std::vector<std::vector<std::string>> cells;
  cells.reserve(form.rows.size());
  const std::vector<std::string> names = TitleFileNames(form);
  for (std::size_t i = 0; i < form.rows.size(); ++i) {
    const BPlot2Row& row = form.rows[i];
    const titleblock::Plot_Drawing2& s = *row.sheet;
    cells.push_back({RowNumberCell(i), "预览", names[i], "删除", row.paperText, row.scaleText, Shown(s.field_text[0]),
                     Shown(s.field_text[1]), Shown(s.field_text[3]), row.note});
  }
  return cells;
}

}  // namespace tv::plot
