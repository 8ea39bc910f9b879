// `tvplot sign` and `tvplot stamp` as users run them, on a data folder of the test's own.
#include <gtest/gtest.h>

#include <cairo.h>

#include <filesystem>

#include "../support/tvplot_test.h"
#include "render/raster_jpeg.h"
#include "signing/sign_library.h"
#include "signing/stamp_library.h"

namespace tv::cli {
namespace {

namespace fs = std::filesystem;
using namespace test_support;

class LibraryCommandTest : public TvplotTest {
 protected:
  void SetUp() override {
    TvplotTest::SetUp();
    fs::create_directories(data_ + "/Tarvex");
  }

  RunResult Tvplot(std::vector<std::string> args, const std::string& input = {}) {
    args.insert(args.begin(), {"XDG_DATA_HOME=" + data_, TV_TVPLOT_PATH});
    return RunProgram("/usr/bin/env", args, input);
  }

  // A picture of `w` x `h` pixels drawn with cairo, as PNG or JPEG.
  std::string Picture(const std::string& name, int w, int h) {
    cairo_surface_t* s = cairo_image_surface_create(CAIRO_FORMAT_RGB24, w, h);
    cairo_t* cr = cairo_create(s);
    cairo_set_source_rgb(cr, 0.8, 0.1, 0.1);
    cairo_arc(cr, w / 2.0, h / 2.0, h / 3.0, 0, 6.3);
    cairo_fill(cr);
    cairo_destroy(cr);
    const std::string path = Path(name).string();
    std::string error;
    if (name.ends_with(".png")) EXPECT_EQ(cairo_surface_write_to_png(s, path.c_str()), CAIRO_STATUS_SUCCESS);
    else EXPECT_TRUE(render::WriteJpeg(s, path, 90, error)) << error;
    cairo_surface_destroy(s);
    return path;
  }

  static std::unique_ptr<signing::TV_Sign> Sign(std::int32_t id, const std::string& name) {
    auto s = std::make_unique<signing::TV_Sign>();
    s->person_id = id;
    s->person_name = name;
    return s;
  }

  void WriteSigns(const std::string& path, std::vector<std::pair<int, std::string>> signs) {
    signing::SignLibrary library;
    for (auto& [id, name] : signs) library.signs.push_back(Sign(id, name));
    ASSERT_TRUE(signing::SaveSignLibrary(library, path, false));
  }

  static std::vector<std::string> SignNames(const std::string& path) {
    signing::SignLibrary library;
    signing::LoadSignLibrary(library, path, false);
    std::vector<std::string> names;
    for (const auto& s : library.signs) names.push_back(s->person_name);
    return names;
  }

  const std::string data_ = Path("data").string();
  const std::string signs_ = data_ + "/Tarvex/Sign.tvlib1", stamps_ = data_ + "/Tarvex/Stamp.tvlib2";
};

TEST_F(LibraryCommandTest, StampAddTakesPngAndJpegPicturesWithTheirProportions) {
  struct Case {
    const char* file;
    const char* name;
    std::vector<std::string> options;
    double width, height;
    std::int32_t kind;
  };
  const std::vector<Case> cases = {
      {"seal.png", "出图章 甲", {}, 62, 31, 0},
      {"seal.jpg", "项目章", {"--width", "40", "--kind", "项目章", "--code", "123", "--valid-until", "20300101"}, 40, 20, 2},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.file);
    const std::string picture = Picture(c.file, 500, 250);
    std::vector<std::string> args{"stamp", "add", picture, c.name};
    args.insert(args.end(), c.options.begin(), c.options.end());
    const RunResult r = Tvplot(args);
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_TRUE(Has(r.out, "已录入印章")) << r.out;
    signing::StampLibrary library;
    ASSERT_TRUE(signing::LoadStampLibrary(library, stamps_, false));
    const signing::TV_Stamp* stamp = signing::FindStampByName(library, c.name);
    ASSERT_NE(stamp, nullptr);
    EXPECT_EQ(stamp->image, ReadFile(picture));
    EXPECT_DOUBLE_EQ(stamp->width, c.width);
    EXPECT_DOUBLE_EQ(stamp->height, c.height);
    EXPECT_EQ(stamp->stamp_kind, c.kind);
  }
  const RunResult list = Tvplot({"stamp", "list"});
  ASSERT_EQ(list.exitCode, 0) << list.err;
  EXPECT_TRUE(Has(list.out, "共 2 个印章")) << list.out;
  EXPECT_TRUE(Has(list.out, "62 x 31")) << list.out;
  EXPECT_TRUE(Has(list.out, "2030.1.1")) << list.out;
  EXPECT_TRUE(Has(list.out, "2025.2.12 (过期)")) << list.out;
}

TEST_F(LibraryCommandTest, StampAddRefusesWhatItCannotTake) {
  const std::string picture = Picture("seal.png", 100, 50);
  WriteText("text.png", "not a picture");
  struct Case {
    std::vector<std::string> args;
    int exitCode;
    const char* says;
  };
  const std::vector<Case> cases = {
      {{"stamp", "add", Path("text.png").string(), "A"}, 2, "不是可读取的 PNG 或 JPEG 图片"},
      {{"stamp", "add", Path("missing.png").string(), "A"}, 2, "不是可读取的 PNG 或 JPEG 图片"},
      {{"stamp", "add", picture, "A", "--width", "9.99"}, 1, "--width 应在 10 到 200 mm 之间"},
      {{"stamp", "add", picture, "A", "--code", "1000000"}, 1, "--code"},
      {{"stamp", "add", picture, "A", "--kind", "9"}, 1, "--kind"},
      {{"stamp", "add", picture, " "}, 1, "印章名不能为空"},
      {{"stamp", "add", picture}, 1, "缺少印章图片或印章名"},
      {{"stamp", "list", "--width", "20"}, 1, "只用于 add"},
  };
  for (const Case& c : cases) {
    const RunResult r = Tvplot(c.args);
    EXPECT_EQ(r.exitCode, c.exitCode) << c.says << "\n" << r.err;
    EXPECT_TRUE(Has(r.err, c.says)) << r.err;
    EXPECT_FALSE(fs::exists(stamps_));
  }
  ASSERT_EQ(Tvplot({"stamp", "add", picture, "A"}).exitCode, 0);
  const std::string before = ReadFile(stamps_);
  const RunResult again = Tvplot({"stamp", "add", picture, "A", "--width", "100"});
  EXPECT_EQ(again.exitCode, 6) << again.err;
  EXPECT_EQ(ReadFile(stamps_), before);
}

TEST_F(LibraryCommandTest, ImportAsksWhetherToKeepAndMergesById) {
  const std::string file = Path("their.tvlib1").string();
  WriteSigns(file, {{1, "theirs one"}, {3, "three"}});
  struct Case {
    const char* what;
    bool mineFirst;
    std::vector<std::string> options;
    int exitCode;
    std::vector<std::string> names;
  };
  const std::vector<Case> cases = {
      {"empty library: no question needed", false, {}, 0, {"theirs one", "three"}},
      {"--keep", true, {"--keep"}, 0, {"mine one", "mine two", "three"}},
      {"--replace", true, {"--replace"}, 0, {"theirs one", "three"}},
      {"no answer from a pipe", true, {}, 1, {"mine one", "mine two"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    fs::remove(signs_);
    if (c.mineFirst) WriteSigns(signs_, {{1, "mine one"}, {2, "mine two"}});
    std::vector<std::string> args{"sign", "import", file};
    args.insert(args.end(), c.options.begin(), c.options.end());
    const RunResult r = Tvplot(args);
    EXPECT_EQ(r.exitCode, c.exitCode) << r.err;
    EXPECT_EQ(SignNames(signs_), c.names);
  }
  // Answered on the terminal's behalf through standard input would need a terminal; --keep is
  // the answer "Y" to the very question.
  const RunResult keep = Tvplot({"sign", "import", file, "--keep"});
  EXPECT_TRUE(Has(keep.err, "原签名库信息是否保留 ？")) << keep.err;
}

// A file cut short or no library at all is refused before anything is touched.
TEST_F(LibraryCommandTest, TruncatedAndForeignLibrariesAreRefusedAndTheUserLibraryKept) {
  WriteSigns(signs_, {{1, "mine"}});
  const std::string picture = Picture("seal.png", 40, 40);
  ASSERT_EQ(Tvplot({"stamp", "add", picture, "mine"}).exitCode, 0);
  const std::string exported1 = Path("export.tvlib1").string(), exported2 = Path("export.tvlib2").string();
  ASSERT_EQ(Tvplot({"sign", "export", exported1}).exitCode, 0);
  ASSERT_EQ(Tvplot({"stamp", "export", exported2}).exitCode, 0);
  // What this system wrote reads back to the same bytes.
  EXPECT_EQ(ReadFile(exported1), ReadFile(signs_));
  EXPECT_EQ(ReadFile(exported2), ReadFile(stamps_));

  const std::string sign1 = ReadFile(signs_), stamp2 = ReadFile(stamps_);
  struct Case {
    const char* command;
    std::string bytes;
    const char* says;
  };
  const std::vector<Case> cases = {
      {"sign", sign1.substr(0, sign1.size() - 3), "不是完整的签名库文件"},
      {"sign", "<html>no library</html>", "不是完整的签名库文件"},
      {"sign", stamp2, "不是完整的签名库文件"},
      {"stamp", stamp2.substr(0, stamp2.size() - 1), "不是完整的印章库文件"},
      {"stamp", sign1, "不是完整的印章库文件"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.says);
    const std::string file = WriteText("bad.lib", c.bytes);
    const RunResult r = Tvplot({c.command, "import", file, "--replace"});
    EXPECT_EQ(r.exitCode, 2) << r.err;
    EXPECT_TRUE(Has(r.err, c.says)) << r.err;
    EXPECT_EQ(ReadFile(signs_), sign1);
    EXPECT_EQ(ReadFile(stamps_), stamp2);
  }
  const RunResult missing = Tvplot({"stamp", "import", Path("none.tvlib2").string(), "--keep"});
  EXPECT_EQ(missing.exitCode, 2);
  EXPECT_TRUE(Has(missing.err, "无法读取文件")) << missing.err;
}

// The numbered commands "签名库管理" (6) and "印章库管理" (13) work on a copy: OK saves it, Cancel
// leaves the library file as it was.
TEST_F(LibraryCommandTest, NumberedCommandsEditACopyThatOkSaves) {
  const std::string drawing = Write("plan.dxf", cad::Database::createDefault());
  const auto run = [&](const std::string& command, const std::vector<std::string>& answers) {
    std::vector<std::string> args{"run", drawing, command};
    for (const std::string& a : answers) args.insert(args.end(), {"--answer", a});
    return Tvplot(args);
  };
  WriteSigns(signs_, {{1, "a"}, {2, "b"}});
  const std::string before = ReadFile(signs_);
  RunResult r = run("TV_BatchPlot_6", {"D", "1", "C"});
  EXPECT_EQ(r.exitCode, 0) << r.err;
  EXPECT_TRUE(Has(r.out, "签名库管理")) << r.out;
  EXPECT_EQ(ReadFile(signs_), before);
  r = run("TV_BatchPlot_6", {"D", "1", "S", "1", "O"});
  EXPECT_EQ(r.exitCode, 0) << r.err;
  signing::SignLibrary signs;
  ASSERT_TRUE(signing::LoadSignLibrary(signs, signs_, false));
  ASSERT_EQ(signs.signs.size(), 1u);
  EXPECT_EQ(signs.signs[0]->person_name, "b");
  EXPECT_EQ(signs.signs[0]->enabled, 0);

  const std::string picture = Picture("seal.png", 100, 50);
  r = run("TV_BatchPlot_13", {"A", picture, "印 章", "", "", "80", "", "O"});
  EXPECT_EQ(r.exitCode, 0) << r.err;
  signing::StampLibrary stamps;
  ASSERT_TRUE(signing::LoadStampLibrary(stamps, stamps_, false));
  ASSERT_EQ(stamps.stamps.size(), 1u);
  EXPECT_EQ(stamps.stamps[0]->name, "印 章");
  EXPECT_DOUBLE_EQ(stamps.stamps[0]->height, 40.0);
  EXPECT_TRUE(Has(r.out, "印章库管理")) << r.out;
}

}  // namespace
}  // namespace tv::cli
