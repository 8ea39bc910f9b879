// Loading, unloading and the command table, run in a console session as a user would.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <optional>
#include <streambuf>
#include <sstream>
#include <string>

#include "cad/database.h"
#include "console/console_editor.h"
#include "console/session.h"
#include "host/command_prologue.h"
#include "host/command_table.h"
#include "host/custom_entity.h"
#include "host/module_entry.h"
#include "settings/config.h"
#include "settings/folders.h"
#include "../support/run_program.h"
#include "../support/scoped_env.h"
#include "module_session_fixture.h"

namespace tv::host {
namespace {

namespace fs = std::filesystem;

class ModuleTest : public test::ModuleSessionTest {
 protected:
  ModuleTest() : ModuleSessionTest("tv-module") {}
  void TearDown() override {
    ModuleSessionTest::TearDown();
    ShowTimings = false;
  }

  console::ConsoleEditor& Editor() { return session_->editor(); }

  // Commands of the module's group.
  std::vector<std::string> GroupCommands() {
    std::vector<std::string> names;
    for (const auto& c : Editor().commands())
      if (c.group == kCommandGroup) names.push_back(c.globalName);
    return names;
  }

};

TEST_F(ModuleTest, LoadRegistersFixedAndNumberedCommandsOnce) {
  Open();
  OnLoad();
  auto names = GroupCommands();
  ASSERT_EQ(names.size(), 29u);
  EXPECT_EQ(names.front(), "singledwg_plot");  // fixed ones first, in their order
  EXPECT_EQ(names[8], "Plot_BaseFun2_Standby");
  EXPECT_EQ(names[9], "TV_BatchPlot_1");
  EXPECT_EQ(names.back(), "TV_BatchPlot_20");

  // A second load in the same process replaces, it doesn't double.
  OnLoad();
  EXPECT_EQ(GroupCommands().size(), 29u);
  const auto classes = RegisteredEntityClasses();
  EXPECT_EQ(std::count(classes.begin(), classes.end(), "Temp_PlotRec"), 1);

  OnUnload();
  EXPECT_TRUE(GroupCommands().empty());
  EXPECT_FALSE(IsEntityClassRegistered("Temp_PlotRec"));
  EXPECT_FALSE(IsEntityClassRegistered("My_PLine"));

  // Reloading after unload registers everything again.
  OnLoad();
  EXPECT_EQ(GroupCommands().size(), 29u);
  EXPECT_TRUE(IsEntityClassRegistered("TV_Sign_Class"));
}

TEST_F(ModuleTest, LoadRepairsFileDialogs) {
  Open();
  Editor().setVar("FILEDIA", std::int32_t{0});
  OnLoad();
  EXPECT_EQ(GetIntVar("FILEDIA"), 1);
}

TEST_F(ModuleTest, ShortcutsAddASecondNameAndKeepTheNumberedOne) {
  Open();
  settings::GlobalConfig().shortcut_ids = {2, 12};
  settings::GlobalConfig().shortcut_names = {"PP", "XZ"};
  OnLoad();  // loading reads the configuration afresh, so register again with the table set
  settings::GlobalConfig().shortcut_ids = {2, 12};
  settings::GlobalConfig().shortcut_names = {"PP", "XZ"};
  RegisterCommands();
  EXPECT_EQ(GroupCommands().size(), 31u);
  ASSERT_NE(Editor().findCommand("pp"), nullptr);
  EXPECT_EQ(Editor().findCommand("pp")->body, Editor().findCommand("TV_BatchPlot_2")->body);

  // Typed by its shortcut, a command runs as itself.
  ASSERT_TRUE(session_->runCommandLine("xz"));
  EXPECT_NE(out_.str().find("本软件为绿色软件"), std::string::npos);

  // Changing the table and registering again drops the old shortcut with the group.
  settings::GlobalConfig().shortcut_ids = {2};
  settings::GlobalConfig().shortcut_names = {"PQ"};
  RegisterCommands();
  EXPECT_EQ(Editor().findCommand("PP"), nullptr);
  EXPECT_NE(Editor().findCommand("PQ"), nullptr);
}

TEST_F(ModuleTest, ShortcutNamedLikeAnotherCommandReplacesIt) {
  Open();
  OnLoad();
  settings::GlobalConfig().shortcut_ids = {12};
  settings::GlobalConfig().shortcut_names = {"TV_BatchPlot_10"};
  RegisterCommands();
  ASSERT_NE(Editor().findCommand("TV_BatchPlot_10"), nullptr);
  EXPECT_EQ(Editor().findCommand("TV_BatchPlot_10")->body, *LookupCommand(12));
}

TEST_F(ModuleTest, HelpOpensTheHelpFileOrSaysItIsMissing) {
  Open();
  OnLoad();
  ASSERT_TRUE(session_->runCommandLine("TV_BatchPlot_10"));
  EXPECT_NE(out_.str().find("找不到帮助文件"), std::string::npos) << out_.str();

  std::ofstream(root_ / "install" / "BPHelp.pdf") << "%PDF-1.4\n";
  out_.str("");
  ASSERT_TRUE(session_->runCommandLine("TV_BatchPlot_10"));
  EXPECT_EQ(out_.str().find("找不到帮助文件"), std::string::npos) << out_.str();
  EXPECT_NE(out_.str().find("BPHelp.pdf"), std::string::npos) << out_.str();
}

TEST_F(ModuleTest, GuardedCommandsRestoreCommandEcho) {
  Open();
  OnLoad();
  Editor().setVar("CMDECHO", std::int32_t{1});
  ASSERT_TRUE(session_->runCommandLine("TV_BatchPlot_2"));
  EXPECT_EQ(GetIntVar("CMDECHO"), 1);

  const std::int32_t saved = EnterCommand();
  EXPECT_EQ(saved, 1);
  EXPECT_EQ(GetIntVar("CMDECHO"), 0);
  LeaveCommand(saved);
  EXPECT_EQ(GetIntVar("CMDECHO"), 1);
}

// Standard input that answers Enter once, noting CMDECHO when the command first asks.
class EchoWitness : public std::streambuf {
 public:
  std::optional<std::int32_t> echoAtPrompt;

 protected:
  int_type underflow() override {
    if (served_) return traits_type::eof();
    echoAtPrompt = GetIntVar("CMDECHO", -1);
    served_ = true;
    setg(&enter_, &enter_, &enter_ + 1);
    return traits_type::to_int_type(enter_);
  }

 private:
  char enter_ = '\n';
  bool served_ = false;
};

TEST_F(ModuleTest, TheSettingsCommandLeavesEchoAloneAndSavesRightAfterTheLoad) {
  EchoWitness witness;
  std::istream terminal(&witness);
  console::SessionOptions options;
  options.out = &out_;
  options.terminal = &terminal;
  session_ = std::make_unique<console::Session>(cad::Database::createDefault(), "test.dxf", options);
  OnLoad();  // the first load writes the configuration
  Editor().setVar("CMDECHO", std::int32_t{1});
  ASSERT_TRUE(session_->runCommandLine("TV_BatchPlot_14"));
  ASSERT_TRUE(witness.echoAtPrompt.has_value()) << out_.str();
  EXPECT_EQ(*witness.echoAtPrompt, 1) << "the settings form leaves CMDECHO as it is";
  EXPECT_EQ(GetIntVar("CMDECHO"), 1);
  // Saved within the same second as the load's write: no failure is reported.
  EXPECT_EQ(out_.str().find("写入操作有误"), std::string::npos) << out_.str();
  EXPECT_TRUE(fs::exists(settings::ConfigFilePath()));
}

TEST_F(ModuleTest, CloseWithoutSavingClearsTheModifiedFlag) {
  Open();
  OnLoad();
  Editor().setModified(true);
  ASSERT_TRUE(session_->runCommandLine("singledwg_plot"));
  EXPECT_FALSE(Editor().modified());
  EXPECT_TRUE(session_->closeRequested());
}

TEST_F(ModuleTest, EntryPointAnswersZeroAndIgnoresOtherMessages) {
  Open();
  EXPECT_EQ(ModuleEntryPoint(kInitAppMsg, nullptr), 0);
  EXPECT_TRUE(IsLoaded());
  EXPECT_EQ(ModuleEntryPoint(99, nullptr), 0);
  EXPECT_TRUE(IsLoaded());
  EXPECT_EQ(ModuleEntryPoint(kUnloadAppMsg, nullptr), 0);
  EXPECT_FALSE(IsLoaded());
}

}  // namespace
}  // namespace tv::host
