// `tvplot plot --format dwg` as users run it: each sheet of a drawing cut into a drawing file of
// its own, which `tvplot info` reads and in which `tvplot sheets` finds the same sheet again.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <regex>
#include <string>
#include <vector>

#include "../support/frame_drawings.h"
#include "../support/tvplot_test.h"
#include "cad/dxf_reader.h"
#include "examples/sample_drawing.h"
#include "examples/sample_library.h"
#include "titleblock/tk_library.h"

namespace tv::cli {
namespace {

namespace fs = std::filesystem;

using namespace test_support;

// One sheet of `tvplot sheets --json`.
struct ListedSheet {
  std::string layout, paper;
  double scale = 0, minX = 0, minY = 0, maxX = 0, maxY = 0;
};

std::vector<ListedSheet> ParseSheets(const std::string& json) {
  std::vector<ListedSheet> sheets;
  const auto text = [](const std::string& chunk, const std::string& key) {
    std::smatch m;
    return std::regex_search(chunk, m, std::regex("\"" + key + "\": \"([^\"]*)\"")) ? m[1].str() : std::string();
  };
  const auto number = [](const std::string& chunk, const std::string& key) {
    std::smatch m;
    return std::regex_search(chunk, m, std::regex("\"" + key + "\": (-?[0-9.eE+-]+)")) ? std::stod(m[1]) : NAN;
  };
  for (std::size_t at = json.find("\"number\": "); at != std::string::npos;) {
    const std::size_t next = json.find("\"number\": ", at + 1);
    const std::string chunk = json.substr(at, next == std::string::npos ? std::string::npos : next - at);
    sheets.push_back({text(chunk, "layout"), text(chunk, "paper"), number(chunk, "scale"), number(chunk, "minX"),
                      number(chunk, "minY"), number(chunk, "maxX"), number(chunk, "maxY")});
    at = next;
  }
  return sheets;
}

class SheetFilesTest : public TvplotTest {
 protected:
  static std::vector<ListedSheet> Listed(const std::string& path, const std::string& range) {
    const RunResult r = Run({"sheets", path, "--range", range, "--json"});
    EXPECT_EQ(r.exitCode, 0) << path << r.err;
    return ParseSheets(r.out);
  }
};

TEST_F(SheetFilesTest, EverySheetOfTheSampleSetBecomesAFileThatHoldsTheSameSheet) {
  const std::string sample = Write("sample.dxf", samples::BuildSampleDrawing());
  const std::string original = ReadFile(sample);
  const std::vector<ListedSheet> sheets = Listed(sample, "all");
  ASSERT_EQ(sheets.size(), 17u);

  const fs::path out = dir_ / "out";
  const RunResult r = Run({"plot", sample, "--format", "dwg", "--out", out.string()});
  ASSERT_EQ(r.exitCode, 0) << r.err << r.out;
  EXPECT_TRUE(Has(r.out, "共 17 张图纸，已输出 17 个文件")) << r.out;
  std::vector<std::string> expected;
  for (int i = 1; i <= 17; ++i) expected.push_back("sample" + std::string(i < 10 ? "0" : "") + std::to_string(i) + ".dxf");
  ASSERT_EQ(FilesIn(out), expected) << "one file per sheet, nothing else";
  EXPECT_EQ(ReadFile(sample), original) << "the drawing is never written";

  for (std::size_t i = 0; i < sheets.size(); ++i) {
    const ListedSheet& want = sheets[i];
    const fs::path file = out / expected[i];
    SCOPED_TRACE(file.string());
    const RunResult info = Run({"info", file.string()});
    EXPECT_EQ(info.exitCode, 0) << info.err;

    // The sheet comes back centred on the origin, on the same paper at the same scale; a layout
    // sheet in the file's one layout, named after the file.
    const bool layout = want.layout != "Model";
    const std::vector<ListedSheet> found = Listed(file.string(), layout ? "layouts" : "model");
    const double w = want.maxX - want.minX, h = want.maxY - want.minY;
    const auto same = [&](const ListedSheet& s) {
      return s.paper == want.paper && s.scale == want.scale && std::abs((s.maxX - s.minX) - w) < 1e-6 &&
             std::abs((s.maxY - s.minY) - h) < 1e-6 && std::abs(s.minX + s.maxX) < 1e-6 && std::abs(s.minY + s.maxY) < 1e-6;
    };
    EXPECT_TRUE(std::ranges::any_of(found, same)) << want.paper << " 1:" << want.scale << " among " << found.size();
    if (layout) {
      for (const ListedSheet& s : found) EXPECT_EQ(s.layout, fs::path(expected[i]).stem().string());
    }
  }
}

TEST_F(SheetFilesTest, AFileHoldsItsSheetsEntitiesAndTheNamesTheyUseOnly) {
  // Two frames side by side; a layer, a linetype, a text style and a block used by the first only.
  cad::Database db = test_support::FramesInARow({{42000, 29700}, {42000, 29700}});
  cad::Linetype& dashed = db.addLinetype("DASHED");
  dashed.dashes = {{.length = 500}, {.length = -250}};
  dashed.patternLength = 750;
  cad::Layer& only = db.addLayer("只在一号图");
  only.linetype = dashed.id;
  only.colorIndex = 3;
  cad::TextStyle& style = db.addTextStyle("HZ");
  style.fontFile = "gbenor.shx";
  cad::BlockRecord& mark = db.addBlock("MARK");
  db.append(mark, std::make_unique<cad::Circle>()).radius = 100;
  auto text = std::make_unique<cad::Text>();
  text->position = {5000, 5000, 0};
  text->height = 350;
  text->text = "一号";
  text->style = style.id;
  text->layer = only.id;
  db.append(*db.modelSpace(), std::move(text));
  auto insert = std::make_unique<cad::Insert>();
  insert->block = mark.id;
  insert->position = {8000, 8000, 0};
  db.append(*db.modelSpace(), std::move(insert));
  db.header.setString("$DWGCODEPAGE", "ANSI_936", 3);
  const std::string plan = Write("plan.dxf", db);

  const fs::path out = dir_ / "out";
  const RunResult r = Run({"plot", plan, "--format", "dwg", "--out", out.string()});
  ASSERT_EQ(r.exitCode, 0) << r.err << r.out;
  ASSERT_EQ(FilesIn(out), (std::vector<std::string>{"plan01.dxf", "plan02.dxf"}));

  const cad::DxfReadResult first = cad::ReadDxf((out / "plan01.dxf").string());
  const cad::DxfReadResult second = cad::ReadDxf((out / "plan02.dxf").string());
  ASSERT_TRUE(first.ok()) << first.error;
  ASSERT_TRUE(second.ok()) << second.error;
  for (const auto& [name, in, inFirst] : std::vector<std::tuple<std::string, const cad::Database*, bool>>{
           {"first", &*first.db, true}, {"second", &*second.db, false}}) {
    SCOPED_TRACE(name);
    EXPECT_EQ(in->findLayer("只在一号图") != nullptr, inFirst);
    EXPECT_EQ(in->findLinetype("DASHED") != nullptr, inFirst);
    EXPECT_EQ(in->findTextStyle("HZ") != nullptr, inFirst);
    EXPECT_EQ(in->findBlock("MARK") != nullptr, inFirst);
    EXPECT_EQ(in->codePage(), "ANSI_936");
  }
  if (const cad::Layer* layer = first.db->findLayer("只在一号图")) {
    EXPECT_EQ(layer->colorIndex, 3);
    const cad::Linetype* lt = first.db->objectAs<cad::Linetype>(layer->linetype);
    ASSERT_NE(lt, nullptr);
    EXPECT_EQ(lt->name, "DASHED");
  }
}

// The types of the entities a sheet file's sheet block holds, in order.
std::vector<std::string> SheetBlockContent(const cad::Database& db) {
  std::vector<std::string> types;
  for (const auto& block : db.blocks)
    if (block->name.starts_with("BK"))
      db.forEachEntity(*block, [&](const cad::Entity& e) { types.push_back(e.dxfName()); });
  return types;
}

TEST_F(SheetFilesTest, ASheetTakesWhatLiesInItsFrameAndLinesThatCrossIt) {
  // Frames of 42000 x 29700 at x 0 and 47000, each with a line across its middle.
  cad::Database db = test_support::FramesInARow({{42000, 29700}, {42000, 29700}});
  const auto line = [&](Point3d a, Point3d b, ObjectId layer = {}) {
    auto l = std::make_unique<cad::Line>();
    l->start = a;
    l->end = b;
    if (!layer.isNull()) l->layer = layer;
    db.append(*db.modelSpace(), std::move(l));
  };
  line({0, 0, 0}, {42000, 0, 0});                      // along the first frame's bottom edge: first
  line({-100000, 15000, 0}, {200000, 15000, 0});       // across both, long: both
  line({-1e7, -1e7, 0}, {1e7, 1e7, 0});                // diagonal, far longer than a sheet: none
  line({43000, 1000, 0}, {46000, 28000, 0});           // in the gap between them: none
  cad::Layer& frozen = db.addLayer("冻结");
  frozen.setFrozen(true);
  line({1000, 1000, 0}, {2000, 2000, 0}, frozen.id);   // inside the first, frozen: none
  const std::string plan = Write("plan.dxf", db);

  const fs::path out = dir_ / "out";
  const RunResult r = Run({"plot", plan, "--format", "dwg", "--out", out.string()});
  ASSERT_EQ(r.exitCode, 0) << r.err << r.out;
  const cad::DxfReadResult first = cad::ReadDxf((out / "plan01.dxf").string());
  const cad::DxfReadResult second = cad::ReadDxf((out / "plan02.dxf").string());
  ASSERT_TRUE(first.ok() && second.ok());
  EXPECT_EQ(SheetBlockContent(*first.db), (std::vector<std::string>{"LWPOLYLINE", "LINE", "LINE", "LINE"}));
  EXPECT_EQ(SheetBlockContent(*second.db), (std::vector<std::string>{"LWPOLYLINE", "LINE", "LINE"}));
  EXPECT_EQ(first.db->findLayer("冻结"), nullptr);
}

TEST_F(SheetFilesTest, AnOpenFileIsReportedAndTheOtherSheetsGoOn) {
  const std::string plan = Write("plan.dxf", test_support::FramesInARow({{42000, 29700}, {42000, 29700}}));
  const fs::path out = dir_ / "out";
  // A folder where the first file would go stands for a file that can't be replaced.
  fs::create_directories(out / "plan01.dxf" / "inside");
  const RunResult r = Run({"plot", plan, "--format", "dwg", "--out", out.string()});
  EXPECT_NE(r.exitCode, 0);
  EXPECT_TRUE(Has(r.err, "可能处于打开状态，无法覆盖")) << r.err << r.out;
  EXPECT_TRUE(fs::is_regular_file(out / "plan02.dxf"));
  EXPECT_TRUE(Has(r.out, "已输出 1 个文件")) << r.out;
}

TEST_F(SheetFilesTest, TheTitleBlockBatchCutsItsSheetsIntoFilesNamedByTheirFields) {
  const std::string drawing = Write("titleblocks.dxf", samples::BuildTitleBlockDrawing());
  const std::string tk = Path("titleblocks.tk").string();
  ASSERT_TRUE(titleblock::SaveTkFileTo(samples::BuildTitleBlockLibrary(), tk, false));
  const fs::path out = dir_ / "out";
  const RunResult r = Run({"titleblock", drawing, "--tk", tk, "--plot", "--format", "dwg", "--out", out.string()});
  ASSERT_EQ(r.exitCode, 0) << r.err << r.out;
  const std::vector<std::string> files = FilesIn(out);
  ASSERT_EQ(files.size(), 4u);
  EXPECT_TRUE(std::ranges::find(files, "结施-01_A_基础平面图.dxf") != files.end());
  for (const std::string& name : files) {
    EXPECT_TRUE(name.ends_with(".dxf")) << name;
    EXPECT_EQ(Run({"info", (out / name).string()}).exitCode, 0) << name;
  }
}

}  // namespace
}  // namespace tv::cli
