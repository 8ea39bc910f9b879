// `tvplot tk define` as users run it: definitions captured from the sample title blocks read the
// same fields as the shipped library does; what cannot be defined or saved leaves the library as
// it was.
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "../support/tvplot_test.h"
#include "examples/sample_drawing.h"
#include "examples/sample_kit.h"
#include "examples/sample_library.h"
#include "titleblock/tk_library.h"

namespace tv::cli {
namespace {

namespace fs = std::filesystem;
using namespace test_support;
using samples::kit::Box;
using samples::kit::Sheet;

// A cell of the title grid in the frame block's own coordinates (mm), as two corner words.
std::vector<std::string> Corners(const Sheet& sheet, const Box& cell) {
  const cad::Point2d o = samples::kit::TitleGridOrigin(sheet);
  auto word = [](double x, double y) {
    char text[64];
    std::snprintf(text, sizeof text, "%g,%g", x, y);
    return std::string(text);
  };
  return {word(o.x + cell.min.x, o.y + cell.min.y), word(o.x + cell.max.x, o.y + cell.max.y)};
}

// The values that tell what a sheet read: everything but the library's path.
std::string Fields(const std::string& json) {
  std::string kept;
  std::size_t from = 0;
  while (from < json.size()) {
    std::size_t end = json.find('\n', from);
    if (end == std::string::npos) end = json.size();
    const std::string line = json.substr(from, end - from);
    if (line.find(".tk\"") == std::string::npos) kept += line + '\n';
    from = end + 1;
  }
  return kept;
}

class TkDefineCommandTest : public TvplotTest {
 protected:
  void SetUp() override {
    TvplotTest::SetUp();
    fs::create_directories(data_ + "/Tarvex");
  }
  RunResult Tvplot(std::vector<std::string> args) {
    args.insert(args.begin(), {"XDG_DATA_HOME=" + data_, TV_TVPLOT_PATH});
    return RunProgram("/usr/bin/env", args);
  }
  RunResult Define(const std::string& block, const std::vector<std::pair<std::string, std::vector<std::string>>>& areas,
                   const std::string& rule, std::vector<std::string> more = {}) {
    std::vector<std::string> args{"tk", "define", drawing_, "--block", block, "--rule", rule};
    for (const auto& [name, corners] : areas) {
      args.insert(args.end(), {"--area", name});
      args.insert(args.end(), corners.begin(), corners.end());
    }
    args.insert(args.end(), more.begin(), more.end());
    return Tvplot(args);
  }
  RunResult DefineA1(std::vector<std::string> more = {}) {
    const Sheet& a1 = samples::kit::kA1;
    return Define(samples::kTitleFrameA1,
                  {{"图号", Corners(a1, samples::kit::kCellDrawingNo)},
                   {"版次", Corners(a1, samples::kit::kCellRevision)},
                   {"图名", Corners(a1, samples::kit::kCellTitle)},
                   {"D", Corners(a1, samples::kit::kCellDate)},
                   {"出图章", Corners(a1, Box{{120, 45}, {180, 85}})}},
                  "A_B_C", std::move(more));
  }
  RunResult DefineA2() {
    const Sheet& a2 = samples::kit::kA2;
    return Define(samples::kTitleFrameA2,
                  {{"图号", Corners(a2, samples::kit::kCellDrawingNo)},
                   {"图名", Corners(a2, samples::kit::kCellTitle)},
                   {"日期", Corners(a2, samples::kit::kCellDate)}},
                  "A_C_D");
  }

  const std::string drawing_ = Write("titleblocks.dxf", samples::BuildTitleBlockDrawing());
  const std::string data_ = Path("data").string(), library_ = data_ + "/Tarvex/BPlot_TK.tk";
};

TEST_F(TkDefineCommandTest, DefinedFramesReadTheFieldsTheShippedLibraryReads) {
  const RunResult a1 = DefineA1(), a2 = DefineA2();
  ASSERT_EQ(a1.exitCode, 0) << a1.err;
  ASSERT_EQ(a2.exitCode, 0) << a2.err;
  EXPECT_TRUE(Has(a2.out, "共 2 个图框")) << a2.out;

  const std::string shipped = Path("shipped.tk").string();
  ASSERT_TRUE(titleblock::SaveTkFileTo(samples::BuildTitleBlockLibrary(), shipped, false));
  const RunResult ours = Tvplot({"titleblock", drawing_, "--json"});
  const RunResult theirs = Tvplot({"titleblock", drawing_, "--tk", shipped, "--json"});
  ASSERT_EQ(ours.exitCode, 0) << ours.err;
  ASSERT_EQ(theirs.exitCode, 0) << theirs.err;
  EXPECT_TRUE(Has(ours.out, "\"file_name\": \"结施-01_A_基础平面图\"")) << ours.out;
  EXPECT_EQ(Fields(ours.out), Fields(theirs.out));
}

TEST_F(TkDefineCommandTest, WhatCannotBeDefinedOrSavedLeavesTheLibraryAsItWas) {
  ASSERT_EQ(DefineA2().exitCode, 0);
  const std::string before = ReadFile(library_);
  const Sheet& a1 = samples::kit::kA1;
  struct Case {
    const char* what;
    std::function<RunResult()> run;
    int exitCode;
    const char* says;
  };
  const Case cases[] = {
      {"a block the drawing doesn't insert", [&] { return Define("没有的图框", {}, "T"); }, 3, "没有图块"},
      {"a rule naming a field without its area",
       [&] { return Define(samples::kTitleFrameA1, {{"图号", Corners(a1, samples::kit::kCellDrawingNo)}}, "A_C"); }, 3,
       "文件命名中包含图名(C)，但未点取图名(C)范围"},
      {"an area of no width",
       [&] { return Define(samples::kTitleFrameA1, {{"图号", {"10,10", "10,20"}}}, "A"); }, 3, "范围选取有误 !"},
      {"a known block without --replace", [&] { return DefineA2(); }, 3, "--replace"},
      {"an unknown area name", [&] { return Define(samples::kTitleFrameA1, {{"图框", {"0,0", "1,1"}}}, "T"); }, 1,
       "未知的范围"},
      {"a corner missing", [&] { return Tvplot({"tk", "define", drawing_, "--block", "x", "--area", "图号", "1,1"}); },
       1, "两个角点"},
  };
  for (const Case& c : cases) {
    const RunResult r = c.run();
    EXPECT_EQ(r.exitCode, c.exitCode) << c.what << "\n" << r.err;
    EXPECT_TRUE(Has(r.err, c.says)) << c.what << "\n" << r.err;
    EXPECT_EQ(ReadFile(library_), before) << c.what;
  }

  // The library's lock can't be had: nothing is written.
  fs::create_directories(library_ + ".lock");
  const RunResult locked = DefineA1();
  EXPECT_EQ(locked.exitCode, 4) << locked.err;
  EXPECT_TRUE(Has(locked.err, "未能写入")) << locked.err;
  EXPECT_EQ(ReadFile(library_), before);
  fs::remove(library_ + ".lock");

  // Replacing keeps one definition of the name.
  const RunResult replaced = Tvplot({"tk", "define", drawing_, "--block", samples::kTitleFrameA2, "--rule", "T",
                                     "--replace"});
  ASSERT_EQ(replaced.exitCode, 0) << replaced.err;
  EXPECT_TRUE(Has(replaced.out, "共 1 个图框")) << replaced.out;
}

// The library form of the drawing's command line enters what `tk define` enters; a block already
// defined, answered No, and a Cancel leave the file as it was.
TEST_F(TkDefineCommandTest, TheLibraryFormEntersWhatDefineEnters) {
  cad::Database db = samples::BuildTitleBlockDrawing();
  ObjectId blockId;
  for (const auto& b : db.blocks)
    if (b->name == samples::kTitleFrameA2) blockId = b->id;
  const cad::Insert* insert = nullptr;
  db.forEachEntity(*db.modelSpace(), [&](const cad::Entity& e) {
    if (const auto* i = dynamic_cast<const cad::Insert*>(&e); i && i->block == blockId && !insert) insert = i;
  });
  ASSERT_NE(insert, nullptr);
  const std::string handle = insert->id.handleText();
  // The drawing number's cell as picked on that insert.
  const cad::Point2d o = samples::kit::TitleGridOrigin(samples::kit::kA2);
  auto onDrawing = [&](cad::Point2d p) {
    return std::to_string(insert->position.x + insert->scale.x * (o.x + p.x)) + "," +
           std::to_string(insert->position.y + insert->scale.y * (o.y + p.y));
  };
  const std::string drawing = Write("form.dxf", db);
  auto run = [&](const std::vector<std::string>& answers) {
    std::vector<std::string> args{"run", drawing, "TV_BatchPlot_3"};
    for (const std::string& a : answers) args.insert(args.end(), {"--answer", a});
    return Tvplot(args);
  };
  const RunResult entered = run({"A", "H " + handle, "1", onDrawing(samples::kit::kCellDrawingNo.min),
                                 onDrawing(samples::kit::kCellDrawingNo.max), "N", "A", "O", "O"});
  ASSERT_EQ(entered.exitCode, 0) << entered.out << entered.err;
  const std::string byForm = ReadFile(library_);

  for (const auto& answers : {std::vector<std::string>{"A", "H " + handle, "N", "C"},  // known block kept
                              std::vector<std::string>{"D", "1", "C"}}) {             // cancelled delete
    const RunResult r = run(answers);
    EXPECT_EQ(r.exitCode, 0) << r.out << r.err;
    EXPECT_EQ(ReadFile(library_), byForm) << r.out;
  }

  fs::remove(library_);
  const RunResult defined = Define(samples::kTitleFrameA2, {{"图号", Corners(samples::kit::kA2, samples::kit::kCellDrawingNo)}}, "A");
  ASSERT_EQ(defined.exitCode, 0) << defined.err;
  EXPECT_EQ(ReadFile(library_), byForm);

  // The index takes its look from a text picked on the drawing, and keeps it on OK.
  const RunResult styled = run({"M", "T", "ALL", "", "O"});
  ASSERT_EQ(styled.exitCode, 0) << styled.out << styled.err;
  EXPECT_TRUE(Has(styled.out, "字型：HZ     字高：500     图层：AXIS_TEXT")) << styled.out;
  EXPECT_TRUE(Has(ReadFile(library_), "\nAXIS_TEXT\n"));
}

}  // namespace
}  // namespace tv::cli
