// The order of the paper batch's jobs: copies sheet after sheet, set after set when collating,
// each sheet once into PLT files.
#include "plot/paper_work_list.h"

#include <gtest/gtest.h>

#include <vector>

namespace tv::plot {
namespace {

TEST(PaperWorkListTest, CopiesCollationAndPltDecideTheOrder) {
  struct Case {
    std::vector<std::int32_t> copies;
    bool collate, toPlt;
    std::vector<std::size_t> expected;
  };
  const Case cases[] = {
      {{2, 1, 3}, false, false, {0, 0, 1, 2, 2, 2}},
      {{2, 1, 3}, true, false, {0, 1, 2, 0, 2, 2}},  // each pass takes the sheets with copies left
      {{2, 1, 3}, true, true, {0, 1, 2}},
      {{2, 1, 3}, false, true, {0, 1, 2}},
      {{0, -4, 1}, false, false, {0, 1, 2}},  // fewer than one copy prints one
      {{0, 2}, true, false, {0, 1, 1}},
      {{}, true, false, {}},
  };
  for (const Case& c : cases)
    EXPECT_EQ(PaperWorkList(c.copies, c.collate, c.toPlt), c.expected)
        << "collate " << c.collate << ", plt " << c.toPlt << ", " << c.copies.size() << " sheets";
}

}  // namespace
}  // namespace tv::plot
