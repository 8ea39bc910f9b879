// `tvplot report` as users run it: the sample title blocks and the generic sample drawing written
// as workbooks, read back through the zip and the sheet XML as a spreadsheet program would.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "../support/tvplot_test.h"
#include "../support/xlsx_reading.h"
#include "cad/dxf_reader.h"
#include "examples/sample_drawing.h"
#include "examples/sample_library.h"
#include "paper/paper.h"
#include "reports/excel_sheet.h"
#include "reports/paper_statistics.h"
#include "titleblock/tk_library.h"

namespace tv::reports {
namespace {

namespace fs = std::filesystem;
using namespace test_support;

class ReportCommandTest : public TvplotTest {
 protected:
  void SetUp() override {
    TvplotTest::SetUp();
    titleblock::TK_Library library = samples::BuildTitleBlockLibrary();
    library.index_columns = {0, 1, 2, 3, 4, 5, 6, 7, 8};  // every column, more than are fitted
    library.index_col_widths.assign(9, 1000.0);
    ASSERT_TRUE(titleblock::SaveTkFileTo(library, tk_, false));
  }
  RunResult Report(const std::string& kind, std::vector<std::string> more = {}) const {
    std::vector<std::string> args{"report", kind, drawing_, "--tk", tk_, "--out", out_.string()};
    args.insert(args.end(), more.begin(), more.end());
    return Run(args);
  }

  const std::string drawing_ = Write("titleblocks.dxf", samples::BuildTitleBlockDrawing());
  const std::string tk_ = Path("titleblocks.tk").string();
  const fs::path out_ = Path("out");
};

struct Expected {
  const char* ref;
  const char* value;    // nullptr: not checked
  const char* formula;  // nullptr: not checked
  const char* format;   // nullptr: not checked
};

void ExpectCells(const XlsxReader& book, const std::vector<Expected>& cells) {
  for (const Expected& e : cells) {
    const auto cell = book.cell(e.ref);
    ASSERT_TRUE(cell) << e.ref;
    if (e.value) {
      EXPECT_EQ(cell->value, e.value) << e.ref;
    }
    if (e.formula) {
      EXPECT_EQ(cell->formula, e.formula) << e.ref;
    }
    if (e.format) {
      EXPECT_EQ(cell->format, e.format) << e.ref;
    }
  }
}

bool HasMerge(const XlsxReader& book, const std::string& ref) {
  return Has(book.sheetXml(), "<mergeCell ref=\"" + ref + "\"/>");
}

TEST_F(ReportCommandTest, EachReportIsAWorkbookWithItsCellsFormulasAndMerges) {
  struct Case {
    const char* kind;
    std::vector<std::string> more;
    const char* file;
    std::vector<const char*> merges;
    std::vector<Expected> cells;
  };
  const Case cases[] = {
      {"list", {}, "文件清单.xlsx", {"A1:H1"},
       {{"A1", "Tarvex批量打印---文件清单", nullptr, nullptr},
        {"B2", "文 件 名", nullptr, nullptr},
        {"A3", "1", nullptr, "00"},
        {"A6", "4", nullptr, "00"},
        // The title's line mark: the library's separator in the name, two blanks in the title.
        {"B5", "建施-03_一层平面图+（局部）_2026.11.25", nullptr, nullptr},
        {"H5", "一层平面图  （局部）", nullptr, nullptr},
        {"D3", "1:100", nullptr, "@"},
        {"C3", "A1", nullptr, nullptr}}},
      {"index", {}, "图纸目录.xlsx", {"A1:I1"},
       {{"A1", "Tarvex批量打印---目 录", nullptr, nullptr},
        {"A2", "序 号", nullptr, nullptr},
        {"I2", "比 例", nullptr, nullptr},
        {"A3", "1", nullptr, "00"},
        {"B3", "结施-01", nullptr, nullptr},
        {"D5", "一层平面图  （局部）", nullptr, nullptr},
        {"I3", "1:100", nullptr, "@"}}},
      // Two A2 and two A1 sheets, the smaller paper first.
      {"papers", {"--base", "A0"}, "图纸统计.xlsx", {"A1:G1", "A2:A3", "D2:E2"},
       {{"D2", "折合成A0", nullptr, nullptr},
        {"F2", "A0单价： ", nullptr, nullptr},
        {"G2", "5", nullptr, "0.00"},
        {"B4", "A2", nullptr, nullptr},
        {"C4", "2", nullptr, "0"},
        {"D4", "0.25", nullptr, "0.00"},
        {"E4", nullptr, "C4*D4", "0.0"},
        {"F4", nullptr, "G2*D4", "0.00"},
        {"G4", nullptr, "F4*C4", "0.00"},
        {"B5", "A1", nullptr, nullptr},
        {"D5", "0.5", nullptr, "0.0"},
        {"E5", nullptr, "C5*D5", "0"},
        {"A6", "汇 总 ", nullptr, nullptr},
        {"C6", "4", "SUM(C4:C5)", "0"},
        {"E6", "1.5", "SUM(E4:E5)", "0.0"},
        {"G6", "7.5", "SUM(G4:G5)", "0.00"}}},
      // By unit price: sorted by the paper's text.
      {"papers", {}, "图纸统计(2).xlsx", {"A1:E1"},
       {{"B3", "A1", nullptr, nullptr},
        {"C3", "2", nullptr, "0"},
        {"D3", "5", nullptr, "0.00"},
        {"E3", "10", "C3*D3", "0.00"},
        {"B4", "A2", nullptr, nullptr},
        {"E5", "20", "SUM(E3:E4)", "0.00"}}},
  };
  for (const Case& c : cases) {
    const RunResult r = Report(c.kind, c.more);
    ASSERT_EQ(r.exitCode, 0) << c.kind << r.err;
    const fs::path file = out_ / c.file;
    EXPECT_TRUE(Has(r.out, file.string())) << r.out;
    const XlsxReader book(file.string());
    ASSERT_TRUE(book.ok()) << file;
    for (const char* merge : c.merges) EXPECT_TRUE(HasMerge(book, merge)) << c.file << " " << merge;
    ExpectCells(book, c.cells);
  }
}

TEST_F(ReportCommandTest, AnotherReportOfTheSameKindNeverReplacesTheFirst) {
  ASSERT_EQ(Report("list").exitCode, 0);
  const std::string first = ReadFile((out_ / "文件清单.xlsx").string());
  const RunResult again = Report("list");
  ASSERT_EQ(again.exitCode, 0) << again.err;
  EXPECT_TRUE(Has(again.out, "文件清单(2).xlsx")) << again.out;
  EXPECT_EQ(ReadFile((out_ / "文件清单.xlsx").string()), first);
}

TEST_F(ReportCommandTest, RefusalsAreSaidPlainlyAndLeaveNoFile) {
  struct Case {
    std::vector<std::string> args;
    int exitCode;
    const char* says;
  };
  // A folder below a file can't be made.
  const std::string blocked = (fs::path(drawing_) / "out").string();
  const Case cases[] = {
      {{"report", "list", drawing_, "--tk", tk_, "--out", blocked}, 5, "未找到 Excel 软件"},
      {{"report", "bill", drawing_}, 1, "list、index 或 papers"},
      {{"report", "list", drawing_, "--base", "A1"}, 1, "--base"},
      {{"report", "papers", drawing_, "--base", "B5"}, 1, "B5"},
      {{"report", "index"}, 1, "缺少图纸文件"},
      {{"plot", drawing_, "--report", "list,bill"}, 1, "bill"},
      {{"report", "index", drawing_, "--draw-at", "0,0", "--save-as", drawing_}, 1, "不覆盖原图纸"},
      {{"titleblock", drawing_, "--tk", tk_, "--report", "list"}, 1, "--plot"},
  };
  for (const Case& c : cases) {
    const RunResult r = Run(c.args);
    EXPECT_EQ(r.exitCode, c.exitCode) << c.says << "\n" << r.err;
    EXPECT_TRUE(Has(r.err, c.says)) << r.err;
  }
  EXPECT_EQ(FilesIn(dir_.path()).size(), 2u);  // the drawing and the library only
}

TEST_F(ReportCommandTest, APlotRunWritesItsReportsBesideTheFiles) {
  const RunResult r = Run({"titleblock", drawing_, "--tk", tk_, "--plot", "--out", out_.string(), "--report", "index,papers"});
  ASSERT_EQ(r.exitCode, 0) << r.err;
  const std::vector<std::string> files = FilesIn(out_);
  EXPECT_EQ(files.size(), 6u);
  for (const char* name : {"图纸目录.xlsx", "图纸统计.xlsx"}) {
    EXPECT_TRUE(Has(r.out, (out_ / name).string())) << r.out;
    EXPECT_TRUE(XlsxReader((out_ / name).string()).ok()) << name;
  }
  const XlsxReader index((out_ / "图纸目录.xlsx").string());
  EXPECT_EQ(index.cell("B6")->value, "建施-04");
  // Only the first seven of the nine columns are fitted; the last two keep their width of 10.
  for (const char* column : {"8", "9"})
    EXPECT_TRUE(Has(index.sheetXml(), std::string("<col min=\"") + column + "\" max=\"" + column + "\" width=\"10.7"))
        << index.sheetXml();
  EXPECT_FALSE(Has(index.sheetXml(), "<col min=\"4\" max=\"4\" width=\"10.7"));
}

// Without a library the generic list is what there is: files, papers and scales.
TEST_F(ReportCommandTest, TheGenericListGivesAFileListWithoutFields) {
  const std::string sample = Write("sample.dxf", samples::BuildSampleDrawing());
  const RunResult r = Run({"report", "list", sample, "--out", out_.string()});
  ASSERT_EQ(r.exitCode, 0) << r.err;
  const XlsxReader book((out_ / "文件清单.xlsx").string());
  ASSERT_TRUE(book.ok());
  ExpectCells(book, {{"A3", "1", nullptr, "00"}, {"D3", nullptr, nullptr, "@"}});
  EXPECT_FALSE(book.cell("C3")->value.empty());
}

// The index drawn into the drawing survives the save: one line per row and per extra title
// piece, the other cells on the row's first line, the frame on Defpoints.
TEST_F(ReportCommandTest, TheIndexDrawnIntoTheDrawingSurvivesTheSave) {
  titleblock::TK_Library library = samples::BuildTitleBlockLibrary();
  library.index_columns = {0, 1, 3};
  library.index_col_widths = {900, 2300, 9850};
  library.index_row_height = 1000;
  library.index_style.layer = "目录";
  library.index_style.style_name = "目录字体";
  ASSERT_TRUE(titleblock::SaveTkFileTo(library, tk_, false));
  const std::string saved = Path("drawn.dxf").string();
  const RunResult r = Run({"report", "index", drawing_, "--tk", tk_, "--draw-at", "0,-5000", "--save-as", saved});
  ASSERT_EQ(r.exitCode, 0) << r.err;
  const cad::DxfReadResult read = cad::ReadDxf(saved);
  ASSERT_TRUE(read.ok()) << read.error;
  const cad::Database& db = *read.db;
  const cad::Layer* layer = db.findLayer("目录");
  const cad::Layer* defpoints = db.findLayer("Defpoints");
  ASSERT_TRUE(layer && defpoints && db.findTextStyle("目录字体"));
  EXPECT_EQ(layer->colorIndex, 1);
  std::size_t frameLines = 0;
  std::vector<std::pair<std::string, Point3d>> texts;
  db.forEachEntity(*db.modelSpace(), [&](const cad::Entity& e) {
    if (e.layer == defpoints->id && e.dxfName() == "LINE") ++frameLines;
    if (e.layer == layer->id && e.dxfName() == "TEXT") {
      const auto& t = static_cast<const cad::Text&>(e);
      texts.emplace_back(t.text, t.alignPoint());
    }
  });
  // Four rows, one with two titles: five lines, six horizontal and four vertical frame lines.
  EXPECT_EQ(frameLines, 10u);
  EXPECT_EQ(texts.size(), 13u);
  const auto at = [&](const std::string& text) {
    for (const auto& [t, p] : texts)
      if (t == text) return p;
    return Point3d{-1, -1, -1};
  };
  EXPECT_NEAR(at("（局部）").y, -5000 - 3.5 * 1000, 1e-6);
  EXPECT_NEAR(at("（局部）").x, 900 + 2300 + 1000.0 / 3, 1e-6);
  EXPECT_NEAR(at("03").y, -5000 - 2.5 * 1000, 1e-6);
  EXPECT_NEAR(at("04").y, -5000 - 4.5 * 1000, 1e-6);
  EXPECT_NEAR(at("04").x, 450, 1e-6);
}

TEST(ReportFiguresTest, ColumnLettersFactorsAndFormats) {
  EXPECT_EQ(ColumnLetters(1), "A");
  EXPECT_EQ(ColumnLetters(27), "AA");
  EXPECT_EQ(ColumnLetters(52), "AZ");
  EXPECT_EQ(ColumnLetters(53), "BA");
  struct Case {
    paper::MyPaper paper;
    BaseSize base;
    double factor;
    const char* format;
  };
  const Case cases[] = {
      {{420, 297, true}, BaseSize::A4, 2.0, "0"},
      {{841, 594, true}, BaseSize::A0, 0.5, "0.0"},
      {{1189, 420, true}, BaseSize::A4, 8.0, "0"},  // raw 8.007 snaps
      {{380, 210, false}, BaseSize::A4, 380.0 * 210 / 62370, "0.0000"},  // 1.279: outside the snap
  };
  for (const Case& c : cases) {
    EXPECT_DOUBLE_EQ(PaperFactor(c.paper, c.base), c.factor) << c.paper.length;
    EXPECT_EQ(NumberFormatFor(PaperFactor(c.paper, c.base)), c.format) << c.paper.length;
  }
}

}  // namespace
}  // namespace tv::reports
