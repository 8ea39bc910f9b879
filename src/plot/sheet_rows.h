#pragma once
// What the lists of the sheet batches (to files and to paper) do alike with their rows, each row
// bound to one sheet of the job.
#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

#include "recognition/sheet_geometry.h"
#include "recognition/sheet_records.h"

namespace tv::plot {

// Puts the rows in the order of their sheets, edits and all.
template <class Row>
void FollowSheetOrder(std::vector<Row>& rows, const std::vector<recognition::Plot_Drawing1*>& sheets) {
  std::vector<Row> ordered;
  ordered.reserve(rows.size());
  for (recognition::Plot_Drawing1* sheet : sheets) {
    const auto it = std::find_if(rows.begin(), rows.end(), [sheet](const Row& r) { return r.sheet == sheet; });
    if (it != rows.end()) ordered.push_back(std::move(*it));
  }
  rows = std::move(ordered);
}

// Takes a row's sheet out of the job for good, marker and all: a later filter must not bring it
// back.
template <class Row>
void RemoveSheetRow(std::vector<Row>& rows, recognition::SheetJob& job, std::size_t row) {
  recognition::Plot_Drawing1* sheet = rows[row].sheet;
  recognition::EraseMarker(sheet->markerId);
  rows.erase(rows.begin() + static_cast<std::ptrdiff_t>(row));
  std::erase(job.keptSheets, sheet);
  std::erase_if(job.allSheets, [sheet](const auto& owned) { return owned.get() == sheet; });
}

}  // namespace tv::plot
