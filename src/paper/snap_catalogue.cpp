// Sizes a computed paper snaps onto: A series, B series, and the lengthened A sizes.
#include "paper/paper_tables_internal.h"

namespace tv::paper::internal {
namespace {

constexpr PaperSize kRowsA[] = {
    {210, 148}, {297, 210}, {420, 297}, {594, 420}, {841, 594}, {1189, 841},
};

constexpr PaperSize kRowsB[] = {
    {250, 176}, {353, 250}, {500, 353}, {707, 500}, {1000, 707}, {1414, 1000},
};

constexpr PaperSize kRowsLengthened[] = {
    {630, 297},  {841, 297},  {1051, 297}, {1261, 297}, {1471, 297}, {1682, 297}, {1892, 297},
    {743, 420},  {891, 420},  {1040, 420}, {1189, 420}, {1338, 420}, {1486, 420}, {1635, 420},
    {1783, 420}, {1932, 420}, {2080, 420},
    {1051, 594}, {1261, 594}, {1471, 594}, {1682, 594}, {1892, 594}, {2102, 594},
    {1338, 841}, {1486, 841}, {1635, 841}, {1783, 841}, {1932, 841}, {2080, 841}, {2229, 841},
    {2378, 841},
};

static_assert(std::size(kRowsA) == 6 && std::size(kRowsB) == 6 && std::size(kRowsLengthened) == 31);

}  // namespace

std::span<const PaperSize> SnapRowsA() { return kRowsA; }
std::span<const PaperSize> SnapRowsB() { return kRowsB; }
std::span<const PaperSize> SnapRowsLengthened() { return kRowsLengthened; }

}  // namespace tv::paper::internal
