// The standard papers offered when a sheet's own size is no standard one.
#include "paper/paper_tables_internal.h"

namespace tv::paper::internal {
namespace {

constexpr PaperSize kStandardRows[] = {
    {297, 210},  {420, 297},  {594, 420},  {841, 594},  {1189, 841}, {743, 420},  {891, 420},
    {1040, 420}, {1189, 420}, {1051, 594}, {1261, 594}, {1471, 594}, {1682, 594}, {1338, 841},
    {1486, 841}, {1635, 841}, {1783, 841}, {1932, 841}, {2080, 841}, {2229, 841}, {2378, 841},
};
static_assert(std::size(kStandardRows) == 21);

}  // namespace

std::span<const PaperSize> StandardPaperRows() { return kStandardRows; }

}  // namespace tv::paper::internal
