// The console host's plotter folders: its preferences and roots, the folders it makes when the
// module loads, and the module's checks of them, in a session and in the built program.
#include "console/host_folders.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "../support/run_program.h"
#include "../support/scoped_env.h"
#include "cad/database.h"
#include "cad/dxf_writer.h"
#include "console/console_editor.h"
#include "console_test_support.h"
#include "host/editor.h"
#include "settings/folders.h"

namespace tv::console {
namespace {

namespace fs = std::filesystem;
using test_support::Has;
using test_support::RunResult;
using test_support::RunTvplot;
using test_support::ScopedEnv;
using test_support::TempDir;

class HostFoldersTest : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_FALSE(dir_.path().empty()); }
  std::string Path(const std::string& relative) const { return (dir_ / relative).string(); }

  TempDir dir_{"tv_host_folders"};
  ScopedEnv home_{"HOME", Path("home")};
  ScopedEnv data_{"XDG_DATA_HOME", Path("data")};
  ScopedEnv docs_{"XDG_DOCUMENTS_DIR", Path("docs")};
  ScopedEnv install_{"TARVEX_HOME", Path("install")};
};

TEST_F(HostFoldersTest, PreferencesNameTheUserRootAndTheInstallation) {
  testing::ScriptedSession s(cad::Database::createDefault());
  ConsoleEditor& e = s.editor();
  EXPECT_EQ(host::AsText(e.getVar("ROAMABLEROOTPREFIX")), Path("data") + "/Tarvex/");
  EXPECT_EQ(host::AsText(e.getVar("localrootprefix")), Path("data") + "/Tarvex/");
  EXPECT_FALSE(e.setVar("ROAMABLEROOTPREFIX", std::string("/elsewhere/")));
  EXPECT_EQ(e.getEnv("ACADDRV"), Path("install") + "/drivers");
  EXPECT_EQ(e.getEnv("PrinterConfigDir"), "%roamablerootfolder%/Plotters");
  EXPECT_EQ(e.getEnv("PrinterDescDir"), "%roamablerootfolder%/Plotters/PMP Files");
  EXPECT_EQ(e.getEnv("PrinterStyleSheetDir"), "%roamablerootfolder%/Plot Styles");
  // Nothing is made before the module loads.
  EXPECT_FALSE(fs::exists(dir_ / "data"));
  EXPECT_FALSE(fs::exists(dir_ / "install"));
}

TEST_F(HostFoldersTest, LoadingOnAFreshInstallationMakesTheFoldersAndWarnsOfNothing) {
  fs::create_directories(dir_ / "docs");
  testing::ScriptedSession s(cad::Database::createDefault());
  settings::ComputeFolders();
  EXPECT_FALSE(Has(s.out(), "CAD设置错误提醒")) << s.out();
  const std::string data = Path("data") + "/Tarvex";
  EXPECT_EQ(settings::DataFolder(), data);
  EXPECT_EQ(settings::RoamableRoot(), data);
  EXPECT_EQ(settings::DriverFolders(), Path("install") + "/drivers");
  EXPECT_EQ(settings::PrinterConfigFolders(), data + "/Plotters");
  EXPECT_EQ(settings::PrinterDescFolders(), data + "/Plotters/PMP Files");
  EXPECT_EQ(settings::PrinterStyleFolders(), data + "/Plot Styles");
  EXPECT_DOUBLE_EQ(settings::HostVersion(), 25.0);
  EXPECT_EQ(settings::WorkRootIndex(), 0);
}

TEST_F(HostFoldersTest, PreferenceChangedToAMissingFolderIsReportedInTheHostsBox) {
  testing::ScriptedSession s(cad::Database::createDefault());
  s.editor().setEnv("PrinterStyleSheetDir", Path("gone") + ";" + Path("gone too"));
  settings::ComputeFolders();
  EXPECT_TRUE(Has(s.out(), "[CAD设置错误提醒] CAD打印样式文件路径无效 !")) << s.out();
  EXPECT_FALSE(Has(s.out(), "CAD打印机文件路径无效")) << s.out();
  EXPECT_EQ(settings::PrinterStyleFolders(), "");
}

TEST_F(HostFoldersTest, TheProgramLoadsQuietlyAndWarnsOnlyWhenAFolderCantBeMade) {
  const std::string drawing = Path("plan.dxf");
  ASSERT_TRUE(cad::WriteDxf(cad::Database::createDefault(), drawing).ok);

  RunResult r = RunTvplot({"run", drawing, "_-plotstamp", "--answer", "ON"});
  EXPECT_EQ(r.exitCode, 0) << r.err;
  EXPECT_FALSE(Has(r.out, "CAD设置错误提醒")) << r.out;
  EXPECT_TRUE(fs::is_directory(dir_ / "install/drivers"));

  // An installation where no drivers folder can be made: the load warns and goes on.
  test_support::WriteFile(dir_ / "blocked", "a file");
  ScopedEnv blocked("TARVEX_HOME", Path("blocked"));
  r = RunTvplot({"run", drawing, "_-plotstamp", "--answer", "ON"});
  EXPECT_EQ(r.exitCode, 0) << r.err;
  EXPECT_TRUE(Has(r.out, "[CAD设置错误提醒] CAD驱动文件路径无效 !")) << r.out;
  EXPECT_FALSE(Has(r.out, "CAD打印机文件路径无效")) << r.out;
}

}  // namespace
}  // namespace tv::console
