// Sheets of the title-block batch from inserts built in code: which inserts become sheets, which
// sheets cover others, how a sheet lies, what paper and scale it gets and what its file is called.
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "../recognition/drawing_fixture.h"
#include "host/entity.h"
#include "plot/title_review.h"
#include "titleblock/title_sheets.h"

namespace tv::titleblock {
namespace {

using recognition::test::ExpectBox;

// A library of the test's own for the length of a test; the process's library comes back after.
class TitleSheetsTest : public recognition::test::DrawingTest {
 protected:
  void SetUp() override {
    DrawingTest::SetUp();
    std::swap(saved_, GlobalTkLibrary());
  }
  void TearDown() override {
    rows_.clear();
    std::swap(saved_, GlobalTkLibrary());
    DrawingTest::TearDown();
  }

  // A 420 x 297 frame defined with its centre as origin, picked at scale 1.
  TK_Customization& Define(const std::string& name, double width = 420, double height = 297) {
    auto d = std::make_unique<TK_Customization>();
    d->block_name = name;
    d->frame_extents = {{-width / 2, -height / 2, 0}, {width / 2, height / 2, 0}};
    d->paper = {static_cast<std::int32_t>(width), static_cast<std::int32_t>(height), true};
    d->name_rule = "A_T";
    d->area_drawing_no = {{width / 2 - 100, -height / 2, 0}, {width / 2, -height / 2 + 20, 0}};
    GlobalTkLibrary().definitions.push_back(std::move(d));
    return *GlobalTkLibrary().definitions.back();
  }
  cad::BlockRecord& Block(const std::string& name, double width = 420, double height = 297) {
    cad::BlockRecord& block = db().addBlock(name);
    AddLw({{0, 0}, {width, 0}, {width, height}, {0, height}}, true, &block);
    return block;
  }
  ObjectId Place(const cad::BlockRecord& block, Point3d at, double rotation = 0, Vector3d scale = {1, 1, 1}) {
    auto insert = std::make_unique<cad::Insert>();
    insert->block = block.id;
    insert->position = at;
    insert->rotation = rotation;
    insert->scale = scale;
    return Append(std::move(insert)).id;
  }
  void Filter(const ObjectIdArray& ids) { FilterTitleBlocks(rows_, ids, ObjectId{}); }

  TK_Library saved_;
  TitleSheetList rows_;
};

TEST_F(TitleSheetsTest, OnlyInsertsOfDefinedBlocksBecomeSheetsAndCoveredOnesGo) {
  Define("TK");
  Define("SMALL", 100, 50);
  Define("DYN");
  cad::BlockRecord& frame = Block("TK");
  cad::BlockRecord& small = Block("SMALL", 100, 50);
  cad::BlockRecord& dynamic = Block("DYN");
  db().ensureDictionary(db().ensureExtensionDictionary(dynamic), "ACAD_ENHANCEDBLOCK");
  cad::BlockRecord& stretched = Block("*U", 520, 297);
  stretched.extras().xdata = {cad::Group{1001, std::string("AcDbBlockRepBTag")}, cad::Group{1070, std::int64_t{1}},
                              cad::Group{1005, dynamic.id}};
  cad::BlockRecord& plainCopy = Block("*U");

  const ObjectId first = Place(frame, {0, 0, 0});
  const ObjectId second = Place(frame, {0, 0, 0});        // pasted onto the first
  const ObjectId inside = Place(small, {300, 10, 0});      // a defined block within a sheet
  const ObjectId other = Place(frame, {1000, 0, 0});
  const ObjectId copyOfDynamic = Place(stretched, {2000, 0, 0});
  const ObjectId copyOfPlain = Place(plainCopy, {3000, 0, 0});
  const ObjectId line = AddLine({0, 0, 0}, {5, 5, 0});
  Open();

  Filter({first, second, inside, other, copyOfDynamic, copyOfPlain, line});
  ASSERT_EQ(rows_.size(), 3u);
  // Of two equal sheets the later one stays.
  EXPECT_EQ(rows_[0]->insert_id, second);
  EXPECT_EQ(rows_[1]->insert_id, other);
  EXPECT_EQ(rows_[2]->insert_id, copyOfDynamic);
  EXPECT_EQ(rows_[2]->definition->block_name, "DYN");
  EXPECT_NEAR(rows_[2]->width, 520, 1e-9);
  for (const auto& row : rows_) EXPECT_TRUE(host::OpenEntity(row->rec_id)) << "each sheet keeps its marker";

  // The markers of dropped sheets are gone with them: one per sheet is left.
  ObjectIdArray all;
  host::CollectSpaceIds(host::ModelSpaceId(), all);
  const auto markers = std::count_if(all.begin(), all.end(),
                                     [](ObjectId id) { return host::OpenEntity(id).dxfName() == "Temp_PlotRec"; });
  EXPECT_EQ(markers, 3);
}

TEST_F(TitleSheetsTest, NamesAreComparedWithCaseAndTheFirstDefinitionWins) {
  TK_Customization& upper = Define("TK");
  Define("TK", 841, 594).name_rule = "B";
  Define("tk2");
  const ObjectId a = Place(Block("TK"), {0, 0, 0});
  const ObjectId b = Place(Block("TK2"), {1000, 0, 0});
  Open();
  Filter({a, b});
  ASSERT_EQ(rows_.size(), 1u);
  EXPECT_EQ(rows_[0]->definition, &upper);
}

TEST_F(TitleSheetsTest, ATurnedFrameIsPortraitWithItsStampsTurnedAlong) {
  TK_Customization& d = Define("TK");
  d.stamp_project = {{-50, -50, 0}, {50, 50, 0}};
  const ObjectId insert = Place(Block("TK"), {1000, 0, 0}, std::numbers::pi / 2);
  Open();
  Filter({insert});
  ASSERT_EQ(rows_.size(), 1u);
  const Plot_Drawing2& row = *rows_[0];
  EXPECT_TRUE(row.portrait);
  EXPECT_NEAR(row.width, 297, 1e-6);
  EXPECT_NEAR(row.height, 420, 1e-6);
  EXPECT_NEAR(row.min_x, 703, 1e-6);
  EXPECT_NEAR(row.stamp_point[2].x, 1000 - 148.5, 1e-6);
  EXPECT_NEAR(row.stamp_point[2].y, 210, 1e-6);
  EXPECT_NEAR(row.stamp_rotation, std::numbers::pi / 2, 1e-12);
  for (int i : {0, 1, 3}) EXPECT_TRUE(IsNoStampPoint(row.stamp_point[i])) << i;
}

TEST_F(TitleSheetsTest, APrintAreaReplacesTheInsertsExtents) {
  TK_Customization& d = Define("TK");
  d.print_extents = {{-200, -140, 0}, {200, 140, 0}};
  const ObjectId insert = Place(Block("TK"), {0, 0, 0});
  Open();
  Filter({insert});
  ASSERT_EQ(rows_.size(), 1u);
  EXPECT_NEAR(rows_[0]->min_x, 10, 1e-6);
  EXPECT_NEAR(rows_[0]->max_y, 288.5, 1e-6);
}

TEST_F(TitleSheetsTest, PaperAndScaleFollowTheDefinitionThenTheScale) {
  const TK_Customization& d = Define("TK");
  Plot_Drawing2 row;
  row.definition = &d;
  row.width = 42000;
  row.height = 29700;
  paper::MyPaper p;
  ASSERT_TRUE(SheetPaper(row, p));
  EXPECT_EQ(p, (paper::MyPaper{420, 297, true}));
  EXPECT_NEAR(row.scale, 100, 1e-9);

  // Portrait: the paper's short side goes along the sheet's width.
  Plot_Drawing2 upright;
  upright.definition = &d;
  upright.width = 29700;
  upright.height = 84000;
  upright.portrait = true;
  ASSERT_TRUE(SheetPaper(upright, p));
  EXPECT_NEAR(upright.scale, 200, 1e-9);

  // With a scale of its own the row's paper is worked out from its size.
  row.scale = 50;
  ASSERT_TRUE(SheetPaper(row, p));
  EXPECT_EQ(p.length, 841);
  EXPECT_EQ(p.width, 594);
  EXPECT_TRUE(p.standard);

  Plot_Drawing2 orphan;
  EXPECT_FALSE(SheetPaper(orphan, p));
}

TEST_F(TitleSheetsTest, AStretchedDynamicFrameGetsALongerPaper) {
  TK_Customization& d = Define("DYN");
  d.is_dynamic = 1;
  cad::BlockRecord& dynamic = Block("DYN");
  db().ensureDictionary(db().ensureExtensionDictionary(dynamic), "ACAD_ENHANCEDBLOCK");
  cad::BlockRecord& stretched = Block("*U", 630, 297);
  stretched.extras().xdata = {cad::Group{1001, std::string("AcDbBlockRepBTag")}, cad::Group{1070, std::int64_t{1}},
                              cad::Group{1005, dynamic.id}};
  const ObjectId insert = Place(stretched, {0, 0, 0}, 0, {2, 2, 1});
  Open();
  paper::MyPaper p{420, 297, true};
  DynamicPaperAdjust(d, insert, p);
  EXPECT_EQ(p.length, 630);
  EXPECT_EQ(p.width, 297);
}

TEST_F(TitleSheetsTest, TheFileNameTakesTheFieldsAndThePaper) {
  TK_Customization& d = Define("TK");
  Plot_Drawing2 row;
  row.definition = &d;
  row.width = 42000;
  row.height = 29700;
  row.field_text[0] = "S-01/2";
  ExpandNameRule(row);
  EXPECT_EQ(row.file_name, "S-01\u22152_A3");
  d.name_rule = "AAA";
  ExpandNameRule(row);
  EXPECT_EQ(row.file_name, "AS-01\u22152");
}

TEST_F(TitleSheetsTest, ANameCannotLeaveItsFolderWhateverTheSeparator) {
  Plot_Drawing2 row;
  row.file_name = "一层[++}二层";
  EXPECT_EQ(plot::TitleFileName(row), "一层+二层");
  GlobalTkLibrary().TitleSeparator = "/../";
  EXPECT_EQ(plot::TitleFileName(row).find('/'), std::string::npos);
  row.file_name = "[++}";
  GlobalTkLibrary().TitleSeparator = "..";
  EXPECT_EQ(plot::TitleFileName(row), "_..");
}

TEST_F(TitleSheetsTest, NoSheetWritesOverAnotherAndTheSerialGoesInFront) {
  plot::Dlg_BPlot2 form;
  for (const char* name : {"S-01", "s-01", "S-02", "S-01"}) {
    auto sheet = std::make_unique<Plot_Drawing2>();
    sheet->file_name = name;
    form.rows.push_back({sheet.get()});
    form.job.sheets.push_back(std::move(sheet));
  }
  EXPECT_EQ(plot::TitleFileNames(form), (std::vector<std::string>{"S-01", "s-01(2)", "S-02", "S-01(3)"}));
  TK_Library& library = GlobalTkLibrary();
  library.InsertSerial = 1;
  library.SerialPrefix = "P/";
  library.SerialStart = 7;
  library.SerialDigits = 3;
  library.SerialSuffix = "_";
  EXPECT_EQ(plot::TitleFileNames(form),
            (std::vector<std::string>{"P\u2215007_S-01", "P\u2215008_s-01", "P\u2215009_S-02", "P\u2215010_S-01"}));
}

TEST_F(TitleSheetsTest, AnEmptyLibraryFindsNothingAndOpensTheLibraryForm) {
  Place(Block("TK"), {0, 0, 0});
  Open();
  ScanTitleBlocks(rows_);
  EXPECT_TRUE(rows_.empty());
  EXPECT_NE(out_.str().find("图框信息库为空"), std::string::npos) << out_.str();
}

}  // namespace
}  // namespace tv::titleblock
