#include "reports/list_reports.h"

#include "plot/generic_review.h"
#include "plot/output_paths.h"
#include "plot/title_review.h"
#include "reports/excel_sheet.h"
#include "reports/report_rows.h"

namespace tv::reports {

namespace {

// The workbook goes where the list's own files would go.
void UseOutputFolderOf(const settings::PlotSettingRec& setting) {
  std::string custom = setting.custom_path;
  ReportFolder() = plot::OutputFolder(setting.path_mode, setting.format, custom);
}

std::string WithoutBlanks(std::string_view text) {
  std::string out;
  for (char c : text)
    if (c != ' ' && c != '\t') out += (c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c;
  return out;
}

}  // namespace

const std::vector<std::string>& PaperStatisticsEntries() {
  static const std::vector<std::string> entries = {"折合成A4", "折合成A3", "折合成A2", "折合成A1", "折合成A0"};
  return entries;
}

std::optional<BaseSize> BaseSizeOfText(std::string_view text) {
  const std::string t = WithoutBlanks(text);
  const std::vector<std::string>& entries = PaperStatisticsEntries();
  for (std::size_t i = 0; i < entries.size(); ++i) {
    const std::string base = entries[i].substr(entries[i].size() - 2);  // "A4"
    if (t == entries[i] || t == base || t == std::to_string(i + 1)) return static_cast<BaseSize>(i + 1);
  }
  return std::nullopt;
}

bool MakePaperStatisticsFromList(const plot::Dlg_BPlot1& form, BaseSize base) {
  UseOutputFolderOf(form.setting);
  return WritePaperStatistics(CountPapers(RowsOfGenericList(form), form.job.paperList), base);
}

bool MakePaperStatisticsFromList(const plot::Dlg_BPlot2& form, BaseSize base) {
  UseOutputFolderOf(form.setting);
  return WritePaperStatistics(CountPapers(RowsOfTitleList(form), form.job.paperList), base);
}

}  // namespace tv::reports
