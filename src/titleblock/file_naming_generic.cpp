// The file names of the generic batch: prefix, serial, suffix.
#include <algorithm>

#include "plot/output_paths.h"
#include "titleblock/file_naming.h"

namespace tv::titleblock {

namespace {

void ReplaceAll(std::string& text, std::string_view key, std::string_view by) {
  for (std::size_t at = text.find(key); at != std::string::npos; at = text.find(key, at + by.size()))
    text.replace(at, key.size(), by);
}

}  // namespace

std::string GenericFileName(const settings::PlotSettingRec& setting, const recognition::Plot_Drawing1& sheet,
                            const paper::PaperList& papers, std::int32_t index, std::string_view prefix) {
  std::string head(prefix.empty() ? std::string_view(setting.name_prefix) : prefix);
  if (head == kDrawingNamePrefix) head = plot::DrawingTitle();
  std::string tail = setting.name_suffix;

  std::string paperText(kPaperWord), paperSizeText(kPaperSizeWord);
  if (const paper::MyPaper* paper = paper::FindPaperByName(papers, sheet.paperName)) {
    paperText = paper::PaperDisplayName(*paper, false, sheet.rotated);
    paperSizeText = paper::PaperDisplayName(*paper, true, sheet.rotated);
    std::erase(paperSizeText, ' ');
  }
  // The long word first: it holds the short one.
  for (std::string* part : {&head, &tail}) {
    ReplaceAll(*part, kPaperSizeWord, paperSizeText);
    ReplaceAll(*part, kPaperWord, paperText);
  }

  return CleanFileName(head + SerialText(setting.name_start + index, setting.name_digits) + tail, true);
}

void ExpandGenericName(const settings::PlotSettingRec& setting, recognition::Plot_Drawing1& sheet,
                       const paper::PaperList& papers, std::int32_t index, std::string_view prefix) {
  sheet.fileName = GenericFileName(setting, sheet, papers, index, prefix);
}

}  // namespace tv::titleblock
