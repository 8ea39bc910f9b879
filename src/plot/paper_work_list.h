#pragma once
// The order in which the paper batch sends its sheets: each sheet as often as its copies say.
// Collated copies go set after set, so that each set leaves the printer whole; otherwise each
// sheet's copies go together. PLT files are written once per sheet.
#include <cstddef>
#include <cstdint>
#include <vector>

namespace tv::plot {

// Indices into the sheets, one per job. `copies` holds each sheet's copies; a count below 1 counts
// as 1. `collate` only matters on a device; `toPlt` writes every sheet once.
std::vector<std::size_t> PaperWorkList(const std::vector<std::int32_t>& copies, bool collate, bool toPlt);

}  // namespace tv::plot
