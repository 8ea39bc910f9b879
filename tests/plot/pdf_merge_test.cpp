// The exchange files of a merge, the merging programs' own work (list, markers, joined pages) and
// the page rotation of a sheet PDF, on files made in the test.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "../support/pdf_making.h"
#include "../support/pdf_reading.h"
#include "../support/run_program.h"
#include "../support/scoped_env.h"
#include "merge_files.h"
#include "plot/pdf_merge.h"
#include "plot/pdf_rotation.h"
#include "plot/plot_job.h"
#include "settings/config.h"
#include "settings/folders.h"

namespace tv::plot {
namespace {

namespace fs = std::filesystem;
using namespace test_support;
using pdfmerge::MergeEntry;

TEST(MergeListTest, TheListIsTargetCountThenPathAndNamePerSheet) {
  EXPECT_EQ(MergeListText("/o/set.pdf", "/t/run", {"A-01", "总图+说明"}),
            "\xEF\xBB\xBF/o/set.pdf\n2\n/t/run/1.pdf\nA-01\n/t/run/2.pdf\n总图+说明\n");
  EXPECT_EQ(MergeListText("/o/set.pdf", "/t", {}), "\xEF\xBB\xBF/o/set.pdf\n0\n");
}

TEST(MergeListTest, TheProgramsReadWhatTheRunWritesAndRefuseBrokenLists) {
  std::string target;
  std::vector<MergeEntry> entries;
  ASSERT_TRUE(pdfmerge::ParseMergeList(MergeListText("/o/集.pdf", "/t", {"甲", "乙"}), target, entries));
  EXPECT_EQ(target, "/o/集.pdf");
  ASSERT_EQ(entries.size(), 2u);
  EXPECT_EQ(entries[1].path, "/t/2.pdf");
  EXPECT_EQ(entries[1].bookmark, "乙");

  struct Case {
    const char* text;
    bool ok;
    std::size_t count;
  };
  const Case cases[] = {
      {"/o/a.pdf\n1\n/t/1.pdf\nA", true, 1},         // no BOM, no final line feed
      {"/o/a.pdf\r\n1\r\n/t/1.pdf\r\nA\r\n", true, 1},  // CR LF lines
      {"/o/a.pdf\n2\n/t/1.pdf\nA\n", false, 0},      // a sheet short
      {"/o/a.pdf\nzwei\n", false, 0},
      {"\n1\n/t/1.pdf\nA\n", false, 0},               // no target
      {"", false, 0},
  };
  for (const Case& c : cases) {
    entries.clear();
    EXPECT_EQ(pdfmerge::ParseMergeList(c.text, target, entries), c.ok) << c.text;
    if (c.ok) {
      EXPECT_EQ(entries.size(), c.count) << c.text;
      EXPECT_EQ(entries.front().bookmark, "A") << c.text;
    }
  }
}

TEST(MergeMarkersTest, CountAndNamesComeFromTheMarkerNames) {
  TempDir dir("tv_markers");
  const fs::path markers = dir / "m";
  fs::create_directories(markers);
  for (const char* name : {"3.tmpnum", "总图.tmp1", "a.tmp.b.tmp3", "ignored.txt"}) WriteFile(markers / name, "");
  std::vector<MergeEntry> entries;
  ASSERT_TRUE(pdfmerge::ReadMarkers(markers.string(), "/pdfs", entries));
  ASSERT_EQ(entries.size(), 3u);
  EXPECT_EQ(entries[0].path, "/pdfs/1.pdf");
  EXPECT_EQ(entries[0].bookmark, "总图");
  EXPECT_EQ(entries[1].bookmark, "2") << "a sheet without its marker is named by its place";
  EXPECT_EQ(entries[2].bookmark, "a.tmp.b");
  fs::remove(markers / "3.tmpnum");
  EXPECT_FALSE(pdfmerge::ReadMarkers(markers.string(), "/pdfs", entries));
}

TEST(MergeFilesTest, PagesKeepOrderSizeAndRotationAndEachFileGetsABookmark) {
  TempDir dir("tv_merge_files");
  const std::string a = (dir / "1.pdf").string(), b = (dir / "2.pdf").string(), c = (dir / "3.pdf").string();
  MakePdf(a, {{1190.55, 841.89}});
  MakePdf(b, {{595.28, 841.89, 90}}, BoxPlace::InPageTree);
  MakePdf(c, {{841.89, 595.28}, {420, 595}}, BoxPlace::InPage, true);
  const std::string target = (dir / "out" / "set.pdf").string();
  fs::create_directories(dir / "out");
  std::string error;
  std::vector<std::string> skipped;
  ASSERT_TRUE(pdfmerge::MergeFiles({{a, "A0"}, {(dir / "gone.pdf").string(), "gone"}, {b, "A4"}, {c, "A4 两页"}}, target,
                                   error, &skipped))
      << error;
  EXPECT_EQ(skipped, (std::vector<std::string>{(dir / "gone.pdf").string()})) << "a sheet that didn't plot is left out";
  const PdfFacts f = ReadPdfFacts(target);
  ASSERT_TRUE(f.read);
  ASSERT_EQ(f.pages.size(), 4u);
  EXPECT_NEAR(f.pages[0].widthMm, 420, 0.1);
  EXPECT_NEAR(f.pages[1].widthMm, 210, 0.1) << "a box inherited from the page tree travels with the page";
  EXPECT_EQ(f.pages[1].rotate, 90);
  EXPECT_NEAR(f.pages[2].widthMm, 297, 0.1);
  EXPECT_EQ(f.outline, (std::vector<std::string>{"A0", "A4", "A4 两页"}));
  EXPECT_EQ(f.outlinePages, (std::vector<int>{0, 1, 2}));
  EXPECT_EQ(FilesIn(dir / "out"), (std::vector<std::string>{"set.pdf"})) << "no working file left";
}

TEST(MergeFilesTest, NothingToJoinLeavesNoTarget) {
  TempDir dir("tv_merge_none");
  const std::string target = (dir / "set.pdf").string();
  WriteFile(target, "an old merge");
  WriteFile(dir / "bad.pdf", "not a pdf at all, just text");
  std::string error;
  EXPECT_FALSE(pdfmerge::MergeFiles({{(dir / "bad.pdf").string(), "x"}, {(dir / "none.pdf").string(), "y"}}, target, error));
  EXPECT_FALSE(error.empty());
  EXPECT_FALSE(fs::exists(target)) << "the target exists only after a merge that succeeded";
}

TEST(RotatePdfTest, TheFirstPageTurnsWhereverItsBoxIs) {
  struct Case {
    const char* what;
    BoxPlace box;
    bool objectStreams;
    int rotateBefore;
    int angle;
    int rotateAfter;
  };
  const Case cases[] = {
      {"box in the page", BoxPlace::InPage, false, 0, 90, 90},
      {"any other angle gives 270", BoxPlace::InPage, false, 0, 180, 270},
      {"270", BoxPlace::InPage, false, 0, 270, 270},
      {"box inherited from the page tree", BoxPlace::InPageTree, false, 0, 90, 90},
      {"box inside a compressed object stream", BoxPlace::InPage, true, 0, 270, 270},
      {"an earlier rotation is replaced, not added to", BoxPlace::InPage, false, 180, 90, 90},
  };
  TempDir dir("tv_rotate");
  for (const Case& c : cases) {
    const std::string path = (dir / "sheet.pdf").string();
    MakePdf(path, {{1190.55, 841.89, c.rotateBefore}, {595, 842}}, c.box, c.objectStreams);
    EXPECT_TRUE(RotatePdf(path, c.angle)) << c.what;
    const PdfFacts f = ReadPdfFacts(path);
    ASSERT_TRUE(f.read) << c.what << ": the file stays readable";
    ASSERT_EQ(f.pages.size(), 2u) << c.what;
    EXPECT_EQ(f.pages[0].rotate, c.rotateAfter) << c.what;
    EXPECT_EQ(f.pages[1].rotate, 0) << c.what << ": only the first page";
    EXPECT_NEAR(f.pages[0].widthMm, 420, 0.1) << c.what << ": the box itself stays";
  }
}

TEST(RotatePdfTest, TinyAndForeignFilesStayAsTheyAre) {
  TempDir dir("tv_rotate_bad");
  const std::string cases[] = {"%PDF-1.4\n/MediaBox", "", "plain text with /MediaBox [0 0 10 10] but no PDF around it"};
  for (const std::string& bytes : cases) {
    const std::string path = (dir / "x.pdf").string();
    WriteFile(path, bytes);
    EXPECT_FALSE(RotatePdf(path, 90)) << bytes;
    EXPECT_EQ(ReadFile(path), bytes);
  }
  EXPECT_FALSE(RotatePdf((dir / "missing.pdf").string(), 90));
}


TEST(RunToolTest, AToolIsJudgedByTheFileItWritesInItsWorkingFolder) {
  TempDir dir("tv_run_tool");
  const fs::path writer = dir / "writer.sh";
  WriteFile(writer, "#!/bin/sh\necho made > out.pdf\n");
  fs::permissions(writer, fs::perms::owner_all);
  const fs::path idle = dir / "idle.sh";
  WriteFile(idle, "#!/bin/sh\nexit 0\n");
  fs::permissions(idle, fs::perms::owner_all);
  const fs::path work = dir / "work";
  fs::create_directories(work);
  const std::string expected = (work / "out.pdf").string();

  EXPECT_FALSE(RunTool((dir / "missing").string(), work.string(), expected)) << "a program that isn't there";
  EXPECT_FALSE(RunTool(idle.string(), work.string(), expected)) << "a program that writes nothing";
  EXPECT_TRUE(RunTool(writer.string(), work.string(), expected)) << "started in the working folder";
  EXPECT_EQ(ReadFile(expected), "made\n");
  // The file is still there from before: an idle program doesn't pass for having written it.
  EXPECT_FALSE(RunTool(idle.string(), work.string(), expected));
}


// MergePdfs with the installed programs, on numbered files of which the second never plotted.
TEST(MergePdfsTest, ASheetThatDidNotPlotIsLeftOutNotABlankPage) {
  TempDir dir("tv_merge_pdfs");
  // A data folder of the test's own; the folders are worked out again once its variable is back.
  struct Recompute {
    ~Recompute() { settings::ComputeFolders(); }
  } recompute;
  test_support::ScopedEnv data("XDG_DATA_HOME", (dir / "data").string());
  settings::ComputeFolders();
  const fs::path run = dir / "run";
  fs::create_directories(run);
  MakePdf((run / "1.pdf").string(), {{1190.55, 841.89}});
  MakePdf((run / "3.pdf").string(), {{595.28, 841.89}});
  Job().MergedPdfPath = (dir / "set.pdf").string();
  settings::GlobalConfig().pdf_open_after_merge = 0;
  EXPECT_TRUE(MergeTitlePdfs(run.string(), {"甲[++}乙", "丙", "丁"}));
  Job() = JobState{};
  const PdfFacts f = ReadPdfFacts((dir / "set.pdf").string());
  ASSERT_TRUE(f.read);
  ASSERT_EQ(f.pages.size(), 2u);
  EXPECT_NEAR(f.pages[1].widthMm, 210, 0.1);
  EXPECT_EQ(f.outline, (std::vector<std::string>{"甲+乙", "丁"}));
  // The list kept every sheet in its place.
  const std::string list = ReadFile(dir / "data" / "Tarvex" / "plot3.tm");
  EXPECT_NE(list.find((run / "2.pdf").string() + "\n丙\n"), std::string::npos) << list;
  settings::GlobalConfig() = settings::Config{};
}

// One sheet is copied: beside the target and renamed over it, so that a copy that fails leaves
// the old file as it was and nothing half-written.
TEST(MergePdfsTest, OneSheetReplacesTheTargetWholeOrNotAtAll) {
  TempDir dir("tv_merge_one");
  settings::GlobalConfig().pdf_open_after_merge = 0;
  for (const bool plotted : {true, false}) {
    SCOPED_TRACE(plotted);
    const fs::path run = dir / (plotted ? "plotted" : "missed"), out = dir / (plotted ? "out-plotted" : "out-missed");
    fs::create_directories(run);
    fs::create_directories(out);
    if (plotted) MakePdf((run / "1.pdf").string(), {{595.28, 841.89}});
    const fs::path target = out / "set.pdf";
    WriteFile(target, "old");
    Job().MergedPdfPath = target.string();
    EXPECT_EQ(MergePdfs(run.string(), {"甲"}), plotted);
    Job() = JobState{};
    EXPECT_EQ(FilesIn(out), std::vector<std::string>{"set.pdf"});
    if (plotted) EXPECT_EQ(ReadFile(target), ReadFile(run / "1.pdf"));
    else EXPECT_EQ(ReadFile(target), "old");
  }
  settings::GlobalConfig() = settings::Config{};
}

}  // namespace
}  // namespace tv::plot
