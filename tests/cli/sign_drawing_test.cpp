// Signatures placed, approved and plotted as users do it with `tvplot`: the drawing saved with
// them read back alive, and the ink they leave on paper.
#include <gtest/gtest.h>

#include <cairo.h>

#include <filesystem>

#include "../support/corpus.h"
#include "../support/frame_drawings.h"
#include "../support/tvplot_test.h"
#include "cad/drawing_file.h"
#include "host/cad_binding.h"
#include "host/custom_internal.h"
#include "signing/sign_approval.h"
#include "signing/sign_entity.h"
#include "signing/sign_globals.h"
#include "signing/sign_library.h"
#include "signing/sign_placing.h"

namespace tv::cli {
namespace {

namespace fs = std::filesystem;
using namespace test_support;

constexpr std::int32_t kFree = 1, kLocked = 2, kCode = 123456;

// What a saved drawing holds of signatures.
struct SavedSigns {
  std::vector<signing::TV_Sign_Class> signs;
  std::vector<std::string> layers;
  std::int16_t layerColor = 0;
  std::optional<cad::DxfClass> signClass;
};

class SignDrawingTest : public TvplotTest {
 protected:
  void SetUp() override {
    TvplotTest::SetUp();
    fs::create_directories(home_ + "/.local/share/Tarvex");
    signing::SignLibrary library;
    library.signs.push_back(Sign(kFree, "张 三", 0));
    library.signs.push_back(Sign(kLocked, "李四", kCode));
    ASSERT_TRUE(signing::SaveSignLibrary(library, home_ + "/.local/share/Tarvex/Sign.tvlib1", false));
    // Signatures read back here are checked against the same library.
    signing::LoadSignLibrary(signing::GlobalSignLibrary(), home_ + "/.local/share/Tarvex/Sign.tvlib1", false);
    // One A3 frame at 1:100, a line across its middle.
    plan_ = Write("plan.dxf", FramesInARow({{42000, 29700}}));
  }

  void TearDown() override { signing::ClearSignLibrary(signing::GlobalSignLibrary()); }

  // A 2 x 1 outline with a hole, around the library's origin.
  static std::unique_ptr<signing::TV_Sign> Sign(std::int32_t id, const std::string& name, std::int32_t code) {
    auto s = std::make_unique<signing::TV_Sign>();
    s->person_id = id;
    s->person_name = name;
    s->auth_code = code;
    s->width = 2;
    s->height = 1;
    for (auto [outer, half] : {std::pair{1, 0.0}, {0, 0.3}}) {
      auto shape = std::make_unique<signing::MyShape>();
      shape->is_outer = outer;
      const double w = outer ? 1 : half, h = outer ? 0.5 : half;
      shape->xs = {-w, w, w, -w};
      shape->ys = {-h, -h, h, h};
      s->shapes.push_back(std::move(shape));
    }
    return s;
  }

  RunResult Tvplot(const std::vector<std::string>& args) const { return Run(args, {}, home_); }

  std::string Place(const std::string& drawing, std::int32_t id, const std::string& out, const std::string& direction = "0") {
    const RunResult r = Tvplot({"sign", "place", drawing, "--id", std::to_string(id), "--at", "20000,3000", "--to",
                                "30000,8000", "--direction", direction, "--out", Path(out).string()});
    EXPECT_EQ(r.exitCode, 0) << r.err << r.out;
    return Path(out).string();
  }

  static SavedSigns Read(const std::string& path) {
    signing::RegisterSignClasses();
    cad::DxfReadResult read = cad::ReadDrawing(path);
    SavedSigns saved;
    if (!read.ok()) {
      ADD_FAILURE() << path << ": " << read.error;
      return saved;
    }
    cad::Database& db = *read.db;
    for (const cad::DxfClass& c : db.classes)
      if (c.dxfName == "TV_Sign_Class") saved.signClass = c;
    if (const cad::Layer* layer = db.findLayer("TV_Sign")) saved.layerColor = layer->colorIndex;
    db.forEachEntity(*db.modelSpace(), [&](const cad::Entity& e) {
      const auto* custom = dynamic_cast<const signing::TV_Sign_Class*>(host::CustomOf(e));
      if (!custom) return;
      saved.signs.push_back(*custom);
      const auto* layer = db.objectAs<cad::Layer>(e.layer);
      saved.layers.push_back(layer ? layer->name : "");
    });
    return saved;
  }

  // Pixels with ink inside the box the signatures are placed in, on the PNG of the plan's sheet.
  int InkInSignBox(const std::string& drawing, const std::string& signatures, const std::string& answer = "--yes") {
    const fs::path out = dir_ / ("png_" + std::to_string(++plots_));
    const RunResult r = Tvplot({"plot", drawing, "--format", "png", "--margin", "0", "--out", out.string(),
                                "--signatures", signatures, answer});
    EXPECT_EQ(r.exitCode, 0) << r.err << r.out;
    const std::vector<std::string> files = FilesIn(out);
    if (files.size() != 1) {
      ADD_FAILURE() << "one sheet plotted: " << r.out << r.err;
      return -1;
    }
    cairo_surface_t* png = cairo_image_surface_create_from_png((out / files[0]).c_str());
    EXPECT_EQ(cairo_surface_status(png), CAIRO_STATUS_SUCCESS);
    const int w = cairo_image_surface_get_width(png), h = cairo_image_surface_get_height(png);
    const int stride = cairo_image_surface_get_stride(png);
    const unsigned char* data = cairo_image_surface_get_data(png);
    // The sheet, 42000 x 29700 units, fills the page; the box runs from (20000, 3000) to (30000, 8000).
    const auto px = [&](double x) { return static_cast<int>(x / 42000 * w); };
    const auto py = [&](double y) { return static_cast<int>((1 - y / 29700) * h); };
    int ink = 0;
    for (int y = py(7800); y < py(3200); ++y)
      for (int x = px(20200); x < px(29800); ++x) {
        const auto* p = reinterpret_cast<const std::uint32_t*>(data + y * stride) + x;
        const std::uint32_t v = *p;
        if (((v >> 16) & 0xff) < 200 || ((v >> 8) & 0xff) < 200 || (v & 0xff) < 200) ++ink;
      }
    cairo_surface_destroy(png);
    return ink;
  }

  const std::string home_ = (dir_.path() / "home").string();
  std::string plan_;
  int plots_ = 0;
};

TEST_F(SignDrawingTest, APlacedSignatureSurvivesTheSavedDrawingWithItsClass) {
  const std::string original = ReadFile(plan_);
  for (const std::string direction : {"0", "1"}) {
    SCOPED_TRACE("direction " + direction);
    const SavedSigns saved = Read(Place(plan_, kFree, "placed" + direction + ".dxf", direction));
    ASSERT_EQ(saved.signs.size(), 1u);
    const signing::TV_Sign_Class& e = saved.signs[0];
    EXPECT_EQ(e.person_id, kFree);
    EXPECT_EQ(e.person_name, "张 三");
    EXPECT_EQ(e.auth_code, 0);
    EXPECT_EQ(e.auth_start, -1);
    EXPECT_EQ(e.loop_sizes, (std::vector<std::int32_t>{4, -4}));
    // The outline as the placing fits it: the record's vertices between the two corners.
    std::vector<std::int32_t> sizes;
    std::vector<Point3d> expected;
    auto record = Sign(kFree, "", 0);
    signing::FlattenSign(*record, sizes, expected);
    signing::SignDirection = std::stoi(direction);
    signing::FitSignPoints(expected, {20000, 3000}, {30000, 8000}, 2, 1, {});
    signing::SignDirection = 0;
    ASSERT_EQ(e.points.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) EXPECT_TRUE(e.points[i].isEqualTo(expected[i], 1e-9)) << i;
    EXPECT_EQ(saved.layers, std::vector<std::string>{"TV_Sign"});
    EXPECT_EQ(saved.layerColor, 118);
    ASSERT_TRUE(saved.signClass) << "the class is declared in CLASSES";
    EXPECT_EQ(saved.signClass->appName, "\"TV_Soft_BatchPlot\"");
    EXPECT_EQ(saved.signClass->proxyFlags, 3071);
    EXPECT_EQ(saved.signClass->instanceCount, 1);
  }
  EXPECT_EQ(ReadFile(plan_), original) << "the drawing itself is never written";
}

TEST_F(SignDrawingTest, OtherProgramsDrawingsTakeASignatureAndKeepTheirOwnClasses) {
  for (const char* name : {"sample_AC1015_ascii.dxf", "sample_AC1024_ascii.dxf"}) {
    SCOPED_TRACE(name);
    const fs::path drawing = CorpusDir() / "acadsharp" / name;
    TV_SKIP_WITHOUT_CORPUS(drawing);
    cad::DxfReadResult before = cad::ReadDrawing(drawing.string());
    ASSERT_TRUE(before.ok());
    const SavedSigns saved = Read(Place(drawing.string(), kFree, std::string("signed_") + name));
    ASSERT_EQ(saved.signs.size(), 1u);
    EXPECT_TRUE(saved.signClass);
    cad::DxfReadResult after = cad::ReadDrawing(Path(std::string("signed_") + name).string());
    ASSERT_TRUE(after.ok());
    for (const cad::DxfClass& c : before.db->classes)
      EXPECT_TRUE(std::any_of(after.db->classes.begin(), after.db->classes.end(),
                              [&](const cad::DxfClass& d) { return d.dxfName == c.dxfName; }))
          << c.dxfName;
  }
}

TEST_F(SignDrawingTest, TabTypedAtTheSecondCornerTurnsTheSignature) {
  const RunResult r = Tvplot({"run", plan_, "TV_BatchPlot_7", "--answer", "张 三", "--answer", "20000,3000", "--answer",
                              "TAB", "--answer", "30000,8000", "--save-as", Path("tab.dxf").string()});
  ASSERT_EQ(r.exitCode, 0) << r.err << r.out;
  const SavedSigns saved = Read(Path("tab.dxf").string());
  ASSERT_EQ(saved.signs.size(), 1u);
  Extents3d box = saved.signs[0].extents();
  EXPECT_NEAR(box.width(), 2500, 1e-6) << "upright: half as wide as high";
  EXPECT_NEAR(box.height(), 5000, 1e-6);
}

TEST_F(SignDrawingTest, ApprovalCoversEveryPlacementOfThePersonAndAWrongCodeNone) {
  const std::string twice = Place(Place(plan_, kLocked, "once.dxf"), kLocked, "twice.dxf");
  const RunResult wrong = Tvplot({"sign", "approve", twice, "--id", "2", "--code", "654321", "--days", "5", "--out",
                                  Path("wrong.dxf").string()});
  EXPECT_NE(wrong.exitCode, 0);
  EXPECT_TRUE(Has(wrong.err, "输入的授权码有误!")) << wrong.err;
  EXPECT_FALSE(fs::exists(Path("wrong.dxf")));

  const RunResult ok = Tvplot({"sign", "approve", twice, "--id", "2", "--code", std::to_string(kCode), "--days", "1",
                               "--out", Path("approved.dxf").string()});
  ASSERT_EQ(ok.exitCode, 0) << ok.err << ok.out;
  const SavedSigns saved = Read(Path("approved.dxf").string());
  ASSERT_EQ(saved.signs.size(), 2u);
  const std::int32_t today = signing::TodayNumber();
  for (const signing::TV_Sign_Class& e : saved.signs) {
    EXPECT_EQ(e.auth_code, kCode);
    EXPECT_EQ(e.auth_start, today);
    EXPECT_EQ(e.auth_end, today) << "one day granted ends today";
    EXPECT_TRUE(e.code_ok && e.date_ok);
  }

  // A signature on a locked layer keeps what it had, and the user is told.
  {
    cad::DxfReadResult read = cad::ReadDrawing(twice);
    ASSERT_TRUE(read.ok());
    read.db->findLayer("TV_Sign")->setLocked(true);
    ASSERT_TRUE(cad::WriteDxf(*read.db, Path("locked_layer.dxf").string()).ok);
  }
  const RunResult onLocked = Tvplot({"sign", "approve", Path("locked_layer.dxf").string(), "--id", "2", "--code",
                                     std::to_string(kCode), "--days", "1", "--out", Path("unchanged.dxf").string()});
  EXPECT_EQ(onLocked.exitCode, 0) << onLocked.err;
  EXPECT_TRUE(Has(onLocked.err, "有签名在锁定层上，可能会造成授权失败 !")) << onLocked.err;
  for (const signing::TV_Sign_Class& e : Read(Path("unchanged.dxf").string()).signs) EXPECT_EQ(e.auth_code, 0);

  // Granting 0 days takes the approval back.
  const RunResult cleared = Tvplot({"sign", "approve", Path("approved.dxf").string(), "--id", "2", "--code",
                                    std::to_string(kCode), "--days", "0", "--out", Path("cleared.dxf").string()});
  ASSERT_EQ(cleared.exitCode, 0) << cleared.err;
  for (const signing::TV_Sign_Class& e : Read(Path("cleared.dxf").string()).signs) {
    EXPECT_EQ(e.auth_code, 0);
    EXPECT_FALSE(e.code_ok);
  }
}

TEST_F(SignDrawingTest, PlotsShowApprovedSignaturesOnlyWhenSignaturesArePrinted) {
  const std::string free = Place(plan_, kFree, "free.dxf");
  const std::string locked = Place(plan_, kLocked, "locked.dxf");
  ASSERT_EQ(Tvplot({"sign", "approve", locked, "--id", "2", "--code", std::to_string(kCode), "--days", "3", "--out",
                    Path("approved.dxf").string()})
                .exitCode,
            0);
  struct Case {
    std::string drawing, signatures;
    bool ink;
  } cases[] = {
      {plan_, "yes", false},  // nothing there to begin with
      {free, "yes", true},
      {free, "no", false},
      {locked, "yes", false},  // unapproved: left out of the plot
      {Path("approved.dxf").string(), "yes", true},
      {Path("approved.dxf").string(), "no", false},
  };
  for (const Case& c : cases) {
    const int ink = InkInSignBox(c.drawing, c.signatures);
    if (c.ink) EXPECT_GT(ink, 2000) << c.drawing << " " << c.signatures;
    else EXPECT_EQ(ink, 0) << c.drawing << " " << c.signatures;
  }
}

TEST_F(SignDrawingTest, AnUnapprovedSignatureStopsARunAnsweredNo) {
  const std::string locked = Place(plan_, kLocked, "locked.dxf");
  const fs::path out = dir_ / "stopped";
  const RunResult r = Tvplot({"plot", locked, "--format", "png", "--out", out.string(), "--no"});
  EXPECT_NE(r.exitCode, 0);
  EXPECT_TRUE(Has(r.out + r.err, "文件中存在未授权的签名")) << r.out << r.err;
  EXPECT_TRUE(FilesIn(out).empty());
  // Without signatures printed nothing is asked.
  const RunResult off = Tvplot({"plot", locked, "--format", "png", "--out", (dir_ / "off").string(), "--no",
                                "--signatures", "no"});
  EXPECT_EQ(off.exitCode, 0) << off.err;
}

TEST_F(SignDrawingTest, BadRequestsAreRefusedWithoutTouchingTheDrawing) {
  const std::string original = ReadFile(plan_);
  const std::string out = Path("o.dxf").string();
  struct Case {
    std::vector<std::string> args;
    std::string message;
  } cases[] = {
      {{"sign", "place", plan_, "--id", "1", "--at", "0,0", "--to", "10,10", "--out", plan_}, "不覆盖原图纸"},
      {{"sign", "place", plan_, "--id", "1", "--at", "0,0", "--to", "10,10"}, "不覆盖原图纸"},
      {{"sign", "place", plan_, "--at", "0,0", "--to", "10,10", "--out", out}, "--name 或 --id"},
      {{"sign", "place", plan_, "--id", "1", "--at", "zero", "--to", "10,10", "--out", out}, "无效"},
      {{"sign", "place", plan_, "--id", "1", "--at", "0,0", "--to", "10,10", "--direction", "3", "--out", out}, "方向"},
      {{"sign", "place", plan_, "--id", "99", "--at", "0,0", "--to", "10,10", "--out", out}, "签名库中没有"},
      {{"sign", "approve", plan_, "--id", "2", "--code", "1", "--days", "2001", "--out", out}, "授权期限"},
      {{"sign", "approve", plan_, "--id", "2", "--code", "1", "--days", "1", "--out", out}, "需要授权的签名"},
  };
  for (const Case& c : cases) {
    const RunResult r = Tvplot(c.args);
    EXPECT_NE(r.exitCode, 0) << c.message;
    EXPECT_TRUE(Has(r.err, c.message)) << r.err;
    EXPECT_FALSE(fs::exists(out)) << c.message;
  }
  EXPECT_EQ(ReadFile(plan_), original);
}

}  // namespace
}  // namespace tv::cli
