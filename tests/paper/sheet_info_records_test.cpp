#include <gtest/gtest.h>

#include <filesystem>
#include <unistd.h>

#include "cad/dxf_reader.h"
#include "cad/dxf_writer.h"
#include "host/xrecords.h"
#include "paper/scale_fitting.h"
#include "scale_fitting_fixture.h"

namespace tv::paper::test {
namespace {

TEST(XrecordText, BlanksAndEmptyTextSurviveAsOneToken) {
  EXPECT_EQ(EncodeXrecordText("A3 Plus 1"), "A3*?*Plus*?*1");
  EXPECT_EQ(EncodeXrecordText(""), "<><");
  EXPECT_EQ(EncodeXrecordText("TV_A3"), "TV_A3");
  for (const std::string text : {"", " ", "  a  b ", "TV_A3", "图纸 一", "*?", "<>"})
    EXPECT_EQ(DecodeXrecordText(EncodeXrecordText(text)), text) << text;
}

TEST(FindInfoRow, FirstRowWithBothCornersWithinTolerance) {
  auto sheet = MakeSheet(10, 20, 430, 317);
  std::vector<InfoRow> info(3);
  info[0] = {10, 20, 430, 318};  // other top
  info[1] = {10, 20, 430 + 1e-12, 317, 50.0};
  info[2] = {10, 20, 430, 317, 60.0};
  EXPECT_EQ(FindInfoRow(info, *sheet), 1);
  info[1].minX = 10.001;
  EXPECT_EQ(FindInfoRow(info, *sheet), 2);
  EXPECT_EQ(FindInfoRow({}, *sheet), -1);
}

class InfoRecordsTest : public ScaleFittingTest {
 protected:
  std::vector<std::unique_ptr<Plot_Drawing1>> Sheets() {
    std::vector<std::unique_ptr<Plot_Drawing1>> s;
    s.push_back(MakeSheet(0, 0, 42000, 29700));
    s.back()->scale = 100.0;
    s.back()->paperName = "TV_A3";
    s.back()->copies = 3;
    s.push_back(MakeSheet(50000, 0, 50000 + 59400, 42000));
    s.back()->scale = 125.5;
    s.back()->paperName = "TV_A2 copy";
    return s;
  }
};

TEST_F(InfoRecordsTest, NothingStoredMeansFalseAndNoRows) {
  Open();
  std::vector<InfoRow> info(1);
  EXPECT_FALSE(ReadScInfor(info));
  EXPECT_TRUE(info.empty());
  EXPECT_FALSE(ReadPaperInfor(info));
}

TEST_F(InfoRecordsTest, WrittenRowsReadBackWithTheirLayout) {
  Open();
  auto sheets = Sheets();
  ASSERT_TRUE(WriteScInfor(Pointers(sheets)));
  ASSERT_TRUE(WritePaperInfor(Pointers(sheets)));

  const auto raw = host::ReadNamedXrecord("SC_INFOR");
  ASSERT_TRUE(raw.has_value());
  ASSERT_EQ(raw->size(), 2u + 2 * 6);
  EXPECT_EQ((*raw)[0], (host::XrecordItem{90, std::int32_t{2}}));
  EXPECT_EQ((*raw)[1].code, 90);
  EXPECT_EQ((*raw)[6], (host::XrecordItem{40, 100.0}));
  EXPECT_EQ((*raw)[13], (host::XrecordItem{1, std::string("TV_A2*?*copy")}));
  const auto paperRaw = host::ReadNamedXrecord("PAPER_INFOR");
  ASSERT_TRUE(paperRaw.has_value());
  EXPECT_EQ((*paperRaw)[6], (host::XrecordItem{90, std::int32_t{3}}));

  std::vector<InfoRow> sc, pa;
  ASSERT_TRUE(ReadScInfor(sc));
  ASSERT_EQ(sc.size(), 2u);
  EXPECT_DOUBLE_EQ(sc[1].scale, 125.5);
  EXPECT_EQ(sc[1].paperName, "TV_A2 copy");
  EXPECT_EQ(sc[1].copies, 1);  // not stored in this record: the default
  ASSERT_TRUE(ReadPaperInfor(pa));
  ASSERT_EQ(pa.size(), 2u);
  EXPECT_EQ(pa[0].copies, 3);
  EXPECT_DOUBLE_EQ(pa[0].scale, 100.0);  // not stored in this record: the default
  EXPECT_EQ(FindInfoRow(sc, *sheets[1]), 1);
}

TEST_F(InfoRecordsTest, RowsWithoutPaperAreDroppedAndShortRecordsDoNotOverrun) {
  Open();
  using host::XrecordItem;
  ASSERT_TRUE(host::WriteNamedXrecord("SC_INFOR", {{90, std::int32_t{5}}, {90, std::int32_t{20240329}},
                                                   {40, 0.0}, {40, 0.0}, {40, 1.0}, {40, 1.0}, {40, 1.0}, {1, std::string("<><")},
                                                   {40, 2.0}, {40, 2.0}, {40, 3.0}, {40, 3.0}, {40, 7.0}, {1, std::string("P")},
                                                   {40, 9.0}, {40, 9.0}}));
  std::vector<InfoRow> info;
  ASSERT_TRUE(ReadScInfor(info));
  ASSERT_EQ(info.size(), 1u);
  EXPECT_EQ(info[0].paperName, "P");
  EXPECT_DOUBLE_EQ(info[0].scale, 7.0);

  ASSERT_TRUE(host::WriteNamedXrecord("SC_INFOR", {{1, std::string("junk")}}));
  EXPECT_TRUE(ReadScInfor(info));
  EXPECT_TRUE(info.empty());
}

TEST_F(InfoRecordsTest, StoredRowsSurviveARewriteAndADxfRoundTrip) {
  const std::string path = (std::filesystem::temp_directory_path() /
                            ("tv_sc_infor_" + std::to_string(::getpid()) + ".dxf")).string();
  auto sheets = Sheets();
  // first run: both sheets
  Open();
  ASSERT_TRUE(WriteScInfor(Pointers(sheets)));
  ASSERT_TRUE(cad::WriteDxf(session_->database(), path).ok);
  session_.reset();

  // second run on the same file: only the second sheet is selected, with a new choice
  auto read = cad::ReadDxf(path);
  ASSERT_TRUE(read.ok()) << read.error;
  Open({}, std::move(*read.db));
  std::vector<InfoRow> info;
  ASSERT_TRUE(ReadScInfor(info));
  ASSERT_EQ(info.size(), 2u);
  ASSERT_EQ(FindInfoRow(info, *sheets[0]), 0);
  EXPECT_EQ(info[1].paperName, "TV_A2 copy");
  sheets[1]->scale = 200.0;
  sheets[1]->paperName = "TV_A3";
  ASSERT_TRUE(WriteScInfor({sheets[1].get()}));
  ASSERT_TRUE(cad::WriteDxf(session_->database(), path).ok);
  session_.reset();

  // third run: the selected sheet comes first, the other one is still there, nothing twice
  read = cad::ReadDxf(path);
  ASSERT_TRUE(read.ok()) << read.error;
  Open({}, std::move(*read.db));
  ASSERT_TRUE(ReadScInfor(info));
  ASSERT_EQ(info.size(), 2u);
  EXPECT_EQ(FindInfoRow(info, *sheets[1]), 0);
  EXPECT_DOUBLE_EQ(info[0].scale, 200.0);
  EXPECT_EQ(info[0].paperName, "TV_A3");
  EXPECT_EQ(FindInfoRow(info, *sheets[0]), 1);
  EXPECT_DOUBLE_EQ(info[1].scale, 100.0);
  std::filesystem::remove(path);
}

TEST_F(InfoRecordsTest, StoredChoicesApplyKnownPapersAndAddUnknownOnes) {
  auto sheets = Sheets();
  PaperList papers;
  BuildStandardPaperList(papers);
  const std::size_t before = papers.size();
  std::vector<InfoRow> info(3);
  info[0] = {0, 0, 42000, 29700, 50.0, 1, "1.PDF", "TV_A2"};           // known paper
  info[1] = {50000, 0, 109400, 42000, 100.0, 1, "1.PDF", "NO_SUCH"};  // unknown, scale 100
  info[2] = {1, 1, 2, 2, 100.0, 1, "1.PDF", "TV_A0"};                 // no such sheet
  bool added = false;
  EXPECT_EQ(ApplyStoredChoices(Pointers(sheets), info, papers, added), 2);
  EXPECT_EQ(sheets[0]->paperName, "TV_A2");
  EXPECT_NEAR(sheets[0]->scale, 29700.0 / 420.0, 1e-9);  // the larger of the two ratios
  EXPECT_EQ(sheets[1]->paperName, "TV_A2");  // 594 x 420 at 1:100 is in the list already
  EXPECT_FALSE(added);
  EXPECT_EQ(papers.size(), before);

  info[1].scale = 90.0;  // 660 x 466: a new paper
  EXPECT_EQ(ApplyStoredChoices(Pointers(sheets), info, papers, added), 2);
  EXPECT_TRUE(added);
  EXPECT_EQ(papers.size(), before + 1);
  EXPECT_EQ(sheets[1]->paperName, PaperNameOf(*papers.back()));

  info[1].scale = 0.0;  // unknown name and no scale: left alone
  sheets[1]->paperName = "OLD";
  EXPECT_EQ(ApplyStoredChoices(Pointers(sheets), info, papers, added), 1);
  EXPECT_EQ(sheets[1]->paperName, "OLD");
}

}  // namespace
}  // namespace tv::paper::test
