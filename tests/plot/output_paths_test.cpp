// Where plotted files go: the folder by path mode, the sheet paths with their extensions and
// numbers, the host's limit on a path's length, names cut to what a file system takes, and what
// tells a file just written from an old one.
#include "plot/output_paths.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "../support/fake_editor.h"
#include "../support/run_program.h"
#include "../support/scoped_env.h"
#include "host/null_editor.h"
#include "settings/folders.h"

namespace tv::plot {
namespace {

namespace fs = std::filesystem;
using test_support::TempDir;

class DocumentEditor final : public test_support::FakeEditor {
 public:
  std::string documentPath() override { return document; }
  host::MessageAnswer messageBox(std::string_view text, std::string_view caption, host::MessageButtons) override {
    messages.emplace_back(text);
    captions.emplace_back(caption);
    return host::MessageAnswer::Ok;
  }
  std::string document;
  std::vector<std::string> messages, captions;
};

class OutputPathsTest : public ::testing::Test {
 protected:
  OutputPathsTest() {
    fs::create_directories(dir_ / "plans");
    editor.document = (dir_ / "plans" / "一层平面.dxf").string();
  }
  std::string plans() const { return (dir_ / "plans").string(); }

  TempDir dir_{"tv_output_paths"};
  DocumentEditor editor;
};

// ---- the drawing's folder --------------------------------------------------------------------------------

TEST_F(OutputPathsTest, DrawingFolderAndTitleComeFromTheDocument) {
  EXPECT_EQ(DrawingFolder(), plans());
  EXPECT_EQ(DrawingTitle(), "一层平面");

  editor.document = "relative.dxf";  // stands in the working folder
  EXPECT_EQ(DrawingFolder(), fs::current_path().string());
  EXPECT_EQ(DrawingTitle(), "relative");
}

TEST_F(OutputPathsTest, UnsavedDrawingWritesUnderTheUsersHome) {
  test_support::ScopedEnv home("HOME", (dir_ / "home").string());
  editor.document.clear();
  EXPECT_EQ(DrawingFolder(), (dir_ / "home").string());
  EXPECT_EQ(DrawingTitle(), "Drawing1");
  std::string custom = " ";
  EXPECT_EQ(OutputFolder(kPathBesideDrawing, 0, custom), (dir_ / "home").string());
}

// ---- the output folder -------------------------------------------------------------------------------------

TEST_F(OutputPathsTest, FormatFolderIsNamedAfterTheFormat) {
  std::string custom = "/elsewhere";
  const std::vector<std::string> names{"/PDF", "/DWF", "/JPG", "/PNG", "/PLT", "/EPS", "/DWG"};
  for (std::int32_t format = 0; format < 7; ++format)
    EXPECT_EQ(OutputFolder(kPathFormatFolder, format, custom), plans() + names[static_cast<std::size_t>(format)]);
  EXPECT_EQ(OutputFolder(kPathFormatFolder, 7, custom), plans());
  EXPECT_EQ(OutputFolder(kPathFormatFolder, -1, custom), plans());
  EXPECT_EQ(OutputFolder(kPathBesideDrawing, 3, custom), plans());
  EXPECT_EQ(custom, "/elsewhere");
  EXPECT_FALSE(fs::exists(plans() + "/PDF"));  // the caller creates the folder
  EXPECT_EQ(FormatFolderRowText(6), " 源文件路径\\DWG");
}

TEST_F(OutputPathsTest, CustomFolderThatIsGoneFallsBackAndTheSettingFollows) {
  fs::create_directories(dir_ / "out");
  std::string custom = (dir_ / "out").string();
  EXPECT_EQ(OutputFolder(kPathCustom, 0, custom), (dir_ / "out").string());
  EXPECT_EQ(custom, (dir_ / "out").string());

  fs::remove(dir_ / "out");
  EXPECT_EQ(OutputFolder(kPathCustom, 0, custom), plans());
  EXPECT_EQ(custom, plans());

  custom = " ";  // the setting's default
  EXPECT_EQ(OutputFolder(kPathCustom, 0, custom), plans());
  EXPECT_EQ(custom, plans());
}

TEST_F(OutputPathsTest, TempFolderIsCreated) {
  fs::create_directories(dir_ / "home");
  test_support::ScopedEnv home("HOME", (dir_ / "home").string());
  test_support::ScopedEnv documents("XDG_DOCUMENTS_DIR", (dir_ / "home").string());
  settings::ComputeFolders();
  const std::string folder = TempFolder();
  EXPECT_EQ(folder, (dir_ / "home" / "Tarvex_Temp").string());
  EXPECT_TRUE(fs::is_directory(folder));
}

// ---- sheet paths --------------------------------------------------------------------------------------------

TEST(SheetPaths, ExtensionsByFormatAndNumberedNames) {
  const std::vector<std::string> extensions{".pdf", ".dwf", ".jpg", ".png", ".plt", ".eps", ".dxf"};
  for (std::int32_t format = 0; format < 7; ++format)
    EXPECT_EQ(SheetPath("/out", "建施01", format), "/out/建施01" + extensions[static_cast<std::size_t>(format)]);
  EXPECT_EQ(SheetPath("/out", "a.b", 9), "/out/a.b");

  EXPECT_EQ(MergeSheetPath("/tmp/Tarvex_Temp", 1), "/tmp/Tarvex_Temp/1.pdf");
  EXPECT_EQ(MergeSheetPath("/tmp/Tarvex_Temp", 12), "/tmp/Tarvex_Temp/12.pdf");

  EXPECT_EQ(NumberedPltPath("/out/plan", 1), "/out/plan-001.plt");
  EXPECT_EQ(NumberedPltPath("/out/plan", 9), "/out/plan-009.plt");
  EXPECT_EQ(NumberedPltPath("/out/plan", 10), "/out/plan-010.plt");
  EXPECT_EQ(NumberedPltPath("/out/plan", 99), "/out/plan-099.plt");
  EXPECT_EQ(NumberedPltPath("/out/plan", 100), "/out/plan-100.plt");
  EXPECT_EQ(NumberedPltPath("/out/plan", 1234), "/out/plan-1234.plt");
}

TEST(SheetPaths, LineMarksBecomeTheSeparatorAndDontCountAsAName) {
  EXPECT_EQ(WithTitleSeparator("结施01_一层[++}二层[++}三层", "+"), "结施01_一层+二层+三层");
  EXPECT_EQ(WithTitleSeparator("a[++}b", ""), "ab");
  EXPECT_EQ(WithTitleSeparator("a[++}b", "[++}"), "a[++}b");
  EXPECT_TRUE(IsEmptyFileName("[++}[++}"));
  EXPECT_TRUE(IsEmptyFileName(""));
  EXPECT_FALSE(IsEmptyFileName("[++} "));
}

// ---- the length limit ------------------------------------------------------------------------------------------

TEST_F(OutputPathsTest, PathOfExactly255CharactersPassesWithoutAMessage) {
  const std::string limit = "/" + std::string(250, 'a') + ".pdf";
  ASSERT_EQ(limit.size(), 255u);
  EXPECT_TRUE(CheckOutputPathLength(limit));
  EXPECT_TRUE(editor.messages.empty());

  const std::string longer = "/" + std::string(251, 'a') + ".pdf";
  EXPECT_FALSE(CheckOutputPathLength(longer));
  ASSERT_EQ(editor.messages.size(), 1u);
  EXPECT_EQ(editor.messages[0], "输出文件的文件名长度（路径+文件名）超过了限值，出错 !\n\n" + longer);
  EXPECT_EQ(editor.captions[0], "Tarvex打印");
}

TEST_F(OutputPathsTest, LengthIsCountedInCharactersNotBytes) {
  std::string chinese = "/";
  for (int i = 0; i < 250; ++i) chinese += "图";
  chinese += ".pdf";
  EXPECT_EQ(HostPathLength(chinese), 255u);
  EXPECT_TRUE(CheckOutputPathLength(chinese));
  EXPECT_EQ(HostPathLength("\U0001F600"), 2u);  // beyond the basic plane: two units
  EXPECT_TRUE(editor.messages.empty());
}

// ---- names the file system takes, and fresh files -------------------------------------------------------

TEST(FileNames, CutToTheBytesAFileSystemTakesBetweenCharacters) {
  struct Case {
    std::string name;
    std::size_t room;
    std::string expected;
  };
  const std::string cjk = "基础平面图";  // 3 bytes a character
  const std::string emoji = "a\U0001F600b";  // a character of 4 bytes
  for (const Case& c : std::vector<Case>{{"plan", 10, "plan"},
                                         {"plan01", 6, "plan01"},
                                         {"plan01", 4, "plan"},
                                         {cjk, 15, cjk},
                                         {cjk, 14, "基础平面"},
                                         {cjk, 13, "基础平面"},
                                         {cjk, 12, "基础平面"},
                                         {cjk, 2, ""},
                                         {emoji, 4, "a"},
                                         {emoji, 5, "a\U0001F600"},
                                         {emoji, 6, emoji}}) {
    SCOPED_TRACE(c.name + " in " + std::to_string(c.room));
    EXPECT_EQ(FitFileName(c.name, c.room), c.expected);
  }
  // The extension takes its share of the 255 bytes of a name.
  EXPECT_EQ(FileNameRoom(0), 251u);
  EXPECT_EQ(FileNameRoom(99), 255u);
}

TEST_F(OutputPathsTest, AFreshFileIsToldFromTheOneThatWasThere) {
  const std::string path = (dir_ / "sheet.pdf").string();
  EXPECT_FALSE(StampOf(path));
  EXPECT_FALSE(IsFreshOutput(path, std::nullopt)) << "nothing written";
  test_support::WriteFile(path, "new");
  EXPECT_TRUE(IsFreshOutput(path, std::nullopt)) << "a file where none was";
  const std::optional<FileStamp> old = StampOf(path);
  ASSERT_TRUE(old);
  EXPECT_FALSE(IsFreshOutput(path, old)) << "the old file, untouched";
  // A file written again, as a plot renames a new one over the old.
  test_support::WriteFile(dir_ / "next", "newer");
  fs::rename(dir_ / "next", path);
  EXPECT_TRUE(IsFreshOutput(path, old));
  fs::remove(path);
  EXPECT_FALSE(IsFreshOutput(path, old)) << "gone";
}

}  // namespace
}  // namespace tv::plot
