// `tvplot sign capture` and the add button of the signature library form, as users run them, on a
// drawing built here and a data folder of the test's own.
#include <gtest/gtest.h>

#include <sstream>

#include "../render/plot_test_support.h"
#include "../support/corpus.h"
#include "../support/entity_builders.h"
#include "../support/frame_drawings.h"
#include "../support/tvplot_test.h"
#include "signing/sign_library.h"

namespace tv::cli {
namespace {

namespace fs = std::filesystem;
using namespace test_support;

class SignCaptureTest : public TvplotTest {
 protected:
  void SetUp() override {
    TvplotTest::SetUp();
    fs::create_directories(data_ + "/Tarvex");
    // "口": the outer square of lines, traced with a duplicate and in overlapping pieces; the
    // counter a polyline with arcs, on a layer of its own. An open stroke lies beside them.
    cad::Database db = cad::Database::createDefault();
    cad::BlockRecord& model = *db.modelSpace();
    for (auto [a, b] : std::vector<std::pair<cad::Point3d, cad::Point3d>>{
             {{0, 0}, {60, 0}}, {{40, 0}, {100, 0}}, {{100, 0}, {100, 100}}, {{0, 100}, {100, 100}},
             {{0, 100}, {0, 0}}, {{100, 100}, {100, 0}}})
      db.append(model, MakeLine(a, b));
    auto counter = MakeLwPolyline({{30, 30}, {70, 30}, {70, 70}, {30, 70}}, true, {0, 0.3, 0, 0.3});
    counter->layer = db.addLayer("INNER").id;
    db.append(model, std::move(counter));
    auto stroke = MakeLine({200, 0}, {260, 50});
    stroke->layer = db.addLayer("STROKE").id;
    db.append(model, std::move(stroke));
    drawing_ = Write("口.dxf", db);
  }

  RunResult Tvplot(std::vector<std::string> args) {
    args.insert(args.begin(), {"XDG_DATA_HOME=" + data_, TV_TVPLOT_PATH});
    return RunProgram("/usr/bin/env", args);
  }

  RunResult Capture(std::vector<std::string> options) {
    options.insert(options.begin(), {"sign", "capture", drawing_});
    return Tvplot(options);
  }

  // The row of `name` in `tvplot sign list`, split at blanks.
  std::vector<std::string> ListedRow(const std::string& name) {
    const RunResult list = Tvplot({"sign", "list"});
    EXPECT_EQ(list.exitCode, 0) << list.err;
    std::istringstream lines(list.out);
    for (std::string line; std::getline(lines, line);) {
      std::istringstream words(line);
      std::vector<std::string> row;
      for (std::string w; words >> w;) row.push_back(w);
      if (row.size() > 3 && row[2] == name) return row;
    }
    ADD_FAILURE() << name << " not listed:\n" << list.out;
    return {};
  }

  const std::string data_ = Path("data").string();
  const std::string library_ = data_ + "/Tarvex/Sign.tvlib1";
  std::string drawing_;
};

TEST_F(SignCaptureTest, CapturesTheCurvesIntoTheLibraryAndRefusesWhatCannotBeAdded) {
  const RunResult first = Capture({"--id", "42", "--name", " 张三 ", "--code", "123"});
  ASSERT_EQ(first.exitCode, 0) << first.err;
  EXPECT_NE(first.out.find("已录入签名 张三（人员编号 42，2 个轮廓"), std::string::npos) << first.out;
  // Row: number, person number, name, outlines, ...
  const std::vector<std::string> row = ListedRow("张三");
  ASSERT_GT(row.size(), 3u);
  EXPECT_EQ(row[1], "42");
  EXPECT_EQ(row[3], "2");

  signing::SignLibrary library;
  signing::LoadSignLibrary(library, library_, false);
  ASSERT_EQ(library.signs.size(), 1u);
  const signing::TV_Sign& sign = *library.signs[0];
  EXPECT_EQ(sign.auth_code, 123);
  EXPECT_EQ(sign.shapes[0]->is_outer, 1);
  EXPECT_EQ(sign.shapes[1]->is_outer, 0);
  EXPECT_NEAR(sign.width, 100, 1e-4);  // already larger than 200 in sum: kept
  EXPECT_NEAR(sign.height, 100, 1e-4);

  struct Case {
    const char* what;
    std::vector<std::string> options;
    int exitCode;
    std::string err;
  };
  const std::vector<Case> refused = {
      {"person number taken", {"--id", "42", "--name", "李四"}, 6, "已有人员编号 42"},
      {"nothing in the window", {"--id", "43", "--name", "李四", "--window", "500,500,600,600"}, 7, "没有选中"},
      {"an open stroke", {"--id", "43", "--name", "李四", "--layer", "stroke"}, 7, "签名边线不封闭或签名边线不在X-Y平面内!"},
      {"no --id", {"--name", "李四"}, 1, "缺少 --id"},
      {"blank name", {"--id", "43", "--name", "  "}, 1, "姓名不能为空 !"},
      {"code out of range", {"--id", "43", "--name", "李四", "--code", "1000000"}, 1, "--code"},
      {"window and layer", {"--id", "43", "--name", "李四", "--window", "0,0,1,1", "--layer", "0"}, 1, "只能给出其一"},
      {"flat window", {"--id", "43", "--name", "李四", "--window", "0,0,0,10"}, 1, "--window X1,Y1,X2,Y2"},
  };
  const std::string before = ReadFile(library_);
  for (const Case& c : refused) {
    const RunResult r = Capture(c.options);
    EXPECT_EQ(r.exitCode, c.exitCode) << c.what << '\n' << r.err;
    EXPECT_NE(r.err.find(c.err), std::string::npos) << c.what << '\n' << r.err;
    EXPECT_EQ(ReadFile(library_), before) << c.what;
  }
  const RunResult missing = Tvplot({"sign", "capture", Path("none.dxf").string(), "--id", "43", "--name", "李四"});
  EXPECT_EQ(missing.exitCode, 2) << missing.err;
  const RunResult listWithId = Tvplot({"sign", "list", "--id", "43"});
  EXPECT_EQ(listWithId.exitCode, 1) << listWithId.err;

  // The counter alone, by its layer or by a window around it, is one outline.
  for (const auto& [id, options] : std::vector<std::pair<std::string, std::vector<std::string>>>{
           {"43", {"--layer", "inner"}}, {"44", {"--window", "20,20,80,80"}}}) {
    std::vector<std::string> args{"--id", id, "--name", "王" + id};
    args.insert(args.end(), options.begin(), options.end());
    const RunResult r = Capture(args);
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_EQ(ListedRow("王" + id).at(3), "1");
  }
}

// The "口" captured here, placed in a frame and plotted: the outer band inks, the counter stays
// paper, and nothing shows with signatures off. A turned copy of the sheet keeps its signature.
TEST_F(SignCaptureTest, ACapturedSignaturePlacedAgainPlotsWithItsHole) {
  ASSERT_EQ(Capture({"--id", "8", "--name", "王五"}).exitCode, 0);
  const std::string plan = Write("plan.dxf", FramesInARow({{42000, 29700}}));
  const std::string signedPlan = Path("signed.dxf").string();
  const RunResult placed = Tvplot({"sign", "place", plan, "--id", "8", "--at", "20000,3000", "--to", "30000,13000",
                                   "--out", signedPlan});
  ASSERT_EQ(placed.exitCode, 0) << placed.err;

  for (const std::string signatures : {"yes", "no"}) {
    SCOPED_TRACE(signatures);
    const fs::path out = Path("png_" + signatures);
    const RunResult r = Tvplot({"plot", signedPlan, "--format", "png", "--margin", "0", "--out", out.string(),
                                "--signatures", signatures});
    ASSERT_EQ(r.exitCode, 0) << r.err << r.out;
    const std::vector<std::string> files = FilesIn(out);
    ASSERT_EQ(files.size(), 1u);
    const render::test::Picture png((out / files[0]).string());
    ASSERT_TRUE(png.ok());
    // The sheet, 42000 x 29700 units, fills the page; the signature spans 20000..30000 x 3000..13000.
    const auto at = [&](double x, double y) {
      const render::Rgb c = png.at(static_cast<int>(x / 42000 * png.width()),
                                         static_cast<int>((1 - y / 29700) * png.height()));
      return std::min({c.r, c.g, c.b}) < 128;
    };
    const bool on = signatures == "yes";
    EXPECT_EQ(at(20400, 8000), on) << "left band";
    EXPECT_EQ(at(25000, 12600), on) << "top band";
    EXPECT_FALSE(at(25000, 8000)) << "counter";
    EXPECT_FALSE(at(19000, 8000)) << "outside";
  }
}

TEST_F(SignCaptureTest, TheLibraryFormAddsFromTheLinesPicked) {
  const RunResult r = Tvplot({"run", drawing_, "TV_BatchPlot_6", "--answer", "A", "--answer", "W -10,-10 110,110",
                              "--answer", "赵六", "--answer", "0", "--answer", "O"});
  ASSERT_EQ(r.exitCode, 0) << r.out << r.err;
  const std::vector<std::string> row = ListedRow("赵六");
  ASSERT_GT(row.size(), 3u);
  EXPECT_EQ(row[3], "2");
}

// Drawings of other programs: outlines drawn as polylines and circles, and a loop of lines and arcs
// that crosses itself, which encloses no region.
TEST_F(SignCaptureTest, CorpusDrawings) {
  const fs::path root = CorpusDir() / "ezdxf";
  TV_SKIP_WITHOUT_CORPUS(root);
  struct Case {
    const char* file;
    int exitCode;
    std::vector<std::int32_t> outer;  // is_outer of the outlines in order
  };
  const std::vector<Case> cases = {
      {"examples_dxf/hatch_text_box_in_hole.dxf", 0, {1, 0}},
      {"examples_dxf/circle_radius_le_0.dxf", 0, {1}},
      {"examples/edgeminer/6_closed_loop_with_arcs.dxf", 7, {}},
  };
  std::int32_t id = 100;
  for (const Case& c : cases) {
    const fs::path file = root / c.file;
    TV_SKIP_WITHOUT_CORPUS(file);
    const RunResult r = Tvplot({"sign", "capture", file.string(), "--id", std::to_string(++id), "--name", c.file});
    EXPECT_EQ(r.exitCode, c.exitCode) << c.file << '\n' << r.err;
    signing::SignLibrary library;
    signing::LoadSignLibrary(library, library_, false);
    const signing::TV_Sign* sign = signing::FindSignById(library, id);
    std::vector<std::int32_t> outer;
    if (sign)
      for (const auto& shape : sign->shapes) outer.push_back(shape->is_outer);
    EXPECT_EQ(outer, c.outer) << c.file;
  }
}

}  // namespace
}  // namespace tv::cli
