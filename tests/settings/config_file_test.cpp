// BPlot_Cfg.cfg and Tarvex.Ini: every field through a file, the groups older versions lack, the
// defaults that empty values restore, the first-run steps and a write that fails.
#include <gtest/gtest.h>

#include <filesystem>

#include "host/text_files.h"
#include "settings/checked_write.h"
#include "settings/field_table.h"
#include "settings_fixture.h"
#include "titleblock/tk_library.h"

namespace tv::settings {
namespace {

using testing::MakeDistinct;
using testing::Tokens;

// A configuration in which every value differs from its default.
Config Distinct() {
  Config c;
  MakeDistinct(c.plot_setting, PlotSettingFields(), 0);
  c.plot_setting.auto_scale = 0;  // a session value, never read back
  MakeDistinct(c, ConfigFields(), 100);
  c.shortcut_ids = {2, 14};
  c.shortcut_names = {"PP", "设置"};
  c.remember_keys = {"上次 样式", "k"};
  c.remember_values = {"黑白.ctb", "v 1"};
  return c;
}

void ExpectSame(const Config& a, const Config& b) {
  EXPECT_EQ(a.plot_setting, b.plot_setting);
  for (const auto& field : ConfigFields()) EXPECT_EQ(FieldValueText(a, field), FieldValueText(b, field)) << field.name;
  EXPECT_EQ(a.shortcut_ids, b.shortcut_ids);
  EXPECT_EQ(a.shortcut_names, b.shortcut_names);
  EXPECT_EQ(a.remember_keys, b.remember_keys);
  EXPECT_EQ(a.remember_values, b.remember_values);
}

// What a writer of `version` put in the file, its record written by a writer of `recordVersion`.
std::string OldFile(const Config& c, std::int32_t version, std::int32_t recordVersion) {
  ValueWriter w;
  w.integer(version);
  w.integer(recordVersion);
  for (const auto& field : PlotSettingFields())
    if (field.gate.holds(recordVersion)) WriteField(c.plot_setting, field, w);
  w.integer(static_cast<std::int64_t>(c.shortcut_ids.size()));
  for (std::size_t i = 0; i < c.shortcut_ids.size(); ++i) {
    w.integer(c.shortcut_ids[i]);
    w.raw(c.shortcut_names[i]);
  }
  for (const auto& field : ConfigFields())
    if (field.gate.holds(version)) WriteField(c, field, w);
  if (version > 20231215) {
    w.integer(static_cast<std::int64_t>(c.remember_keys.size()));
    for (std::size_t i = 0; i < c.remember_keys.size(); ++i) {
      w.token(c.remember_keys[i]);
      w.token(c.remember_values[i]);
    }
  }
  return w.text();
}

class ConfigFileTest : public testing::SettingsTest {
 protected:
  // Reads a file's text into a configuration as a load would.
  Config Load(const std::string& text, Config start = {}) {
    const std::string file = path("read.cfg");
    EXPECT_TRUE(host::WriteTextFileReplacing(file, text));  // in the code page, as files are
    EXPECT_TRUE(LoadConfigFrom(start, file));
    return start;
  }
};

TEST_F(ConfigFileTest, EveryFieldSurvivesTheFile) {
  const Config c = Distinct();
  const std::string file = path("all.cfg");
  ASSERT_TRUE(SaveConfigTo(c, file, true));
  Config back;
  ASSERT_TRUE(LoadConfigFrom(back, file));
  ExpectSame(back, c);

  // The text is in the system's code page on disk, one value a line.
  const std::string bytes = test_support::ReadFile(file);
  EXPECT_TRUE(bytes.starts_with("20240329\n20240329\n"));
  EXPECT_NE(bytes.find("\xC9\xE8\xD6\xC3\n"), std::string::npos);  // "设置" in GBK, raw
  EXPECT_NE(bytes.find("v*?*1\n"), std::string::npos);
  EXPECT_EQ(bytes.find("\r"), std::string::npos);
}

TEST_F(ConfigFileTest, ALoadWithoutAFileKeepsTheValuesAndPutsTheDefaultPathsIn) {
  Config loaded = Distinct();
  EXPECT_FALSE(LoadConfig(loaded, false));
  EXPECT_TRUE(loaded.shortcut_ids.empty());
  EXPECT_TRUE(loaded.remember_keys.empty());
  EXPECT_EQ(loaded.sign_library_path, DataFolder() + "/Sign.tvlib1");
  EXPECT_EQ(loaded.stamp_library_path, DataFolder() + "/Stamp.tvlib2");
  EXPECT_EQ(loaded.frame_folder, InstallFolder() + "/Frame");
  EXPECT_TRUE(std::filesystem::is_directory(install_ / "Frame"));
  EXPECT_EQ(loaded.merge_pdf, Distinct().merge_pdf);  // values as they were
}

TEST_F(ConfigFileTest, AFileOf20210124KeepsTheFolderChoiceDefaults) {
  const Config c = Distinct();
  const Config back = Load(OldFile(c, 20210124, 20210124));
  EXPECT_EQ(back.merge_pdf, c.merge_pdf);
  EXPECT_EQ(back.single_plot_pick_mode, c.single_plot_pick_mode);
  EXPECT_EQ(back.choose_folder, 0);
  EXPECT_EQ(back.save_as_block, 1);
  EXPECT_EQ(back.shortcut_names, c.shortcut_names);
}

TEST_F(ConfigFileTest, AFileOf20210125ReadsThemButKeepsTheLibraryPaths) {
  Config c = Distinct();
  const Config back = Load(OldFile(c, 20210125, 20210125));
  EXPECT_EQ(back.choose_folder, c.choose_folder);
  EXPECT_EQ(back.save_as_block, c.save_as_block);
  EXPECT_EQ(back.sign_library_path, DefaultSignLibraryPath());
  EXPECT_EQ(back.stamp_library_path, DefaultStampLibraryPath());
  EXPECT_EQ(back.plot_lineweights, 1);

  // The paths come only after 20210212.
  EXPECT_EQ(Load(OldFile(c, 20210212, 20210212)).sign_library_path, DefaultSignLibraryPath());
  EXPECT_EQ(Load(OldFile(c, 20210213, 20210213)).sign_library_path, c.sign_library_path);
}

TEST_F(ConfigFileTest, GroupsFromAndAboveTheirVersion) {
  const Config c = Distinct();
  Config start;
  start.custom_paper_length = 1189;  // what the reader held before stays
  start.skip_blank_rect = 0;

  Config back = Load(OldFile(c, 20220606, 20220606), start);
  EXPECT_EQ(back.frame_rect_blocks, c.frame_rect_blocks);  // from 20220410
  EXPECT_EQ(back.custom_paper_length, 1189);               // above 20220606
  back = Load(OldFile(c, 20220607, 20220607), start);
  EXPECT_EQ(back.custom_paper_length, c.custom_paper_length);
  EXPECT_EQ(back.pdf_open_after_merge, c.pdf_open_after_merge);
  EXPECT_EQ(back.plot_outer_line, 0);
  EXPECT_EQ(back.skip_blank_rect, 0);

  back = Load(OldFile(c, 20211226, 20211226), start);
  EXPECT_EQ(back.vector_dpi_step, c.vector_dpi_step);
  EXPECT_EQ(back.plot_stamp, 0);

  // The string map is the newest group.
  back = Load(OldFile(c, 20231215, 20231215));
  EXPECT_EQ(back.frame_folder, c.frame_folder);
  EXPECT_TRUE(back.remember_keys.empty());
  back = Load(OldFile(c, 20231216, 20231216));
  EXPECT_EQ(back.remember_values, c.remember_values);
}

TEST_F(ConfigFileTest, TheFileAndItsRecordEachReadByTheirOwnVersion) {
  const Config c = Distinct();
  // A new file around an old record: the record stops early, the rest is read in full.
  Config back = Load(OldFile(c, 20240329, 20210128));
  EXPECT_EQ(back.plot_setting.sort_style, c.plot_setting.sort_style);
  EXPECT_DOUBLE_EQ(back.plot_setting.filter_ratio, 0.0);
  EXPECT_EQ(back.shortcut_names, c.shortcut_names);
  EXPECT_EQ(back.frame_tool_flag, c.frame_tool_flag);
  EXPECT_EQ(back.remember_keys, c.remember_keys);

  // An old file around a new record: the record is read in full, the rest stops early.
  back = Load(OldFile(c, 20210124, 20240329));
  EXPECT_EQ(back.plot_setting.paper_option, c.plot_setting.paper_option);
  EXPECT_EQ(back.merge_pdf, c.merge_pdf);
  EXPECT_EQ(back.save_as_block, 1);
}

TEST_F(ConfigFileTest, EmptyValuesAreDroppedOrRestoreDefaults) {
  Config c = Distinct();
  c.sign_library_path.clear();
  c.frame_folder.clear();
  c.shortcut_ids = {2, 3, 4};
  c.shortcut_names = {"A", "", "B"};
  c.remember_keys = {"", "k", "x"};
  c.remember_values = {"v", "", "y"};
  const std::string file = path("empty.cfg");
  ASSERT_TRUE(SaveConfigTo(c, file, false));
  Config back;
  ASSERT_TRUE(LoadConfigFrom(back, file));
  EXPECT_EQ(back.sign_library_path, DataFolder() + "/Sign.tvlib1");
  EXPECT_EQ(back.stamp_library_path, c.stamp_library_path);
  EXPECT_EQ(back.frame_folder, InstallFolder() + "/Frame");
  EXPECT_EQ(back.shortcut_ids, (std::vector<std::int32_t>{2, 4}));
  EXPECT_EQ(back.shortcut_names, (std::vector<std::string>{"A", "B"}));
  EXPECT_EQ(back.remember_keys, (std::vector<std::string>{"x"}));
  EXPECT_EQ(back.remember_values, (std::vector<std::string>{"y"}));
  EXPECT_EQ(back.frame_tool_flag, c.frame_tool_flag);  // nothing after the shortcuts moved
}

TEST_F(ConfigFileTest, AShortOrBrokenFileKeepsWhatWasThere) {
  Config start;
  start.merge_pdf = 1;
  Config back = Load("20240329\n", start);
  EXPECT_EQ(back.merge_pdf, 1);
  EXPECT_EQ(back.plot_setting, PlotSettingRec{});

  // The record is whole, the shortcut count promises more than there is.
  ValueWriter w;
  w.integer(20240329);
  PlotSettingRec rec;
  rec.margin = 101;
  rec.auto_scale = 1;
  rec.format = kFormatPlt;
  WritePlotSetting(rec, w);
  w.integer(5);
  w.integer(2);
  back = Load(w.text() + "PP\n", start);
  EXPECT_EQ(back.plot_setting.format, kFormatPlt);
  EXPECT_EQ(back.plot_setting.margin, 0);
  EXPECT_EQ(back.plot_setting.auto_scale, 0);
  EXPECT_EQ(back.shortcut_names, (std::vector<std::string>{"PP"}));
  EXPECT_EQ(back.merge_pdf, 1);

  back = Load("not a configuration", start);
  EXPECT_EQ(back.merge_pdf, 1);
  EXPECT_EQ(back.sign_library_path, DefaultSignLibraryPath());
}

TEST_F(ConfigFileTest, TheStringMapReplacesOrAppends) {
  Config c;
  EXPECT_FALSE(GetRemembered(c, "a"));
  SetRemembered(c, "a", "1");
  SetRemembered(c, "b", "2");
  SetRemembered(c, "a", "3");
  EXPECT_EQ(c.remember_keys, (std::vector<std::string>{"a", "b"}));
  EXPECT_EQ(GetRemembered(c, "a"), "3");
  EXPECT_FALSE(GetRemembered(c, "A"));  // exact comparison

  SetRemembered("窗口", "10 20");
  EXPECT_EQ(GetRemembered("窗口"), "10 20");
}

TEST_F(ConfigFileTest, DialogsNameTheFileAndCancelChangesNoFile) {
  testing::MessageRecorder editor;
  Config c = Distinct();
  EXPECT_FALSE(SaveConfig(c, true, true));  // cancelled
  ASSERT_EQ(editor.titles.size(), 1u);
  EXPECT_EQ(editor.titles[0], "保存配置文件为...");
  EXPECT_EQ(editor.defaultNames[0], "批打印配置文件.cfg");
  EXPECT_TRUE(editor.messages.empty());
  EXPECT_FALSE(std::filesystem::exists(ConfigFilePath()));

  editor.answerPath = path("chosen.cfg");
  EXPECT_TRUE(SaveConfig(c, true, true));
  Config back;
  EXPECT_TRUE(LoadConfig(back, true));
  EXPECT_EQ(editor.titles.back(), "读取配置文件...");
  ExpectSame(back, c);

  editor.answerPath.reset();
  EXPECT_FALSE(LoadConfig(back, true));
  EXPECT_EQ(back.merge_pdf, c.merge_pdf);

  // Without asking, the user's file in the data folder.
  EXPECT_TRUE(SaveConfig(c, true, false));
  EXPECT_EQ(ConfigFilePath(), DataFolder() + "/BPlot_Cfg.cfg");
  EXPECT_TRUE(std::filesystem::exists(ConfigFilePath()));
}

TEST_F(ConfigFileTest, AFailedWriteKeepsTheOldFileAndSaysSo) {
  testing::MessageRecorder editor;
  // The name leaves no room for the temporary file beside it, so the write fails even where
  // permissions are not enforced.
  const std::string file = path(std::string(250, 'c'));
  test_support::WriteFile(file, "old");
  EXPECT_FALSE(SaveConfigTo(Distinct(), file, true));
  EXPECT_EQ(test_support::ReadFile(file), "old");
  ASSERT_EQ(editor.messages.size(), 1u);
  EXPECT_EQ(editor.messages[0], WriteFailureText(file));
  EXPECT_TRUE(editor.messages[0].starts_with("文件 < " + file + " > 写入操作有误!\n\n\n可能原因如下："));
  EXPECT_TRUE(editor.messages[0].ends_with("解决方法二：请用管理员权限运行AutoCAD。"));

  // Without reporting, the failure is only the result.
  EXPECT_FALSE(SaveConfigTo(Distinct(), file, false));
  EXPECT_EQ(editor.messages.size(), 1u);
  EXPECT_FALSE(SaveConfigTo(Distinct(), path("missing/x.cfg"), true));
  EXPECT_EQ(editor.messages.size(), 2u);
  EXPECT_EQ(editor.captions.back(), "Tarvex打印");
}

// Every run writes the configuration when it ends, mostly as it read it. Such a save must not undo
// a file another run wrote in between (an import, say); a configuration this run changed is saved.
// The same holds for the first-use flags.
TEST_F(ConfigFileTest, ASaveOfWhatWasReadLeavesAnotherRunsNewerFile) {
  Config first;
  first.merge_pdf = 1;
  ASSERT_TRUE(SaveConfigTo(first, ConfigFilePath(), false));
  Config& mine = GlobalConfig();
  ASSERT_TRUE(LoadConfig(mine, false));
  Config theirs = Distinct();
  const std::string theirText = ConfigFileText(theirs);
  ASSERT_TRUE(host::WriteTextFileReplacing(ConfigFilePath(), theirText));  // the other run

  EXPECT_TRUE(SaveConfig(mine, true, false));
  Config back;
  ASSERT_TRUE(LoadConfigFrom(back, ConfigFilePath()));
  EXPECT_EQ(ConfigFileText(back), theirText);

  mine.plot_stamp = 1;
  EXPECT_TRUE(SaveConfig(mine, true, false));
  ASSERT_TRUE(LoadConfigFrom(back, ConfigFilePath()));
  EXPECT_EQ(back.plot_stamp, 1);
  EXPECT_EQ(back.merge_pdf, 1);

  // No file when this run started, one written by another run before it ends.
  std::filesystem::remove(IniFilePath());
  Ini ini;
  LoadIni(ini);
  ASSERT_TRUE(host::WriteTextFileReplacing(IniFilePath(), "20240329\n1\n1\n1\n"));
  EXPECT_TRUE(SaveIni(ini));
  Ini iniBack;
  ASSERT_TRUE(LoadIni(iniBack));
  EXPECT_EQ(iniBack.single_scale_asked, 1);
}

TEST_F(ConfigFileTest, TheIniHoldsThreeFlagsAfterItsVersion) {
  Ini ini{1, 0, 1};
  ASSERT_TRUE(SaveIni(ini));
  EXPECT_EQ(test_support::ReadFile(IniFilePath()), "20240329\n1\n0\n1\n");
  EXPECT_EQ(IniFilePath(), DataFolder() + "/Tarvex.Ini");
  Ini back;
  EXPECT_TRUE(LoadIni(back));
  EXPECT_EQ(back.first_run_done, 1);
  EXPECT_EQ(back.single_scale_asked, 0);
  EXPECT_EQ(back.batch_scale_asked, 1);

  test_support::WriteFile(IniFilePath(), "20200101 1");
  Ini partial{0, 1, 1};
  EXPECT_FALSE(LoadIni(partial));
  EXPECT_EQ(partial.first_run_done, 1);
  EXPECT_EQ(partial.single_scale_asked, 1);
}

TEST_F(ConfigFileTest, FirstRunBringsOldSettingsToCurrentDefaults) {
  Config& c = GlobalConfig();
  c.plot_lineweights = 0;
  c.vector_dpi_step = 60;  // higher than the default: kept
  c.line_cover = 0;
  c.plot_setting.filter_ratio = 20.0;
  titleblock::GlobalTkLibrary().CentreInArea = {1, 1, 0, 1, 0, 1};
  RunFirstRunSteps();
  EXPECT_EQ(GlobalIni().first_run_done, 1);
  EXPECT_EQ(c.plot_lineweights, 1);
  EXPECT_EQ(c.vector_dpi_step, 60);
  EXPECT_EQ(c.line_cover, 1);
  EXPECT_DOUBLE_EQ(c.plot_setting.filter_ratio, 0.0);
  EXPECT_EQ(titleblock::GlobalTkLibrary().CentreInArea, (std::array<std::int32_t, 6>{}));
  EXPECT_TRUE(std::filesystem::exists(DataFolder() + "/BPlot_TK.tk"));

  Config saved;
  ASSERT_TRUE(LoadConfigFrom(saved, ConfigFilePath()));
  EXPECT_EQ(saved.vector_dpi_step, 60);
  EXPECT_EQ(saved.plot_lineweights, 1);

  c.vector_dpi_step = 20;  // lower: raised
  RunFirstRunSteps();
  EXPECT_EQ(c.vector_dpi_step, 43);
}

}  // namespace
}  // namespace tv::settings
