// `tvplot frame`: a frame taken from a drawing into the frame folder, listed, previewed, renamed,
// placed into a copy of a drawing in both ways, and deleted; failures leave the folder as it was.
#include <cairo.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <set>

#include "../aids/aids_drawings.h"
#include "../aids/drawing_diff.h"
#include "../support/corpus.h"
#include "../support/entity_builders.h"
#include "../support/tvplot_test.h"
#include "cad/drawing_file.h"

namespace tv::cli {
namespace {

namespace fs = std::filesystem;
using namespace test_support;

std::set<std::string> Listing(const fs::path& folder) {
  std::set<std::string> names;
  for (const auto& e : fs::directory_iterator(folder)) names.insert(e.path().filename().string() + ":" + ReadFile(e.path()));
  return names;
}

// The box of the lines the run added to the drawing: the copied border of the frame.
Extents3d AddedLines(const std::string& before, const std::string& after) {
  cad::DxfReadResult saved = cad::ReadDrawing(after);
  EXPECT_TRUE(saved.ok()) << saved.error;
  Extents3d box;
  if (!saved.ok()) return box;
  for (const std::string& h : AddedHandles(RecordsByHandle(before), RecordsByHandle(after)))
    if (const auto* l = cad::As<cad::Line>(saved.db->object(ObjectId::fromHandleText(h)))) {
      box.add(l->start);
      box.add(l->end);
    }
  return box;
}

// The pixels of a PNG: white, black, and any other colour.
struct Pixels {
  std::size_t white = 0, black = 0, other = 0;
};
Pixels CountPixels(const std::string& png) {
  Pixels n;
  std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)> picture(cairo_image_surface_create_from_png(png.c_str()),
                                                                             &cairo_surface_destroy);
  EXPECT_EQ(cairo_surface_status(picture.get()), CAIRO_STATUS_SUCCESS) << png;
  if (cairo_surface_status(picture.get()) != CAIRO_STATUS_SUCCESS) return n;
  const int w = cairo_image_surface_get_width(picture.get()), h = cairo_image_surface_get_height(picture.get());
  const int stride = cairo_image_surface_get_stride(picture.get());
  const unsigned char* data = cairo_image_surface_get_data(picture.get());
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x) {
      const std::uint32_t px = reinterpret_cast<const std::uint32_t*>(data + y * stride)[x] & 0xFFFFFF;
      (px == 0xFFFFFF ? n.white : px == 0 ? n.black : n.other) += 1;
    }
  return n;
}

class FrameCommandTest : public TvplotTest {
 protected:
  void SetUp() override {
    TvplotTest::SetUp();
    // An A3 frame with a label, and one line far off: the graphics a frame goes around.
    cad::Database db = cad::Database::createDefault();
    cad::BlockRecord& ms = *db.modelSpace();
    AddA3Frame(db);
    db.append(ms, MakeText("设计单位", {300, 10, 0}, 3.5));
    db.append(ms, MakeLine({1000, -100, 0}, {1100, -100, 0}));
    drawing_ = Write("drawing.dxf", db);
    folder_ = Path("Frame").string();
    fs::create_directories(folder_);
  }
  RunResult Frame(std::vector<std::string> args) {
    args.insert(args.begin(), "frame");
    args.insert(args.end(), {"--folder", folder_});
    return Run(args, {}, Path("home").string());
  }
  std::string drawing_, folder_;
};

TEST_F(FrameCommandTest, AddListPreviewRenamePlaceAndDelete) {
  const std::string original = ReadFile(drawing_);
  RunResult r = Frame({"add", drawing_, "--name", "A3", "--window", "-1,-1", "421,298"});
  ASSERT_EQ(r.exitCode, 0) << r.err;
  cad::DxfReadResult frame = cad::ReadDrawing(folder_ + "/A3.dxf");
  ASSERT_TRUE(frame.ok()) << frame.error;
  std::size_t entities = 0;
  frame.db->forEachEntity(*frame.db->modelSpace(), [&](const cad::Entity&) { ++entities; });
  EXPECT_EQ(entities, 6u);  // edge, four border lines, label; not the line far off

  r = Frame({"list"});
  ASSERT_EQ(r.exitCode, 0) << r.err;
  for (const char* part : {" 序号 ", " 1", "A3", "DEL", "REDEFINE"}) EXPECT_NE(r.out.find(part), std::string::npos) << r.out;
  r = Frame({"list", "--json"});
  EXPECT_NE(r.out.find("\"name\": \"A3\""), std::string::npos) << r.out;

  // White lines on black, nothing else.
  const std::string png = Path("A3.png").string();
  r = Frame({"preview", "A3", "--out", png});
  ASSERT_EQ(r.exitCode, 0) << r.err;
  const auto [white, black, other] = CountPixels(png);
  EXPECT_GT(white, 1000u);
  EXPECT_GT(black, white);
  EXPECT_EQ(other, 0u);

  r = Frame({"rename", "A3", "图框A3"});
  ASSERT_EQ(r.exitCode, 0) << r.err;
  EXPECT_TRUE(fs::exists(folder_ + "/图框A3.dxf"));
  EXPECT_FALSE(fs::exists(folder_ + "/A3.dxf"));

  const struct {
    const char* what;
    std::vector<std::string> how;
    double x0, x1, y0, y1;  // the placed border
  } placings[] = {
      {"on two corners", {"--corners", "1000,500", "3000,1500"}, 2000 - 195 * 1000 / 287.0, 2000 + 195 * 1000 / 287.0, 500, 1500},
      {"around the line", {"--around", "990,-110", "1110,-90"}, 1000, 1100, -100 - 50 * 287 / 390.0, -100 + 50 * 287 / 390.0},
  };
  for (const auto& p : placings) {
    const std::string out = Path("placed.dxf").string();
    std::vector<std::string> args{"place", drawing_, "--name", "图框A3", "--out", out};
    args.insert(args.end(), p.how.begin(), p.how.end());
    r = Frame(args);
    ASSERT_EQ(r.exitCode, 0) << p.what << r.err;
    EXPECT_TRUE(ChangedHandles(RecordsByHandle(drawing_), RecordsByHandle(out)).empty()) << p.what;
    const Extents3d border = AddedLines(drawing_, out);
    EXPECT_NEAR(border.min.x, p.x0, 1e-6) << p.what;
    EXPECT_NEAR(border.max.x, p.x1, 1e-6) << p.what;
    EXPECT_NEAR(border.min.y, p.y0, 1e-6) << p.what;
    EXPECT_NEAR(border.max.y, p.y1, 1e-6) << p.what;
  }
  EXPECT_EQ(ReadFile(drawing_), original);

  r = Frame({"delete", "图框A3"});
  ASSERT_EQ(r.exitCode, 0) << r.err;
  EXPECT_TRUE(fs::is_empty(folder_));
  r = Frame({"delete", "图框A3"});
  EXPECT_EQ(r.exitCode, 2);
}

TEST_F(FrameCommandTest, FailuresLeaveTheFolderAsItWas) {
  ASSERT_EQ(Frame({"add", drawing_, "--name", "A3", "--all"}).exitCode, 0);
  ASSERT_EQ(Frame({"add", drawing_, "--name", "B", "--layer", "0"}).exitCode, 0);
  fs::create_directories(folder_ + "/C.dxf");  // a folder where the file of frame "C" would go
  WriteText(folder_ + "/bad.dxf", "this is no drawing\n");
  const struct {
    const char* what;
    std::vector<std::string> args;
    int exitCode;
    const char* message;
  } cases[] = {
      {"name clash", {"add", drawing_, "--name", "A3", "--all"}, 6, "图框重名报错：图框重名 !"},
      {"rename onto an existing name", {"rename", "B", "A3"}, 6, "图框重名 !"},
      {"file can't be written", {"add", drawing_, "--name", "C", "--all"}, 4, "文件报错：文件 "},
      {"name out of the folder", {"add", drawing_, "--name", "../D", "--all"}, 4, "无法重新生成 !"},
      {"nothing in the window", {"add", drawing_, "--name", "E", "--window", "5000,5000", "6000,6000"}, 7, "没有选中图形"},
      {"unreadable frame previewed", {"preview", "bad", "--out", Path("bad.png").string()}, 2, "未生成预览"},
      {"unreadable frame placed", {"place", drawing_, "--name", "bad", "--corners", "0,0", "10,10", "--out",
                                   Path("x.dxf").string()}, 2, "无法读取图框文件"},
      {"frame not in the folder", {"redefine", "Z", drawing_, "--all"}, 2, "中没有图框"},
      {"place over the drawing", {"place", drawing_, "--name", "A3", "--corners", "0,0", "10,10", "--out", drawing_}, 1,
       "不覆盖原图纸"},
      {"option of another action", {"list", "--name", "A3"}, 1, "--name 只用于"},
  };
  for (const auto& c : cases) {
    const auto before = Listing(folder_);
    const RunResult r = Frame(c.args);
    EXPECT_EQ(r.exitCode, c.exitCode) << c.what << r.err;
    EXPECT_NE(r.err.find(c.message), std::string::npos) << c.what << r.err;
    EXPECT_EQ(Listing(folder_), before) << c.what;
  }
  // A folder nobody may write into, the superuser included.
  const RunResult r = Run({"frame", "add", drawing_, "--name", "A3", "--all", "--folder", "/proc"}, {}, Path("home").string());
  EXPECT_EQ(r.exitCode, 4) << r.err;
  EXPECT_NE(r.err.find("文件报错：文件  /proc/A3.dxf  无法重新生成 !"), std::string::npos) << r.err;
  EXPECT_FALSE(fs::exists("/proc/A3.dxf"));
  EXPECT_FALSE(fs::exists(Path("bad.png")));
  EXPECT_FALSE(fs::exists(Path("x.dxf")));
}

TEST_F(FrameCommandTest, TheCommandPlacesAFrameOfTheFolderInTheConfiguredWay) {
  ASSERT_EQ(Frame({"add", drawing_, "--name", "A3", "--window", "-1,-1", "421,298"}).exitCode, 0);
  const struct {
    const char* what;
    std::vector<std::string> answers;  // after the settings form's folder
    double x0, x1, y0, y1;
  } cases[] = {
      {"two corners", {"1", "", "3", "1000,500", "3000,1500"}, 2000 - 195 * 1000 / 287.0, 2000 + 195 * 1000 / 287.0, 500, 1500},
      {"around a selection", {"2", "", "3", "W 990,-110 1110,-90", ""}, 1000, 1100, -100 - 50 * 287 / 390.0,
       -100 + 50 * 287 / 390.0},
      {"around, turned by Tab", {"2", "", "3", "TAB W 990,-110 1110,-90", ""}, 1000, 1100, -100 - 50 * 390 / 287.0,
       -100 + 50 * 390 / 287.0},
  };
  for (const auto& c : cases) {
    const std::string out = Path("placed18.dxf").string();
    std::vector<std::string> args{"run", drawing_, "TV_BatchPlot_18", "--answer", "1", "--answer", "3", "--answer", folder_};
    for (const std::string& a : c.answers) args.insert(args.end(), {"--answer", a});
    args.insert(args.end(), {"--save-as", out});
    const RunResult r = Run(args, {}, Path("home").string());
    ASSERT_EQ(r.exitCode, 0) << c.what << r.out << r.err;
    const Extents3d border = AddedLines(drawing_, out);
    EXPECT_NEAR(border.min.x, c.x0, 1e-6) << c.what << r.out;
    EXPECT_NEAR(border.max.x, c.x1, 1e-6) << c.what;
    EXPECT_NEAR(border.min.y, c.y0, 1e-6) << c.what;
    EXPECT_NEAR(border.max.y, c.y1, 1e-6) << c.what;
  }
}


TEST_F(FrameCommandTest, TheFormAddsRenamesPreviewsAndDeletesFrames) {
  // The settings row, then the folder; two adds of one name, a rename, a preview, a delete; OK;
  // and the choice left.
  const std::vector<std::string> answers{"1", "3", folder_, "A", "W -1,-1 421,298", "A3", "A", "W -1,-1 421,298", "A3",
                                         "N", "1", "标准A3", "A", "W 990,-110 1110,-90", "B", "P", "1", "D", "2", "",
                                         "^C"};
  std::vector<std::string> args{"run", drawing_, "TV_BatchPlot_18"};
  for (const std::string& a : answers) args.insert(args.end(), {"--answer", a});
  const RunResult r = Run(args, {}, Path("home").string());
  ASSERT_EQ(r.exitCode, 0) << r.out << r.err;
  EXPECT_EQ(Count(r.out, "图框重名 !"), 1u) << r.out;
  EXPECT_NE(r.out.find("双击空白处录入新图框"), std::string::npos);
  EXPECT_NE(r.out.find("图框预览："), std::string::npos) << r.out;
  EXPECT_TRUE(fs::exists(folder_ + "/标准A3.dxf"));
  EXPECT_FALSE(fs::exists(folder_ + "/A3.dxf"));
  EXPECT_FALSE(fs::exists(folder_ + "/B.dxf"));
}


TEST_F(FrameCommandTest, ADwgFrameIsListedAndPreviewed) {
  const fs::path dwg = test_support::CorpusDir() / "acadsharp" / "sample_AC1018.dwg";
  TV_SKIP_WITHOUT_CORPUS(dwg);
  fs::copy_file(dwg, fs::path(folder_) / "样例.dwg");
  RunResult r = Frame({"list"});
  EXPECT_NE(r.out.find("样例"), std::string::npos) << r.out;
  const std::string png = Path("dwg.png").string();
  r = Frame({"preview", "样例", "--out", png});
  ASSERT_EQ(r.exitCode, 0) << r.err;
  const Pixels n = CountPixels(png);
  EXPECT_GT(n.white, 200u);
  EXPECT_EQ(n.other, 0u);
}

}  // namespace
}  // namespace tv::cli
