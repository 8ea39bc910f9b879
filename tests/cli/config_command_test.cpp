// `tvplot config` and the settings command "打印设置" as users reach them: the subcommand run in a
// private data folder, the built program, and the command in a console session.
#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "../settings/settings_fixture.h"
#include "../support/tvplot_test.h"
#include "../support/run_together.h"
#include "cad/database.h"
#include "cad/dxf_writer.h"
#include "cli/command_line.h"
#include "cli/config_command.h"
#include "console/console_editor.h"
#include "console/session.h"
#include "../console/console_test_support.h"
#include "host/module_entry.h"
#include "host/text_files.h"
#include "settings/checked_write.h"
#include "settings/config.h"
#include "settings/field_table.h"
#include "settings/folders.h"
#include "titleblock/tk_library.h"
#include "settings/plot_setting.h"
#include "settings/value_text.h"

namespace tv::cli {
namespace {

namespace fs = std::filesystem;
using test_support::Has;
using test_support::RunResult;

class ConfigCommandTest : public settings::testing::SettingsTest {
 protected:
  int Run(std::vector<std::string> args) {
    out_.str({});
    err_.str({});
    CliStreams io{out_, err_, false};
    return RunSubcommand(ConfigSubcommand(), args, io);
  }

  // The user's configuration as the next load finds it.
  settings::Config UserConfig() {
    settings::Config c;
    EXPECT_TRUE(settings::LoadConfigFrom(c, settings::ConfigFilePath()));
    return c;
  }

  std::ostringstream out_, err_;
};

TEST_F(ConfigCommandTest, ShowListsEveryFieldInFileOrderWithTheFlags) {
  settings::Config c;
  c.shortcut_ids = {9};
  c.shortcut_names = {"KJ"};
  c.vector_dpi_step = 60;
  c.plot_setting.name_prefix = "图 号";
  c.remember_keys = {"键"};
  c.remember_values = {"值"};
  ASSERT_TRUE(settings::SaveConfigTo(c, settings::ConfigFilePath(), false));
  ASSERT_TRUE(settings::SaveIni({1, 0, 1}));

  ASSERT_EQ(Run({"show"}), kExitOk) << err_.str();
  const std::string out = out_.str();
  EXPECT_TRUE(Has(out, settings::ConfigFilePath())) << out;
  EXPECT_FALSE(Has(out, "不存在"));
  for (const auto& field : settings::PlotSettingFields()) EXPECT_TRUE(Has(out, std::string(field.name))) << field.name;
  std::size_t last = 0;
  for (const auto& field : settings::ConfigFields()) {
    const std::size_t at = out.find("\n  " + std::string(field.name) + " ");
    ASSERT_NE(at, std::string::npos) << field.name;
    EXPECT_GT(at, last) << field.name;  // in file order
    last = at;
  }
  EXPECT_TRUE(Has(out, "TV_BatchPlot_9  KJ"));
  EXPECT_TRUE(Has(out, "图 号"));
  EXPECT_TRUE(Has(out, "键  值"));
  EXPECT_TRUE(Has(out, "合并PDF"));
  EXPECT_TRUE(Has(out, "first_run_done      1"));
  EXPECT_TRUE(Has(out, "batch_scale_asked   1"));
  const std::size_t vector = out.find("vector_dpi_step");
  ASSERT_NE(vector, std::string::npos);
  EXPECT_EQ(out.substr(out.find_first_not_of(' ', vector + 15), 2), "60");

  // Nothing was written by looking.
  EXPECT_FALSE(fs::exists(settings::DataFolder() + "/BPlot_TK.tk"));
}

TEST_F(ConfigCommandTest, ExportWritesTheUsersConfigurationWhereAsked) {
  settings::Config c;
  c.merge_pdf = 1;
  c.last_plot_style = "彩色.ctb";
  ASSERT_TRUE(settings::SaveConfigTo(c, settings::ConfigFilePath(), false));
  const std::string file = path("导出 配置.cfg");
  ASSERT_EQ(Run({"export", file}), kExitOk) << err_.str();
  EXPECT_TRUE(Has(out_.str(), file));
  settings::Config back;
  ASSERT_TRUE(settings::LoadConfigFrom(back, file));
  EXPECT_EQ(back.merge_pdf, 1);
  EXPECT_EQ(back.last_plot_style, "彩色.ctb");

  // A folder that doesn't exist: the system's failure message and an exit code of its own.
  const std::string bad = path("no/such/folder.cfg");
  EXPECT_EQ(Run({"export", bad}), 4);
  EXPECT_TRUE(Has(err_.str(), settings::WriteFailureText(bad)));
  EXPECT_FALSE(fs::exists(bad));
}

TEST_F(ConfigCommandTest, ImportReadsAFileAndKeepsItAsTheUsersConfiguration) {
  settings::Config c;
  c.shortcut_ids = {4};
  c.shortcut_names = {"TK"};
  c.plot_setting.default_scale = 50;
  c.sign_library_path = "/opt/签名.tvlib1";
  const std::string file = path("in.cfg");
  ASSERT_TRUE(settings::SaveConfigTo(c, file, false));

  ASSERT_EQ(Run({"import", file}), kExitOk) << err_.str();
  const settings::Config user = UserConfig();
  EXPECT_EQ(user.shortcut_names, (std::vector<std::string>{"TK"}));
  EXPECT_DOUBLE_EQ(user.plot_setting.default_scale, 50);
  EXPECT_EQ(user.sign_library_path, "/opt/签名.tvlib1");
}

// Only a whole configuration is imported: anything else is refused with exit 2 and the user's
// configuration stays as it was. A whole file of an older version is a configuration.
TEST_F(ConfigCommandTest, ImportRefusesWhatIsNoWholeConfiguration) {
  settings::Config mine;
  mine.merge_pdf = 1;
  mine.shortcut_ids = {2};
  mine.shortcut_names = {"PP"};
  ASSERT_TRUE(settings::SaveConfigTo(mine, settings::ConfigFilePath(), false));
  settings::Config theirs;
  theirs.vector_dpi_step = 70;
  const std::string whole = settings::ConfigFileText(theirs);
  // Version 20210124 holds the record, the shortcuts and the first two values only.
  settings::ValueWriter older;
  older.integer(20210124);
  settings::WritePlotSetting(theirs.plot_setting, older);
  older.integer(0);
  older.integer(1);  // single_plot_pick_mode
  older.integer(0);  // merge_pdf
  ASSERT_TRUE(cad::WriteDxf(cad::Database::createDefault(), path("plan.dxf")).ok);

  struct Case {
    const char* what;
    std::optional<std::string> text;  // none: the path given is a folder or missing
    std::string file;
    int exitCode;
    const char* says;
  };
  const Case cases[] = {
      {"a drawing", test_support::ReadFile(path("plan.dxf")), "plan.dxf", kExitUnreadable, "不是完整的配置文件"},
      {"the first 12 bytes", whole.substr(0, 12), "cut.cfg", kExitUnreadable, "不是完整的配置文件"},
      {"all but the last value", whole.substr(0, whole.rfind('\n', whole.size() - 2) + 1), "short.cfg",
       kExitUnreadable, "不是完整的配置文件"},
      {"an empty file", "", "empty.cfg", kExitUnreadable, "不是完整的配置文件"},
      {"words", "hello world\n", "junk.cfg", kExitUnreadable, "不是完整的配置文件"},
      {"numbers that are no version", "1 2 3 4 5\n", "numbers.cfg", kExitUnreadable, "不是完整的配置文件"},
      {"a folder", std::nullopt, "", kExitUnreadable, "是文件夹"},
      {"a missing file", std::nullopt, "missing.cfg", kExitUnreadable, "不存在"},
      {"a whole file", whole, "whole.cfg", kExitOk, "已读取"},
      {"a whole older file", older.text(), "older.cfg", kExitOk, "已读取"},
  };
  for (const Case& c : cases) {
    ASSERT_TRUE(settings::SaveConfigTo(mine, settings::ConfigFilePath(), false));
    const std::string before = test_support::ReadFile(settings::ConfigFilePath());
    const std::string file = c.file.empty() ? dir_.path().string() : path(c.file);
    if (c.text) test_support::WriteFile(file, *c.text);
    EXPECT_EQ(Run({"import", file}), c.exitCode) << c.what << "\n" << err_.str();
    EXPECT_TRUE(Has(c.exitCode == kExitOk ? out_.str() : err_.str(), c.says)) << c.what << "\n" << err_.str();
    if (c.exitCode != kExitOk) {
      EXPECT_EQ(test_support::ReadFile(settings::ConfigFilePath()), before) << c.what;
    }
  }
  // The older file brought what it holds and left the rest as the user had it.
  const settings::Config user = UserConfig();
  EXPECT_EQ(user.single_plot_pick_mode, 1);
  EXPECT_EQ(user.merge_pdf, 0);
  EXPECT_TRUE(user.shortcut_names.empty());
  EXPECT_EQ(user.vector_dpi_step, 43);
}

using ConfigProgram = test_support::TvplotTest;

// The check that a file was written reads it back: two imports in one second are two writes,
// and neither is taken for a failure.
TEST_F(ConfigProgram, TwoImportsInOneSecondBothSucceed) {
  const std::string home = Path("home").string();
  const std::string file = Path("in.cfg").string();
  settings::Config c;
  c.merge_pdf = 1;
  test_support::WriteFile(file, *host::TextFileBytes(settings::ConfigFileText(c)));
  for (int i = 0; i < 2; ++i) {
    const RunResult r = Run({"config", "import", file}, {}, home);
    EXPECT_EQ(r.exitCode, 0) << r.err;
    EXPECT_EQ(r.err, "");
    EXPECT_TRUE(Has(r.out, "并保存为用户配置")) << r.out;
  }
}

// Every run writes the configuration as it ends. Runs that changed nothing in it, ending beside an
// import, must leave the imported configuration in place; and the imports of both kinds land.
TEST_F(ConfigProgram, AnImportSurvivesOtherRunsEndingBesideIt) {
  const std::string home = Path("home").string();
  const std::string data = home + "/.local/share";
  settings::Config imported;
  imported.vector_dpi_step = 77;
  const std::string file = Path("in.cfg").string();
  test_support::WriteFile(file, *host::TextFileBytes(settings::ConfigFileText(imported)));
  std::vector<std::string> libraries;
  for (int i = 0; i < 3; ++i) {
    titleblock::TK_Library library;
    library.definitions.push_back(std::make_unique<titleblock::TK_Customization>());
    library.definitions.back()->block_name = "F" + std::to_string(i);
    libraries.push_back(Path("lib" + std::to_string(i) + ".tk").string());
    ASSERT_TRUE(titleblock::SaveTkFileTo(library, libraries.back(), false));
  }
  const std::vector<std::string> env{"/usr/bin/env", "HOME=" + home, "XDG_DATA_HOME=" + data,
                                     "XDG_CONFIG_HOME=" + home, "XDG_CACHE_HOME=" + home, TV_TVPLOT_PATH};
  auto command = [&](std::vector<std::string> args) {
    std::vector<std::string> whole = env;
    whole.insert(whole.end(), args.begin(), args.end());
    return whole;
  };
  for (int round = 0; round < 4; ++round) {
    std::filesystem::remove_all(home);
    // The user's files as a first run leaves them.
    ASSERT_EQ(Run({"tk", "list"}, {}, home).exitCode, 0);
    std::vector<std::vector<std::string>> commands;
    for (const std::string& library : libraries) commands.push_back(command({"tk", "import", library, "--keep"}));
    commands.push_back(command({"config", "import", file}));
    for (const RunResult& r : test_support::RunTogether(commands)) EXPECT_EQ(r.exitCode, 0) << r.err;

    settings::Config user;
    ASSERT_TRUE(settings::LoadConfigFrom(user, data + "/Tarvex/BPlot_Cfg.cfg"));
    EXPECT_EQ(user.vector_dpi_step, 77) << "round " << round;
    titleblock::TK_Library library;
    ASSERT_TRUE(titleblock::LoadTkFileFrom(library, data + "/Tarvex/BPlot_TK.tk", false));
    EXPECT_EQ(library.definitions.size(), 3u) << "round " << round;
  }
}

TEST_F(ConfigProgram, ShowsDefaultsAndExportsThemFromTheBuiltProgram) {
  RunResult r = Run({"config", "show"});
  ASSERT_EQ(r.exitCode, 0) << r.err;
  EXPECT_TRUE(Has(r.out, "不存在，显示默认值")) << r.out;
  EXPECT_TRUE(Has(r.out, "name_prefix")) << r.out;
  EXPECT_TRUE(Has(r.out, "???"));
  EXPECT_TRUE(Has(r.out, "first_run_done      0"));

  const std::string file = Path("out.cfg").string();
  r = Run({"config", "export", file});
  ASSERT_EQ(r.exitCode, 0) << r.err;
  EXPECT_TRUE(test_support::ReadFile(file).starts_with("20240329\n20240329\n0\n1\n"));
}

// The command in a console session on a drawing, with the module loaded.
class SettingCommandTest : public settings::testing::SettingsTest {
 protected:
  SettingCommandTest() {
    // A first load writes the configuration; the command's own save, within the same second
    // as a rule, is no failure.
    host::OnLoad();
  }
  ~SettingCommandTest() override {
    if (host::IsLoaded()) host::OnUnload();
  }

  std::string Run(std::vector<std::string> answers) {
    session_.editor().answers().pushFront(std::move(answers));
    session_.runCommandLine("TV_BatchPlot_14");
    return scripted_.out();
  }

  console::testing::ScriptedSession scripted_{cad::Database::createDefault()};
  console::Session& session_ = scripted_.session();
};

TEST_F(SettingCommandTest, OkStoresTheFormAndWritesTheConfiguration) {
  const std::string out = Run({"3", "6", "60", "8", "2", "16", ""});
  EXPECT_TRUE(Has(out, "\n打印设置\n1、打印设置")) << out;
  EXPECT_TRUE(Has(out, "4、JPG、PNG输出纸张放大系数")) << out;
  EXPECT_TRUE(Has(out, "矢量1200dpi")) << out;
  EXPECT_TRUE(Has(out, "矢量2050dpi")) << out;  // refreshed at once
  EXPECT_TRUE(Has(out, "放大系数2.0")) << out;
  EXPECT_TRUE(Has(out, "提示：由于输出的图片分辨率较低")) << out;
  EXPECT_TRUE(Has(out, "PLine线形成的矩形 （必选）")) << out;
  EXPECT_TRUE(Has(out, "该项为必选，不可更改。")) << out;
  EXPECT_FALSE(Has(out, "写入操作有误")) << out;

  const settings::Config& config = settings::GlobalConfig();
  EXPECT_EQ(config.plot_stamp, 1);
  EXPECT_EQ(config.vector_dpi_step, 60);
  EXPECT_EQ(config.pdf_orientation, 1);
  settings::Config saved;
  ASSERT_TRUE(settings::LoadConfigFrom(saved, settings::ConfigFilePath()));
  EXPECT_EQ(saved.plot_stamp, 1);
  EXPECT_EQ(saved.vector_dpi_step, 60);
  EXPECT_EQ(saved.pdf_orientation, 1);
  EXPECT_EQ(saved.frame_loose_lines, 1);
}

TEST_F(SettingCommandTest, SlidersRefuseStepsOutOfRange) {
  const std::string out = Run({"10", "21", "15", ""});
  EXPECT_TRUE(Has(out, "数值应在 0 到 20 之间。")) << out;
  EXPECT_EQ(settings::GlobalConfig().image_scale_step, 15);
  EXPECT_TRUE(Has(out, "放大系数2.5")) << out;
}

TEST_F(SettingCommandTest, CancelOrRunningOutOfAnswersStoresNothing) {
  const std::string before = test_support::ReadFile(settings::ConfigFilePath());
  std::string out = Run({"1", "3", "C"});
  EXPECT_EQ(settings::GlobalConfig().plot_lineweights, 1);
  EXPECT_EQ(settings::GlobalConfig().plot_stamp, 0);
  out = Run({"1", "99"});  // no answer left after an invalid number
  EXPECT_TRUE(Has(out, "无效的编号。")) << out;
  EXPECT_EQ(settings::GlobalConfig().plot_lineweights, 1);
  EXPECT_EQ(test_support::ReadFile(settings::ConfigFilePath()), before);
}

TEST_F(SettingCommandTest, TheDrawingsOwnRecordIsCurrentAfterLoading) {
  // The loaded drawing had no record: the user's last settings apply.
  EXPECT_EQ(settings::CurrentPlotSetting(), settings::GlobalConfig().plot_setting);
  host::OnUnload();

  settings::PlotSettingRec rec;
  rec.format = settings::kFormatPdf;
  rec.name_prefix = "图 纸";
  settings::SaveDwgPlotSetting(rec);  // into the session's drawing
  settings::GlobalConfig().plot_setting.format = settings::kFormatPng;
  settings::SaveConfig(settings::GlobalConfig(), false, false);
  host::OnLoad();
  EXPECT_EQ(settings::CurrentPlotSetting().name_prefix, "图 纸");
  EXPECT_EQ(settings::CurrentPlotSetting().format, settings::kFormatPdf);
}

TEST_F(ConfigProgram, TheSettingCommandRunsUnattended) {
  const std::string drawing = Write("plan.dxf", cad::Database::createDefault());
  const RunResult r = Run({"run", drawing, "TV_BatchPlot_14", "--answer", "2", "--answer", "C"});
  EXPECT_EQ(r.exitCode, 0) << r.err;
  EXPECT_TRUE(Has(r.out, "2、PDF、DWF分辨率")) << r.out;
  EXPECT_TRUE(Has(r.out, "[√] 打印透明度")) << r.out;
  EXPECT_FALSE(Has(r.out, "尚未提供")) << r.out;
}

}  // namespace
}  // namespace tv::cli
