// The list of the frame folder: its rows and numbering, and every failing action leaving the list
// and the folder as they were.
#include "titleblock/frame_library.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <set>

#include "../support/run_program.h"

namespace tv::titleblock {
namespace {

namespace fs = std::filesystem;
using test_support::TempDir;
using test_support::WriteFile;

std::set<std::string> Listing(const fs::path& folder) {
  std::set<std::string> names;
  for (const auto& e : fs::directory_iterator(folder)) names.insert(e.path().filename().string());
  return names;
}

std::vector<std::string> Names(const FrameLibrary& library) {
  std::vector<std::string> names;
  for (const FrameEntry& e : library.entries()) names.push_back(ShownFrameName(e));
  return names;
}

class FrameLibraryTest : public ::testing::Test {
 protected:
  void SetUp() override {
    for (const char* name : {"A0.dxf", "A1.dwg", "A2.dxf", "A3.dxf", "A4.DXF", "notes.txt"}) WriteFile(folder_ / name, "x");
    fs::create_directories(folder_ / "sub.dxf");  // a folder is no frame
  }
  TempDir dir_{"tv_frames"};
  fs::path folder_ = fs::path(dir_.path()) / "Frame";
  bool made_ = fs::create_directories(folder_);
};

TEST_F(FrameLibraryTest, ListsTheDrawingFilesNumberedAndRenumbersAfterADelete) {
  FrameLibrary library(folder_.string());
  EXPECT_EQ(Names(library), (std::vector<std::string>{"A0", "A1", "A2", "A3", "A4"}));
  const auto rows = library.rows();
  ASSERT_EQ(rows.size(), 5u);
  EXPECT_EQ(rows[0], (std::array<std::string, 4>{" 1", "A0", "DEL", "REDEFINE"}));
  EXPECT_EQ(FrameListColumns(), (std::vector<std::string>{" 序号 ", " 图    框 ", " 删  除 ", " 重定义 "}));

  EXPECT_FALSE(library.DeleteFrame(2));
  EXPECT_FALSE(fs::exists(folder_ / "A2.dxf"));
  EXPECT_EQ(Names(library), (std::vector<std::string>{"A0", "A1", "A3", "A4"}));
  std::vector<std::string> numbers;
  for (const auto& row : library.rows()) numbers.push_back(row[0]);
  EXPECT_EQ(numbers, (std::vector<std::string>{" 1", " 2", " 3", " 4"}));
}

TEST_F(FrameLibraryTest, AnEmptyOrMissingFolderGivesAnEmptyList) {
  fs::create_directories(folder_ / "empty");
  EXPECT_TRUE(FrameLibrary((folder_ / "empty").string()).entries().empty());
  EXPECT_TRUE(FrameLibrary((folder_ / "missing").string()).rows().empty());
}

TEST_F(FrameLibraryTest, RenameKeepsTheExtensionAndTheSameNameDoesNothing) {
  FrameLibrary library(folder_.string());
  EXPECT_FALSE(library.RenameFrame(1, "A1"));
  EXPECT_TRUE(fs::exists(folder_ / "A1.dwg"));
  EXPECT_FALSE(library.RenameFrame(1, "标准A1"));
  EXPECT_EQ(library.entries()[1].file_name, "标准A1.dwg");
  EXPECT_EQ(library.entries()[1].path, (folder_ / "标准A1.dwg").string());
  EXPECT_TRUE(fs::exists(folder_ / "标准A1.dwg"));
  EXPECT_FALSE(fs::exists(folder_ / "A1.dwg"));
  // Names differ by case only: a frame of its own.
  EXPECT_FALSE(library.RenameFrame(0, "a3"));
  EXPECT_TRUE(fs::exists(folder_ / "a3.dxf"));
}

TEST_F(FrameLibraryTest, AFailingActionSaysWhyAndLeavesListAndFolderAsTheyWere) {
  const std::string a2 = (folder_ / "A2.dxf").string();
  const struct {
    const char* what;
    std::function<void()> prepare;
    std::function<std::optional<FrameFailure>(FrameLibrary&)> act;
    std::string text, caption;
  } cases[] = {
      {"rename onto another frame", [] {}, [](FrameLibrary& l) { return l.RenameFrame(2, "A3"); }, "图框重名 !", "图框重名报错"},
      {"rename onto a frame of the other format", [] {}, [](FrameLibrary& l) { return l.RenameFrame(2, "A1"); },
       "图框重名 !", "图框重名报错"},
      {"rename onto a folder of that name", [] {}, [](FrameLibrary& l) { return l.RenameFrame(2, "sub"); },
       "文件\n\n" + a2 + "\n\n无法修改文件名 !", "文件改名报错"},
      {"rename out of the folder", [] {}, [](FrameLibrary& l) { return l.RenameFrame(2, "../A2"); },
       "文件\n\n" + a2 + "\n\n无法修改文件名 !", "文件改名报错"},
      {"add under a taken name", [] {}, [](FrameLibrary& l) { return l.AddFrame({}, "A0"); }, "图框重名 !", "图框重名报错"},
      {"delete a file that went away", [&] { fs::remove(a2); },
       [](FrameLibrary& l) { return l.DeleteFrame(2); }, "文件\n\n" + a2 + "\n\n无法删除 !", "文件删除报错"},
  };
  for (const auto& c : cases) {
    FrameLibrary library(folder_.string());
    c.prepare();
    const auto names = Names(library);
    const auto files = Listing(folder_);
    const std::optional<FrameFailure> failure = c.act(library);
    ASSERT_TRUE(failure) << c.what;
    EXPECT_EQ(failure->text, c.text) << c.what;
    EXPECT_EQ(failure->caption, c.caption) << c.what;
    EXPECT_EQ(Names(library), names) << c.what;
    EXPECT_EQ(Listing(folder_), files) << c.what;
    WriteFile(a2, "x");
  }
}

TEST_F(FrameLibraryTest, DeleteInAReadOnlyFolderKeepsTheFrame) {
  if (geteuid() == 0) GTEST_SKIP() << "the superuser writes into read-only folders";
  FrameLibrary library(folder_.string());
  fs::permissions(folder_, fs::perms::owner_write, fs::perm_options::remove);
  const auto failure = library.DeleteFrame(0);
  fs::permissions(folder_, fs::perms::owner_write, fs::perm_options::add);
  ASSERT_TRUE(failure);
  EXPECT_EQ(failure->caption, "文件删除报错");
  EXPECT_EQ(library.entries().size(), 5u);
  EXPECT_TRUE(fs::exists(folder_ / "A0.dxf"));
}

TEST_F(FrameLibraryTest, ChoosingAnotherFolderRefillsTheList) {
  FrameLibrary library(folder_.string());
  fs::create_directories(folder_ / "other");
  WriteFile(folder_ / "other" / "B.dxf", "x");
  EXPECT_FALSE(library.ChooseFrameFolder(folder_.string()));
  EXPECT_TRUE(library.ChooseFrameFolder((folder_ / "other").string()));
  EXPECT_EQ(Names(library), (std::vector<std::string>{"B"}));
  EXPECT_EQ(library.selected, 0);
}

}  // namespace
}  // namespace tv::titleblock
