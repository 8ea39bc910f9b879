// The file names of the generic batch: prefix, serial, suffix.
#include <algorithm>

#include "plot/output_paths.h"
#include "titleblock/file_naming.h"
#include "titleblock/naming_internal.h"

namespace tv::titleblock {

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
  for (std::string* part : {&head, &tail}) internal::ReplacePaperWords(*part, paperText, paperSizeText);

  const std::string serial = SerialText(setting.name_start + index, setting.name_digits);
  std::string name = CleanFileName(head + serial + tail, true);
  const std::size_t room = plot::FileNameRoom(setting.format);
  if (name.size() <= room) return name;
  // Too long for the file system: the prefix gives way first, so that the serial keeps the names
  // of the sheets apart.
  const std::string rest = CleanFileName(serial + tail, true);
  if (rest.size() >= room) return plot::FitFileName(rest, room);
  return plot::FitFileName(CleanFileName(head, true), room - rest.size()) + rest;
}

void ExpandGenericName(const settings::PlotSettingRec& setting, recognition::Plot_Drawing1& sheet,
                       const paper::PaperList& papers, std::int32_t index, std::string_view prefix) {
  sheet.fileName = GenericFileName(setting, sheet, papers, index, prefix);
}

}  // namespace tv::titleblock
