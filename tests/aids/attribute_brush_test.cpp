// The attribute brush as users run it: the source's attributes listed, some unchecked or edited,
// and the checked ones written by tag onto the references selected, nothing else changed.
#include <gtest/gtest.h>

#include "../support/tvplot_test.h"
#include "aids/attribute_brush.h"
#include "aids_drawings.h"
#include "cad/drawing_file.h"
#include "drawing_diff.h"

namespace tv::aids {
namespace {

using namespace test_support;

TEST(SortAttributeRows, SortsByEitherColumnBothWaysKeepingEqualRowsInOrder) {
  const std::vector<AttributeRow> rows{{"B", "2"}, {"A", "2"}, {"C", "1"}};
  const auto tags = [](std::vector<AttributeRow> r, bool byValue, bool ascending) {
    SortAttributeRows(r, byValue, ascending);
    std::string out;
    for (const AttributeRow& row : r) out += row.tag;
    return out;
  };
  EXPECT_EQ(tags(rows, false, true), "ABC");
  EXPECT_EQ(tags(rows, false, false), "CBA");
  EXPECT_EQ(tags(rows, true, true), "CBA");
  EXPECT_EQ(tags(rows, true, false), "BAC");
}

class AttributeBrushTest : public TvplotTest {
 protected:
  void SetUp() override {
    TvplotTest::SetUp();
    cad::Database db = cad::Database::createDefault();
    plain_ = db.append(*db.modelSpace(), MakeInsert(TitleBlock(db), {0, 500, 0})).id.handleText();
    cad::Insert& source = AddTitleBlock(db, 0, {{"图号", "S-01"}, {"图名", "总图"}, {"日期", "2024"}});
    source.attribs[2]->attFlags |= cad::kAttInvisible;  // not offered
    for (double x : {200.0, 400.0, 600.0}) {
      cad::Insert& target = AddTitleBlock(db, x, {{"图号", "T"}, {"图名", "N"}, {"日期", "D"}});
      for (const auto& a : target.attribs) handles_[x].push_back(a->id.handleText());
    }
    source_ = source.id.handleText();
    drawing_ = Write("blocks.dxf", db);
  }

  std::string drawing_, plain_, source_;
  std::map<double, std::vector<std::string>> handles_;  // attributes of the targets by their x
};

TEST_F(AttributeBrushTest, WritesTheCheckedRowsWithTheirEditedValuesOntoTheSelectedReferences) {
  const std::string out = Path("brushed.dxf").string();
  // The reference without attributes is passed over; 图名 is unchecked and 图号 edited.
  const RunResult r = Run({"run", drawing_, "TV_BatchPlot_20", "--answer", "H " + plain_ + " " + source_, "--answer",
                           "R 2", "--answer", "V 1", "--answer", "S-02", "--answer", "B", "--answer",
                           "W 190,-5 520,20", "--answer", "B", "--answer", "", "--answer", "Q", "--save-as", out});
  ASSERT_EQ(r.exitCode, 0) << r.out << r.err;
  EXPECT_EQ(r.out.find("日期"), std::string::npos) << "an invisible attribute is no row";
  const std::set<std::string> changed = ChangedHandles(RecordsByHandle(drawing_), RecordsByHandle(out));
  // 图号 of the two targets in the window; the empty selection after that changes nothing.
  EXPECT_EQ(changed, (std::set<std::string>{handles_[200][0], handles_[400][0]}));
  cad::DxfReadResult saved = cad::ReadDrawing(out);
  ASSERT_TRUE(saved.ok()) << saved.error;
  for (double x : {200.0, 400.0}) {
    const auto* a = saved.db->objectAs<cad::Attrib>(ObjectId::fromHandleText(handles_[x][0]));
    ASSERT_NE(a, nullptr);
    EXPECT_EQ(a->text, "S-02");
  }
}

}  // namespace
}  // namespace tv::aids
