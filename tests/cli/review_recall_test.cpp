// What the review lists keep and show besides their rows, as users meet it through `tvplot`: the
// paper and scale a drawing remembers per sheet, a marker erased while the list is open, the
// preview of one row, and the file names the listings give.
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "../support/frame_drawings.h"
#include "../support/tvplot_test.h"
#include "examples/sample_drawing.h"
#include "examples/sample_library.h"
#include "host/xrecords.h"
#include "host/xrecords_internal.h"
#include "titleblock/tk_library.h"

namespace tv::cli {
namespace {

namespace fs = std::filesystem;
using namespace test_support;

// Three A3 frames at 1:100 in a row, 5000 apart: x 0, 47000 and 94000.
cad::Database ThreeFrames() { return FramesInARow({{42000, 29700}, {42000, 29700}, {42000, 29700}}); }

// An SC_INFOR record as a run stores it: per row the rectangle, the scale and the paper's name.
struct Stored {
  double minX;
  double scale;
  std::string paper;
};
void Remember(cad::Database& db, const std::vector<Stored>& rows) {
  std::vector<host::XrecordItem> items{{90, static_cast<std::int32_t>(rows.size())}, {90, std::int32_t{20240329}}};
  for (const Stored& r : rows) {
    for (double v : {r.minX, 0.0, r.minX + 42000, 29700.0}) items.push_back({40, v});
    items.push_back({40, r.scale});
    items.push_back({1, r.paper});
  }
  ASSERT_TRUE(host::WriteNamedXrecordInto(db, "SC_INFOR", items));
}

nlohmann::json Sheets(const RunResult& r) {
  EXPECT_EQ(r.exitCode, 0) << r.out << r.err;
  return nlohmann::json::parse(r.out, nullptr, false)["sheets"];
}

std::vector<fs::path> FilesUnder(const fs::path& folder, const std::string& extension) {
  std::vector<fs::path> found;
  std::error_code ec;
  for (const auto& e : fs::recursive_directory_iterator(folder, ec))
    if (e.path().extension() == extension) found.push_back(e.path());
  return found;
}

class ReviewRecallTest : public TvplotTest {
 protected:
  // The generic batch over model space, `atList` answered at the first showing of the list, then
  // Enter (plot) and Esc for the list shown again after the run.
  RunResult Batch(const std::string& drawing, std::vector<std::string> atList, const std::string& saveAs = {}) {
    std::vector<std::string> args{"run", drawing, "TV_BatchPlot_2", "--answer", "", "--answer", "1"};
    atList.insert(atList.end(), {"", "^C"});
    for (const std::string& a : atList) args.insert(args.end(), {"--answer", a});
    if (!saveAs.empty()) args.insert(args.end(), {"--save-as", saveAs});
    return Run(args, {}, home_.string());
  }
  const fs::path home_ = Path("home");
};

TEST_F(ReviewRecallTest, PaperAndScaleChosenForASheetComeBackInTheNextList) {
  cad::Database db = ThreeFrames();
  // Sheet 2 was given A2; sheet 3 a paper the list no longer has, at 1:50.
  Remember(db, {{47000, 70.71, "TV_A2"}, {94000, 50, "TV_Gone"}});
  const std::string drawing = Write("plan.dxf", db);

  const nlohmann::json first = Sheets(Run({"sheets", drawing, "--json"}));
  ASSERT_EQ(first.size(), 3u);
  EXPECT_EQ(first[0]["paperName"], "TV_A3");
  EXPECT_EQ(first[1]["paperName"], "TV_A2");
  EXPECT_EQ(first[1]["scaleText"], "1:70.71");
  EXPECT_EQ(first[2]["scaleText"], "1:50");

  // A run stores the list's choices in the drawing; the saved drawing's list shows them again.
  const std::string saved = Path("saved.dxf").string();
  const RunResult run = Batch(drawing, {}, saved);
  ASSERT_EQ(run.exitCode, 0) << run.out << run.err;
  const nlohmann::json again = Sheets(Run({"sheets", saved, "--json"}));
  ASSERT_EQ(again.size(), 3u);
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_EQ(again[i]["paperName"], first[i]["paperName"]) << i;
    EXPECT_EQ(again[i]["scaleText"], first[i]["scaleText"]) << i;
  }
}

TEST_F(ReviewRecallTest, TitleBlockListTakesTheStoredPaperToo) {
  const std::string tk = Path("titleblocks.tk").string();
  ASSERT_TRUE(titleblock::SaveTkFileTo(samples::BuildTitleBlockLibrary(), tk, false));
  const nlohmann::json plain = Sheets(Run({"titleblock", Write("plain.dxf", samples::BuildTitleBlockDrawing()), "--tk", tk, "--json"}));
  ASSERT_FALSE(plain.empty());
  const nlohmann::json& first = plain[0];
  EXPECT_TRUE(first.contains("size") && first.contains("note") && first.contains("file_name")) << first;
  const std::string other = first["paperName"] == "TV_A0" ? "TV_A4" : "TV_A0";

  cad::Database db = samples::BuildTitleBlockDrawing();
  std::vector<host::XrecordItem> items{{90, std::int32_t{1}}, {90, std::int32_t{20240329}}};
  for (const char* key : {"minX", "minY", "maxX", "maxY"}) items.push_back({40, first[key].get<double>()});
  items.push_back({40, 0.0});
  items.push_back({1, other});
  ASSERT_TRUE(host::WriteNamedXrecordInto(db, "SC_INFOR", items));
  const nlohmann::json stored = Sheets(Run({"titleblock", Write("stored.dxf", db), "--tk", tk, "--json"}));
  ASSERT_EQ(stored.size(), plain.size());
  EXPECT_EQ(stored[0]["paperName"], other);
  EXPECT_NE(stored[0]["scale"], first["scale"]);
  for (std::size_t i = 1; i < stored.size(); ++i) EXPECT_EQ(stored[i]["paperName"], plain[i]["paperName"]) << i;
}

TEST_F(ReviewRecallTest, MarkerErasedWhileTheListIsOpenTakesItsRowOutOfTheRun) {
  const std::string drawing = Write("plan.dxf", ThreeFrames());
  // The window holds the second frame with its marker and its line.
  const RunResult r = Batch(drawing, {"ERASE", "W 46000,-1000 90000,30700", ""});
  ASSERT_EQ(r.exitCode, 0) << r.out << r.err;
  EXPECT_TRUE(Has(r.out, "删除了 3 个对象")) << r.out;
  // Two sheets are plotted: the user's erasure took one row, the run's own erasure of the markers
  // took none.
  EXPECT_EQ(FilesUnder(Path(""), ".pdf").size(), 2u) << r.out;
}

TEST_F(ReviewRecallTest, PreviewWritesTheRowsPageFittedToTheScreen) {
  const std::string drawing = Write("plan.dxf", ThreeFrames());
  const RunResult r = Run({"sheets", drawing, "--preview", "2"}, {}, home_.string());
  ASSERT_EQ(r.exitCode, 0) << r.out << r.err;
  const std::size_t at = r.out.find("打印预览：");
  ASSERT_NE(at, std::string::npos) << r.out;
  std::string path = r.out.substr(at + std::string("打印预览：").size());
  path = path.substr(0, path.find('\n'));
  const std::string png = ReadFile(path);
  ASSERT_GT(png.size(), 24u) << path;
  EXPECT_EQ(png.substr(1, 3), "PNG");
  const auto be32 = [&png](std::size_t at) {
    return (static_cast<unsigned char>(png[at]) << 24) | (static_cast<unsigned char>(png[at + 1]) << 16) |
           (static_cast<unsigned char>(png[at + 2]) << 8) | static_cast<unsigned char>(png[at + 3]);
  };
  // An A3 landscape page on the console's 1600 x 900 screen: the height fills it.
  EXPECT_EQ(be32(20), 900u);
  EXPECT_NEAR(be32(16), 900.0 * 420 / 297, 2.0);

  // A paper above the ceiling is not previewed.
  const std::string long_ = Write("long.dxf", FramesInARow({{60000, 10000}}));
  const RunResult huge = Run({"sheets", long_, "--scale", "1", "--preview", "1"}, {}, home_.string());
  EXPECT_EQ(huge.exitCode, 5);
  EXPECT_TRUE(Has(huge.err, "纸张尺寸过大，已超过 5080 mm")) << huge.err;
  EXPECT_TRUE(Has(huge.err, "打印预览退出 !")) << huge.err;
  const RunResult none = Run({"sheets", drawing, "--preview", "4"}, {}, home_.string());
  EXPECT_EQ(none.exitCode, 5);
}

TEST_F(ReviewRecallTest, ListingNamesTheFilesThePlotWrites) {
  const std::string drawing = Write("plan.dxf", ThreeFrames());
  const nlohmann::json sheets = Sheets(Run({"sheets", drawing, "--json"}));
  const RunResult text = Run({"sheets", drawing});
  const RunResult plot = Run({"plot", drawing, "--out", Path("out").string()});
  ASSERT_EQ(plot.exitCode, 0) << plot.err;
  std::vector<std::string> listed;
  for (const auto& s : sheets) {
    listed.push_back(s["fileName"].get<std::string>() + ".pdf");
    EXPECT_TRUE(Has(text.out, s["fileName"].get<std::string>())) << text.out;
  }
  std::sort(listed.begin(), listed.end());
  EXPECT_EQ(FilesIn(Path("out")), listed);
  EXPECT_TRUE(Has(text.out, "  文 件 名  ")) << text.out;
}

}  // namespace
}  // namespace tv::cli
