// `tvplot plot --format dwg` as users run it: each sheet of a drawing cut into a drawing file of
// its own, which `tvplot info` reads and in which `tvplot sheets` finds the same sheet again.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <regex>
#include <string>
#include <vector>

#include "../support/corpus.h"
#include "../support/frame_drawings.h"
#include "../support/tvplot_test.h"
#include "cad/dxf_reader.h"
#include "cad/layout_viewport.h"
#include "host/cad_binding.h"
#include "paper/scale_fitting.h"
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

  // What a file keeps of its sheet, centred on the origin: the stored scale and paper of the
  // sheet, the limits of its space, the extents of what it holds, and a view (for a layout sheet
  // the layout's own viewport) that looks at it.
  static void ExpectFileKeepsSheet(const fs::path& file, const ListedSheet& want, bool layout) {
    cad::DxfReadResult read = cad::ReadDxf(file.string());
    ASSERT_TRUE(read.ok()) << read.error;
    cad::Database& db = *read.db;
    const double w = (want.maxX - want.minX) / 2, h = (want.maxY - want.minY) / 2, tol = 1e-6 * std::max(1.0, w + h);
    std::vector<paper::InfoRow> stored;
    host::SetWorkingDatabase(&db);
    paper::ReadScInfor(stored);
    host::SetWorkingDatabase(nullptr);
    ASSERT_EQ(stored.size(), 1u);
    EXPECT_NEAR(stored[0].minX, -w, tol);
    EXPECT_NEAR(stored[0].maxY, h, tol);
    EXPECT_EQ(stored[0].scale, want.scale);
    EXPECT_FALSE(stored[0].paperName.empty());

    const cad::Header& hd = db.header;
    const char* prefix = layout ? "$P" : "$";
    EXPECT_NEAR(hd.getPoint(std::string(prefix) + "LIMMIN").x, -w, tol);
    EXPECT_NEAR(hd.getPoint(std::string(prefix) + "LIMMAX").y, h, tol);
    const Point3d lo = hd.getPoint(std::string(prefix) + "EXTMIN"), hi = hd.getPoint(std::string(prefix) + "EXTMAX");
    EXPECT_TRUE(lo.x <= hi.x && lo.y <= hi.y) << "extents of what the file holds";
    EXPECT_LT(lo.x, w);
    EXPECT_GT(hi.x, -w);
    if (layout) {
      const cad::BlockRecord& paper = *db.paperSpace();
      const auto* own = db.objectAs<cad::Viewport>(cad::LayoutViewportOf(db, paper));
      ASSERT_NE(own, nullptr);
      EXPECT_NEAR(own->viewCenter.x, 0, tol);
      EXPECT_GE(own->viewHeight, 2 * h);
      EXPECT_NEAR(db.layoutOf(paper)->limitsMin.y, -h, tol);
    }
  }

  // Cuts `drawing` into `out` and checks every file: `tvplot info` reads it, and `tvplot sheets`
  // finds the sheet again centred on the origin, with `samePaper` on the same paper at the same
  // scale; a layout sheet in the file's layout, named after the file. The number of sheets.
  std::size_t SplitAndFindAgain(const std::string& drawing, const fs::path& out, bool samePaper) const {
    const std::vector<ListedSheet> sheets = Listed(drawing, "all");
    const RunResult r = Run({"plot", drawing, "--format", "dwg", "--out", out.string(), "--range", "all"});
    EXPECT_EQ(r.exitCode, 0) << r.err << r.out;
    const std::vector<std::string> files = FilesIn(out);
    EXPECT_EQ(files.size(), sheets.size());
    for (std::size_t i = 0; i < sheets.size() && i < files.size(); ++i) {
      const ListedSheet& want = sheets[i];
      const fs::path file = out / files[i];
      SCOPED_TRACE(file.string());
      EXPECT_TRUE(files[i].ends_with(".dxf"));
      const RunResult info = Run({"info", file.string()});
      EXPECT_EQ(info.exitCode, 0) << info.err;
      const bool layout = want.layout != "Model";
      const std::vector<ListedSheet> found = Listed(file.string(), layout ? "layouts" : "model");
      const double w = want.maxX - want.minX, h = want.maxY - want.minY, tol = 1e-6 * std::max(1.0, w + h);
      const auto same = [&](const ListedSheet& s) {
        return (!samePaper || (s.paper == want.paper && s.scale == want.scale)) && std::abs((s.maxX - s.minX) - w) < tol &&
               std::abs((s.maxY - s.minY) - h) < tol && std::abs(s.minX + s.maxX) < tol && std::abs(s.minY + s.maxY) < tol;
      };
      EXPECT_TRUE(std::ranges::any_of(found, same)) << want.paper << " 1:" << want.scale << " among " << found.size();
      if (layout) {
        for (const ListedSheet& s : found) EXPECT_EQ(s.layout, fs::path(files[i]).stem().string());
      }
      ExpectFileKeepsSheet(file, want, layout);
    }
    return sheets.size();
  }
};

TEST_F(SheetFilesTest, EverySheetOfTheSampleSetBecomesAFileThatHoldsTheSameSheet) {
  // Frames as polylines, blocks and loose lines in model space at several scales, and layout
  // frames with viewports onto model space.
  const std::string sample = Write("sample.dxf", samples::BuildSampleDrawing());
  const std::string original = ReadFile(sample);
  EXPECT_EQ(SplitAndFindAgain(sample, dir_ / "out", true), 17u);
  EXPECT_EQ(FilesIn(dir_ / "out").front(), "sample01.dxf");
  EXPECT_EQ(ReadFile(sample), original) << "the drawing is never written";
  EXPECT_EQ(FilesIn(dir_.path()), (std::vector<std::string>{"out", "sample.dxf"})) << "nothing written beside it";
}

// Their sheets are found again in their files; the papers fitted to their odd sizes may differ,
// since the list of the whole drawing merges papers of one proportion across sheets.
TEST_F(SheetFilesTest, DrawingsOfOtherProgramsAreCutAlike) {
  const fs::path folder = test_support::CorpusDir() / "acadsharp";
  TV_SKIP_WITHOUT_CORPUS(folder);
  for (const char* name : {"sample_AC1015_ascii.dxf", "sample_AC1032_ascii.dxf"}) {
    const fs::path drawing = folder / name;
    TV_SKIP_WITHOUT_CORPUS(drawing);
    SCOPED_TRACE(name);
    EXPECT_GT(SplitAndFindAgain(drawing.string(), dir_ / fs::path(name).stem(), false), 0u);
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

// Every entity of a drawing, spaces and blocks alike.
template <class F>
void ForEveryEntity(const cad::Database& db, F&& f) {
  for (const auto& block : db.blocks) db.forEachEntity(*block, f);
}

TEST_F(SheetFilesTest, ASheetKeepsTheObjectsItsEntitiesNeed) {
  cad::Database db = test_support::FramesInARow({{42000, 29700}, {42000, 29700}});
  cad::Dictionary& root = *db.rootDictionary();
  fs::create_directories(dir_ / "pictures");
  WriteText("pictures/red.png", "a picture");  // found by its name relative to the drawing
  auto def = std::make_unique<cad::ImageDef>();
  def->fileName = "pictures\\red.png";
  def->imageSize = {10, 10};
  cad::Dictionary& images = db.ensureDictionary(root, "ACAD_IMAGE_DICT");
  images.set("red", db.addObject(std::move(def), images.id).id);
  const auto raster = [&](auto e, double at) {
    e->position = {at, at, 0};
    e->uPixel = {100, 0, 0};
    e->vPixel = {0, 100, 0};
    e->imageSize = {10, 10};
    return e;
  };
  auto image = raster(std::make_unique<cad::Image>(), 1000);
  image->imageDef = images.find("red");
  const ObjectId imageId = db.append(*db.modelSpace(), std::move(image)).id;
  db.append(*db.modelSpace(), raster(std::make_unique<cad::Wipeout>(), 3000));
  auto vars = std::make_unique<cad::GenericObject>();
  vars->name = "WIPEOUTVARIABLES";
  vars->groups = {{100, std::string("AcDbWipeoutVariables")}, {70, std::int64_t{1}}};
  root.set("ACAD_WIPEOUT_VARS", db.addObject(std::move(vars), root.id).id);
  // A block with a multileader naming its style, inserted in the first sheet.
  cad::Dictionary& styles = db.ensureDictionary(root, "ACAD_MLEADERSTYLE");
  auto style = std::make_unique<cad::GenericObject>();
  style->name = "MLEADERSTYLE";
  style->groups = {{100, std::string("AcDbMLeaderStyle")}, {342, db.findTextStyle("Standard")->id}};
  styles.set("Notes", db.addObject(std::move(style), styles.id).id);
  cad::BlockRecord& note = db.addBlock("NOTE");
  auto leader = std::make_unique<cad::ProxyEntity>();
  leader->name = "MULTILEADER";
  leader->groups = {{100, std::string("AcDbMLeader")}, {340, styles.find("Notes")}};
  db.append(note, std::move(leader));
  auto stroke = std::make_unique<cad::Line>();
  stroke->end = {500, 500, 0};
  db.append(note, std::move(stroke));
  auto insert = std::make_unique<cad::Insert>();
  insert->block = note.id;
  insert->position = {5000, 5000, 0};
  db.append(*db.modelSpace(), std::move(insert));
  // A group across both sheets.
  auto line = std::make_unique<cad::Line>();
  line->start = {50000, 1000, 0};
  line->end = {51000, 2000, 0};
  const ObjectId lineId = db.append(*db.modelSpace(), std::move(line)).id;
  cad::Dictionary& groups = *db.namedDictionary("ACAD_GROUP");
  auto group = std::make_unique<cad::GenericObject>();
  group->name = "GROUP";
  group->groups = {{100, std::string("AcDbGroup")}, {300, std::string()}, {70, std::int64_t{0}}, {71, std::int64_t{1}},
                   {340, imageId}, {340, lineId}};
  groups.set("G1", db.addObject(std::move(group), groups.id).id);
  const std::string plan = Write("plan.dxf", db);

  const fs::path out = dir_ / "out";  // not beside the picture
  const RunResult r = Run({"plot", plan, "--format", "dwg", "--out", out.string()});
  ASSERT_EQ(r.exitCode, 0) << r.err << r.out;
  struct Case {
    const char* file;
    const char* groupMember;  // the type of the one member the group keeps
    bool image;
  };
  for (const Case c : {Case{"plan01.dxf", "IMAGE", true}, Case{"plan02.dxf", "LINE", false}}) {
    SCOPED_TRACE(c.file);
    EXPECT_EQ(Run({"info", (out / c.file).string()}).exitCode, 0);
    const cad::DxfReadResult read = cad::ReadDxf((out / c.file).string());
    ASSERT_TRUE(read.ok()) << read.error;
    const cad::Database& copy = *read.db;
    const cad::Image* found = nullptr;
    const cad::ProxyEntity* proxy = nullptr;
    ForEveryEntity(copy, [&](const cad::Entity& e) {
      if (!found) found = cad::As<cad::Image>(&e);
      if (!proxy) proxy = cad::As<cad::ProxyEntity>(&e);
    });
    ASSERT_EQ(found != nullptr, c.image);
    const cad::GenericObject* kept = nullptr;
    if (const cad::Dictionary* g = copy.namedDictionary("ACAD_GROUP")) kept = copy.objectAs<cad::GenericObject>(g->find("G1"));
    ASSERT_NE(kept, nullptr);
    std::vector<std::string> members;
    for (const cad::Group& g : kept->groups)
      if (g.code == 340 && copy.entity(g.asId())) members.push_back(copy.entity(g.asId())->dxfName());
    EXPECT_EQ(members, std::vector<std::string>{c.groupMember});
    if (!c.image) continue;
    // The picture: its definition in the image dictionary, naming a file that is there, and the
    // reactor that ties the two.
    const auto* picture = copy.objectAs<cad::ImageDef>(found->imageDef);
    ASSERT_NE(picture, nullptr);
    EXPECT_EQ(copy.namedDictionary("ACAD_IMAGE_DICT")->find("red"), picture->id);
    EXPECT_TRUE(fs::is_regular_file(picture->fileName)) << picture->fileName;
    const auto* reactor = copy.objectAs<cad::GenericObject>(found->imageDefReactor);
    ASSERT_NE(reactor, nullptr);
    EXPECT_EQ(reactor->name, "IMAGEDEF_REACTOR");
    ASSERT_NE(picture->extrasIfAny(), nullptr);
    EXPECT_EQ(picture->extrasIfAny()->reactors, std::vector<ObjectId>{reactor->id});
    EXPECT_NE(copy.rootDictionary()->find("ACAD_WIPEOUT_VARS"), ObjectId{});
    // The multileader names the style of the file, which kept its key.
    ASSERT_NE(proxy, nullptr);
    const cad::Group* named = cad::FindGroup(proxy->groups, 340);
    ASSERT_NE(named, nullptr);
    EXPECT_EQ(copy.namedDictionary("ACAD_MLEADERSTYLE")->find("Notes"), named->asId());
    EXPECT_NE(copy.objectAs<cad::GenericObject>(named->asId()), nullptr);
  }
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
