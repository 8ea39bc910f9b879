// Internal paper names: exact sizes first, then the width alone, then the bare size.
#include "paper/paper_tables_internal.h"

namespace tv::paper::internal {
namespace {

// The eighth-steps of A2, A1 and A0 are named here although snapping never produces them, so a
// size typed in exactly still gets its proper name.
constexpr NamedSize kNameRows[] = {
    {210, 148, "TV_A5"},
    {297, 210, "TV_A4"},

    {420, 297, "TV_A3"},
    {630, 297, "TV_A3_Plus_1+1-2"},
    {841, 297, "TV_A3_Plus_1+1"},
    {1051, 297, "TV_A3_Plus_1+3-2"},
    {1261, 297, "TV_A3_Plus_1+2"},
    {1471, 297, "TV_A3_Plus_1+5-2"},
    {1682, 297, "TV_A3_Plus_1+3"},
    {1892, 297, "TV_A3_Plus_1+7-2"},

    {594, 420, "TV_A2"},
    {668, 420, "TV_A2_Plus_1+1-8"},
    {743, 420, "TV_A2_Plus_1+1-4"},
    {817, 420, "TV_A2_Plus_1+3-8"},
    {891, 420, "TV_A2_Plus_1+1-2"},
    {965, 420, "TV_A2_Plus_1+5-8"},
    {1040, 420, "TV_A2_Plus_1+3-4"},
    {1115, 420, "TV_A2_Plus_1+7-8"},
    {1189, 420, "TV_A2_Plus_1+1"},
    {1263, 420, "TV_A2_Plus_1+9-8"},
    {1338, 420, "TV_A2_Plus_1+5-4"},
    {1412, 420, "TV_A2_Plus_1+11-8"},
    {1486, 420, "TV_A2_Plus_1+3-2"},
    {1560, 420, "TV_A2_Plus_1+13-8"},
    {1635, 420, "TV_A2_Plus_1+7-4"},
    {1709, 420, "TV_A2_Plus_1+15-8"},
    {1783, 420, "TV_A2_Plus_1+2"},
    {1857, 420, "TV_A2_Plus_1+17-8"},
    {1932, 420, "TV_A2_Plus_1+9-4"},
    {2006, 420, "TV_A2_Plus_1+19-8"},
    {2080, 420, "TV_A2_Plus_1+5-2"},

    {841, 594, "TV_A1"},
    {946, 594, "TV_A1_Plus_1+1-8"},
    {1051, 594, "TV_A1_Plus_1+1-4"},
    {1156, 594, "TV_A1_Plus_1+3-8"},
    {1261, 594, "TV_A1_Plus_1+1-2"},
    {1367, 594, "TV_A1_Plus_1+5-8"},
    {1471, 594, "TV_A1_Plus_1+3-4"},
    {1576, 594, "TV_A1_Plus_1+7-8"},
    {1682, 594, "TV_A1_Plus_1+1"},
    {1787, 594, "TV_A1_Plus_1+9-8"},
    {1892, 594, "TV_A1_Plus_1+5-4"},
    {1997, 594, "TV_A1_Plus_1+11-8"},
    {2102, 594, "TV_A1_Plus_1+3-2"},

    {1189, 841, "TV_A0"},
    {1338, 841, "TV_A0_Plus_1+1-8"},
    {1486, 841, "TV_A0_Plus_1+1-4"},
    {1635, 841, "TV_A0_Plus_1+3-8"},
    {1783, 841, "TV_A0_Plus_1+1-2"},
    {1932, 841, "TV_A0_Plus_1+5-8"},
    {2080, 841, "TV_A0_Plus_1+3-4"},
    {2229, 841, "TV_A0_Plus_1+7-8"},
    {2378, 841, "TV_A0_Plus_1+1"},

    {250, 176, "TV_B5"},
    {353, 250, "TV_B4"},
    {500, 353, "TV_B3"},
    {707, 500, "TV_B2"},
    {1000, 707, "TV_B1"},
    {1414, 1000, "TV_B0"},
};

constexpr WidthBase kWidthBases[] = {
    {148, "TV_A5"}, {210, "TV_A4"}, {297, "TV_A3"}, {420, "TV_A2"},  {594, "TV_A1"}, {841, "TV_A0"},
    {176, "TV_B5"}, {250, "TV_B4"}, {353, "TV_B3"}, {500, "TV_B2"}, {707, "TV_B1"}, {1000, "TV_B0"},
};

}  // namespace

std::span<const NamedSize> PaperNameRows() { return kNameRows; }
std::span<const WidthBase> WidthBaseRows() { return kWidthBases; }

}  // namespace tv::paper::internal
