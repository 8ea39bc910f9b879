// The folders computed at load: the host's version and plotter folders with their warnings, the
// proof by writing that picks the working folder, and file lists.
#include "settings/folders.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "../support/run_program.h"
#include "../support/fake_editor.h"
#include "../support/scoped_env.h"
#include "host/null_editor.h"

namespace tv::settings {
namespace {

namespace fs = std::filesystem;
using test_support::ReadFile;
using test_support::ScopedEnv;
using test_support::TempDir;
using test_support::WriteFile;

// ---- the host's version ---------------------------------------------------------------------------------

TEST(HostVersionOf, MajorFromTheFirstTwoAndMinorFromTheFourthCharacter) {
  const std::pair<const char*, double> cases[] = {
      {"25.0s", 25.0}, {"25.0s (LMS Tech)", 25.0}, {"24.3", 24.3}, {"19.1s", 19.1},
      {"9.1", 9.0},  // no fourth character: no minor
      {"", 0.0},     {"R12.5", 0.0}};
  for (const auto& [text, version] : cases) EXPECT_DOUBLE_EQ(HostVersionOf(text), version) << text;
}

// ---- entries of a folder preference ---------------------------------------------------------------------

TEST(FolderEntries, TokensSeparatorsAndCaseOfEachEntry) {
  struct Case {
    std::string value, local, roamable;
    std::vector<std::string> entries;
  };
  const Case cases[] = {
      {"/opt/cad/drv", "/l", "/r", {"/opt/cad/drv"}},
      {"", "/l", "/r", {""}},
      // Tokens expand with or without their separator; everything but the root is lower case.
      {"%roamablerootfolder%/Plotters;%localrootfolder%Plot Styles;%roamablerootfolder%", "/home/u/Local",
       "/home/u/Roam", {"/home/u/Roam/plotters", "/home/u/Local/plot styles", "/home/u/Roam"}},
      {"%LocalRootFolder%\\Plotters\\PMP Files\\", "/Users/Ann/Local", "/r", {"/Users/Ann/Local/plotters/pmp files"}},
      {"/Opt/CAD/DRV", "/l", "/r", {"/opt/cad/drv"}},
      // Windows separators and trailing separators go.
      {"/a/b/;/c\\d\\;;/", "/l", "/r", {"/a/b", "/c/d", "", "/"}},
  };
  for (const Case& c : cases) EXPECT_EQ(FolderEntries(c.value, c.local, c.roamable), c.entries) << c.value;
}

TEST(FolderEntries, ValueIsCutAtTheHostsBufferLength) {
  // The second path loses its last characters: it ends exactly at the cut.
  std::string value = "/x;" + std::string(kHostValueLength - 3, 'a') + "bbbb";
  auto entries = FolderEntries(value, "/l", "/r");
  ASSERT_EQ(entries.size(), 2u);
  EXPECT_EQ(entries[1], std::string(kHostValueLength - 3, 'a'));

  // Characters, not bytes, and never half a character.
  std::string chinese;
  for (std::size_t i = 0; i < kHostValueLength + 5; ++i) chinese += "图";
  entries = FolderEntries(chinese, "/l", "/r");
  ASSERT_EQ(entries.size(), 1u);
  EXPECT_EQ(entries[0].size(), kHostValueLength * std::string("图").size());
}

// ---- existing folders -------------------------------------------------------------------------------------

class FolderFilesTest : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_FALSE(dir_.path().empty()); }
  std::string Make(const std::string& relative) {
    fs::create_directories(dir_ / relative);
    return (dir_ / relative).string();
  }
  std::string Path(const std::string& relative) const { return (dir_ / relative).string(); }

  TempDir dir_{"tv_folders"};
};

TEST_F(FolderFilesTest, ExistingFoldersKeepTheirOrderAndNoneGivesEmpty) {
  const std::string a = Make("a"), b = Make("b");
  EXPECT_EQ(ExistingFolders({b, Path("x"), a, ""}), b + ";" + a);
  EXPECT_EQ(ExistingFolders({Path("x"), ""}), "");
  EXPECT_EQ(ExistingFolders(FolderEntries(Path("missing") + ";" + a, "/l", "/r")), a);
  WriteFile(dir_ / "file", "not a folder");
  EXPECT_EQ(ExistingFolders({Path("file")}), "");
}

TEST_F(FolderFilesTest, LowerCasedEntriesFindFoldersSpeltInAnyCase) {
  const std::string root = Make("Root");
  const std::string styles = Make("Root/Plot Styles");
  const std::string pmp = Make("Root/Plotters/PMP Files");
  const std::string lower = Make("Root/drv");
  EXPECT_EQ(ExistingFolders(FolderEntries("%ROAMABLEROOTFOLDER%\\Plot Styles;%roamablerootfolder%/PLOTTERS/pmp files;"
                                          "%LOCALROOTFOLDER%/DRV",
                                          root, root)),
            styles + ";" + pmp + ";" + lower);
  // The part above the root is not lower-cased: the root is inserted after.
  EXPECT_EQ(ExistingFolders(FolderEntries("%localrootfolder%/nothing", root, root)), "");
}

TEST_F(FolderFilesTest, FirstUsableFolderCreatesOrFallsBackToTheFirstEntry) {
  WriteFile(dir_ / "file", "x");
  const std::string blocked = Path("file") + "/sub";  // can never be created
  EXPECT_EQ(FirstUsableFolder(blocked + ";" + Path("new/deep")), Path("new/deep"));
  EXPECT_TRUE(fs::is_directory(dir_ / "new/deep"));
  EXPECT_EQ(FirstUsableFolder(blocked + ";" + Path("file") + "/other"), blocked);
  EXPECT_EQ(FirstUsableFolder(""), "");
  EXPECT_EQ(FirstUsableFolder(";" + Path("second")), Path("second"));
}

TEST_F(FolderFilesTest, ListFilesTakesTheExactExtensionInAnyCase) {
  const std::string folder = Make("plotters");
  for (const char* name : {"b.pc3", "A.PC3", "c.Pc3", "long.pc3x", "d.pc3.bak", "pc3", "e.pmp"})
    WriteFile(fs::path(folder) / name, "x");
  fs::create_directories(fs::path(folder) / "folder.pc3");

  std::vector<std::string> list{"stale"};
  ListFiles(folder, "pc3", list);
  EXPECT_EQ(list, (std::vector<std::string>{"A.PC3", "b.pc3", "c.Pc3"}));
  ListFiles(folder, "PMP", list);
  EXPECT_EQ(list, (std::vector<std::string>{"e.pmp"}));
  ListFiles(Path("missing"), "pc3", list);
  EXPECT_TRUE(list.empty());
}

TEST_F(FolderFilesTest, FolderExistsAndRemoveFileTellFilesFromFolders) {
  const std::string folder = Make("f");
  WriteFile(dir_ / "f/x.txt", "x");
  EXPECT_TRUE(FolderExists(folder));
  EXPECT_FALSE(FolderExists(Path("f/x.txt")));
  EXPECT_FALSE(FolderExists(Path("none")));
  EXPECT_FALSE(FolderExists(""));

  EXPECT_FALSE(RemoveFile(folder));  // never a folder
  EXPECT_TRUE(fs::is_directory(folder));
  EXPECT_TRUE(RemoveFile(Path("f/x.txt")));
  EXPECT_FALSE(fs::exists(dir_ / "f/x.txt"));
  EXPECT_FALSE(RemoveFile(Path("f/x.txt")));
  EXPECT_FALSE(RemoveFile(""));
}

// ---- the proof by writing ----------------------------------------------------------------------------------

// True when permissions bind this process: they don't for the superuser.
bool PermissionsBind(const fs::path& scratch) {
  const fs::path probe = scratch / "probe";
  WriteFile(probe, "x");
  fs::permissions(probe, fs::perms::owner_read);
  const bool refused = !std::ofstream(probe, std::ios::app);
  fs::permissions(probe, fs::perms::owner_all);
  fs::remove(probe);
  return refused;
}

TEST_F(FolderFilesTest, WritableFolderIsProvedAndTheTestFileDeleted) {
  const std::string root = Make("docs");
  EXPECT_TRUE(WritableTempFolder(root));
  EXPECT_TRUE(fs::is_directory(dir_ / "docs/Tarvex_Temp"));
  EXPECT_FALSE(fs::exists(dir_ / "docs/Tarvex_Temp/test.txt"));

  // A file left behind is written over, not believed.
  WriteFile(dir_ / "docs/Tarvex_Temp/test.txt", "12345\n");
  EXPECT_TRUE(WritableTempFolder(root));
  EXPECT_FALSE(fs::exists(dir_ / "docs/Tarvex_Temp/test.txt"));
}

TEST_F(FolderFilesTest, MissingRootsAndBlockedTestFilesFail) {
  EXPECT_FALSE(WritableTempFolder(""));
  EXPECT_FALSE(WritableTempFolder(Path("missing")));  // the root itself is not created
  EXPECT_FALSE(fs::exists(dir_ / "missing"));
  WriteFile(dir_ / "file", "x");
  EXPECT_FALSE(WritableTempFolder(Path("file")));

  // Something in the way of the test file.
  const std::string root = Make("blocked");
  fs::create_directories(dir_ / "blocked/Tarvex_Temp/test.txt");
  EXPECT_FALSE(WritableTempFolder(root));
}

// ---- computing the folders at load -----------------------------------------------------------------------

// A host with variables and preferences of a test's choosing; records its message boxes.
class FakeHost final : public test_support::FakeEditor {
 public:
  std::vector<std::pair<std::string, std::string>> boxes;  // caption, text

  host::MessageAnswer messageBox(std::string_view text, std::string_view caption, host::MessageButtons) override {
    boxes.emplace_back(std::string(caption), std::string(text));
    return host::MessageAnswer::Ok;
  }
};

// Every folder inside a temporary folder; the host's four preferences name existing folders.
class ComputeFoldersTest : public FolderFilesTest {
 protected:
  void SetUp() override {
    FolderFilesTest::SetUp();
    root_ = Make("Roaming");
    Make("Roaming/Plotters/PMP Files");
    Make("Roaming/Plot Styles");
    drivers_ = Make("install/drivers");
    host_.vars["ACADVER"] = std::string("25.0s");
    host_.vars["LOCALROOTPREFIX"] = root_ + "/";
    host_.vars["ROAMABLEROOTPREFIX"] = root_ + "/";
    host_.env["ACADDRV"] = drivers_;
    host_.env["PrinterConfigDir"] = "%roamablerootfolder%/Plotters";
    host_.env["PrinterDescDir"] = "%roamablerootfolder%/Plotters/PMP Files";
    host_.env["PrinterStyleSheetDir"] = "%roamablerootfolder%/Plot Styles";
  }
  void TearDown() override {
    // Whatever a test locked is opened again, so the folder can go.
    std::error_code ec;
    for (auto it = fs::recursive_directory_iterator(dir_.path(), ec); !ec && it != fs::recursive_directory_iterator();
         it.increment(ec))
      if (it->is_directory(ec)) fs::permissions(it->path(), fs::perms::owner_all, ec);
  }

  FakeHost host_;
  std::string root_, drivers_;
  ScopedEnv home_{"HOME", (dir_ / "home").string()};
  ScopedEnv data_{"XDG_DATA_HOME", (dir_ / "data").string()};
  ScopedEnv docs_{"XDG_DOCUMENTS_DIR", (dir_ / "docs").string()};
  ScopedEnv install_{"TARVEX_HOME", (dir_ / "install").string()};
};

TEST_F(ComputeFoldersTest, NormalHostGivesEveryFolderWithoutWarnings) {
  Make("docs");
  ComputeFolders();
  EXPECT_TRUE(host_.boxes.empty());
  EXPECT_EQ(InstallFolder(), Path("install"));
  EXPECT_EQ(DataFolder(), Path("data") + "/Tarvex");
  EXPECT_TRUE(fs::is_directory(DataFolder()));
  EXPECT_EQ(DocumentsFolder(), Path("docs"));
  EXPECT_TRUE(fs::is_regular_file(fs::path(HostFolder()) / "tv_tests")) << HostFolder();  // the running program's
  EXPECT_DOUBLE_EQ(HostVersion(), 25.0);
  EXPECT_EQ(LocalRoot(), root_);
  EXPECT_EQ(RoamableRoot(), root_);
  EXPECT_EQ(DriverFolders(), drivers_);
  EXPECT_EQ(PrinterConfigFolders(), root_ + "/Plotters");
  EXPECT_EQ(PrinterDescFolders(), root_ + "/Plotters/PMP Files");
  EXPECT_EQ(PrinterStyleFolders(), root_ + "/Plot Styles");
  EXPECT_EQ(FirstUsableFolder(PrinterConfigFolders()), root_ + "/Plotters");

  EXPECT_EQ(WorkRootIndex(), 0);
  EXPECT_EQ(TempFolder(), Path("docs") + "/Tarvex_Temp");
  EXPECT_TRUE(fs::is_directory(TempFolder()));
  EXPECT_FALSE(fs::exists(TempFolder() + "/test.txt"));
}

TEST_F(ComputeFoldersTest, DoubledSeparatorsInTheDataRootAreCollapsed) {
  ScopedEnv data("XDG_DATA_HOME", dir_.path().string() + "//data//");
  ComputeFolders();
  EXPECT_EQ(DataFolder(), Path("data") + "/Tarvex");
  EXPECT_TRUE(fs::is_directory(DataFolder()));
}

TEST_F(ComputeFoldersTest, EachPreferenceWithoutAnExistingFolderWarnsInTurn) {
  host_.env["ACADDRV"] = Path("nowhere");
  host_.env.erase("PrinterConfigDir");  // can't be read: empty
  host_.env["PrinterDescDir"] = Path("nowhere") + ";" + Path("nor here");
  host_.env["PrinterStyleSheetDir"] = "%roamablerootfolder%/Styles";
  ComputeFolders();
  const std::string title = "CAD设置错误提醒";
  EXPECT_EQ(host_.boxes, (std::vector<std::pair<std::string, std::string>>{
                             {title, "CAD驱动文件路径无效 !"},
                             {title, "CAD打印机文件路径无效 !"},
                             {title, "CAD打印机配置文件路径无效 !"},
                             {title, "CAD打印样式文件路径无效 !"},
                         }));
  EXPECT_EQ(DriverFolders(), "");
  EXPECT_EQ(PrinterStyleFolders(), "");
  // The load goes on to the working folder.
  EXPECT_EQ(WorkRootIndex(), 1);  // no documents folder was made
}

TEST_F(ComputeFoldersTest, OneExistingEntryIsEnoughAndKeepsItsPlace) {
  host_.env["PrinterConfigDir"] = "%ROAMABLEROOTFOLDER%/gone;%roamablerootfolder%/plotters/;" + drivers_;
  ComputeFolders();
  EXPECT_TRUE(host_.boxes.empty());
  EXPECT_EQ(PrinterConfigFolders(), root_ + "/Plotters;" + drivers_);
}

TEST_F(ComputeFoldersTest, HostWithoutVariablesGivesVersionZeroAndEmptyRoots) {
  host_.vars.clear();
  ComputeFolders();
  EXPECT_DOUBLE_EQ(HostVersion(), 0.0);
  EXPECT_EQ(LocalRoot(), "");
  EXPECT_EQ(RoamableRoot(), "");
  EXPECT_EQ(host_.boxes.size(), 3u);  // only the driver folder is named without a token
}

TEST_F(ComputeFoldersTest, MissingDocumentsFolderMovesTheWorkToTheInstallation) {
  ComputeFolders();  // docs was never made, and the proof doesn't make a root
  EXPECT_EQ(WorkRootIndex(), 1);
  EXPECT_EQ(TempFolder(), Path("install") + "/Tarvex_Temp");
  EXPECT_FALSE(fs::exists(dir_ / "docs"));
}

TEST_F(ComputeFoldersTest, UnwritableDocumentsFolderMovesTheWorkToTheInstallation) {
  if (!PermissionsBind(dir_.path())) GTEST_SKIP() << "folder permissions don't bind the superuser";
  Make("docs");
  fs::permissions(dir_ / "docs", fs::perms::owner_read | fs::perms::owner_exec);
  ComputeFolders();
  EXPECT_EQ(WorkRootIndex(), 1);
  EXPECT_EQ(TempFolder(), Path("install") + "/Tarvex_Temp");
}

TEST_F(ComputeFoldersTest, ReadOnlyTestFileMovesOnToTheNextRoot) {
  if (!PermissionsBind(dir_.path())) GTEST_SKIP() << "file permissions don't bind the superuser";
  Make("docs/Tarvex_Temp");
  WriteFile(dir_ / "docs/Tarvex_Temp/test.txt", "7\n");
  fs::permissions(dir_ / "docs/Tarvex_Temp/test.txt", fs::perms::owner_read);
  ComputeFolders();
  EXPECT_EQ(WorkRootIndex(), 1);
}

TEST_F(ComputeFoldersTest, DataFolderIsTheLastRootAndDocumentsTheFallback) {
  // Files where the working folders would go block the documents and installation roots.
  Make("docs");
  WriteFile(dir_ / "docs/Tarvex_Temp", "in the way");
  fs::remove_all(dir_ / "install");
  WriteFile(dir_ / "install", "in the way");
  ComputeFolders();
  EXPECT_EQ(WorkRootIndex(), 2);
  EXPECT_EQ(TempFolder(), Path("data") + "/Tarvex/Tarvex_Temp");

  // The data folder can't be made either: nothing is writable.
  fs::remove_all(dir_ / "data");
  WriteFile(dir_ / "data", "in the way");
  ComputeFolders();
  EXPECT_EQ(WorkRootIndex(), 3);
  EXPECT_EQ(TempFolder(), Path("docs") + "/Tarvex_Temp");
}

}  // namespace
}  // namespace tv::settings
