// The popup menu and the shortcut form as models: every item where it belongs, with its macro and
// its shortcut, one popup however often it is rebuilt, and OK carrying the rows into the settings.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "cad/database.h"
#include "console/console_editor.h"
#include "console/session.h"
#include "host/command_table.h"
#include "host/menu.h"
#include "host/module_entry.h"
#include "host/shortcut_form.h"
#include "settings/config.h"
#include "../support/run_program.h"
#include "../support/scoped_env.h"
#include "module_session_fixture.h"

namespace tv::host {
namespace {

namespace fs = std::filesystem;
using Kind = MenuItem::Kind;

// One expected entry: a command number, 0 for a separator, or -1 for a submenu named `label`.
struct Expected {
  int command;
  std::string label;
};

void ExpectItems(const std::vector<MenuItem>& items, const std::vector<Expected>& expected, const std::string& where) {
  ASSERT_EQ(items.size(), expected.size()) << where;
  for (std::size_t i = 0; i < items.size(); ++i) {
    SCOPED_TRACE(where + " position " + std::to_string(i));
    const MenuItem& item = items[i];
    const Expected& e = expected[i];
    if (e.command == 0) {
      EXPECT_EQ(item.kind, Kind::Separator);
    } else if (e.command < 0) {
      EXPECT_EQ(item.kind, Kind::Submenu);
      EXPECT_EQ(item.label, e.label);
    } else {
      EXPECT_EQ(item.kind, Kind::Command);
      EXPECT_EQ(item.commandNumber, e.command);
      EXPECT_EQ(item.label, e.label);
      EXPECT_EQ(item.macro, "TV_BatchPlot_" + std::to_string(e.command) + " ");
    }
  }
}

class MenuModelTest : public test::ModuleSessionTest {
 protected:
  MenuModelTest() : ModuleSessionTest("tv-menu") {}
  void SetUp() override {
    ModuleSessionTest::SetUp();
    Menus() = HostMenus{{MenuGroup{"ACAD", {}}}, {}};
  }
  void TearDown() override {
    ModuleSessionTest::TearDown();
    Menus() = HostMenus{{MenuGroup{"ACAD", {}}}, {}};
  }
  static void SetShortcuts(std::vector<std::int32_t> ids, std::vector<std::string> names) {
    settings::GlobalConfig().shortcut_ids = std::move(ids);
    settings::GlobalConfig().shortcut_names = std::move(names);
  }

};

TEST_F(MenuModelTest, PopupHoldsEveryItemWhereItBelongsWithShortcutsInTheirLabels) {
  SetShortcuts({1, 19, 14}, {"P1", "ZS", "SZ"});
  BuildMenu();
  const PopupMenu* popup = ModulePopup();
  ASSERT_NE(popup, nullptr);
  EXPECT_EQ(popup->name, "T_批打印");
  ExpectItems(popup->items,
              {{1, "单张打印到文件--P1"}, {0, ""}, {2, "批打到文件(通用型)"}, {0, ""}, {4, "批打到文件(图框型)"}, {0, ""},
               {5, "批打到纸张(新版)"}, {0, ""}, {16, "批打到纸张(旧版)"}, {0, ""}, {-1, "辅助功能"}, {0, ""},
               {-1, "设置"}, {0, ""}, {10, "帮助..."}, {0, ""}, {11, "关于..."}},
              "menu");
  ExpectItems(popup->items[10].items,
              {{7, "签名插入"}, {0, ""}, {8, "签名授权"}, {0, ""}, {15, "刷字符内容"}, {0, ""}, {20, "刷图块属性"}, {0, ""},
               {19, "真彩色-->索引色--ZS"}, {0, ""}, {17, "生成外框"}, {0, ""}},
              "辅助功能");
  ExpectItems(popup->items[12].items,
              {{14, "打印设置--SZ"}, {0, ""}, {3, "图框信息库管理"}, {0, ""}, {6, "签名库管理"}, {0, ""}, {13, "印章库管理"},
               {0, ""}, {9, "快捷命令设置"}, {0, ""}, {12, "卸载"}},
              "设置");
}

TEST_F(MenuModelTest, RebuildingReusesThePopupAndItsPlaceOnTheBar) {
  Menus().bar = {"文件", "编辑"};
  Menus().groups.push_back({"Other", {}});  // the module's group is found by name, not by place
  BuildMenu();
  SetShortcuts({2}, {"PP"});
  BuildMenu();
  BuildMenu();
  EXPECT_EQ(Menus().groups[0].menus.size(), 1u);
  EXPECT_TRUE(Menus().groups[1].menus.empty());
  EXPECT_EQ(Menus().bar, (std::vector<std::string>{"文件", "编辑", "T_批打印"}));
  ASSERT_NE(ModulePopup(), nullptr);
  EXPECT_EQ(ModulePopup()->items.size(), 17u);
  EXPECT_EQ(ModulePopup()->items[2].label, "批打到文件(通用型)--PP");

  // A bar that lost the popup gets it back at its end; the popup is the same one.
  Menus().bar = {"文件"};
  BuildMenu();
  EXPECT_EQ(Menus().bar, (std::vector<std::string>{"文件", "T_批打印"}));
  EXPECT_EQ(Menus().groups[0].menus.size(), 1u);
}

TEST_F(MenuModelTest, WithoutTheGroupTheLastOneTakesThePopupAndWithoutAnyNothingHappens) {
  Menus() = HostMenus{{MenuGroup{"A", {}}, MenuGroup{"B", {}}}, {}};
  BuildMenu();
  EXPECT_TRUE(Menus().groups[0].menus.empty());
  EXPECT_EQ(Menus().groups[1].menus.size(), 1u);

  Menus() = HostMenus{};
  BuildMenu();
  EXPECT_FALSE(MenuBuilt());
  EXPECT_TRUE(Menus().bar.empty());
}

TEST_F(MenuModelTest, MenuBarIsTurnedOnOnlyWhenThePopupHadToBeMade) {
  Open();
  BuildMenu();
  EXPECT_EQ(GetIntVar("MENUBAR"), 1);
  SetVar("MENUBAR", std::int32_t{0});
  BuildMenu();
  EXPECT_EQ(GetIntVar("MENUBAR"), 0);
}

TEST_F(MenuModelTest, ShortcutFormOffersEveryMenuCommandButTheSetUpOnes) {
  SetShortcuts({16, 9}, {"JB", "KJ"});
  const Dlg_ShortCut form;
  const std::vector<std::pair<std::string, int>> expected{
      {"  单张打印到文件", 1}, {"  批打到文件(通用型)", 2}, {"  批打到文件(图框型)", 4}, {"  批打到纸张(新版)", 5},
      {"  批打到纸张(旧版)", 16}, {"", 0}, {"  签名插入", 7}, {"  签名授权", 8}, {"  打印设置", 14},
      {"  图框信息库管理", 3}, {"  签名库管理", 6}, {"  印章库管理", 13}, {"", 0}, {"  刷字符内容", 15},
      {"  刷图块属性", 20}, {"  真彩色-->索引色", 19}, {"  生成外框", 17}};
  ASSERT_EQ(form.rows().size(), expected.size());
  for (std::size_t i = 0; i < expected.size(); ++i) {
    EXPECT_EQ(form.rows()[i].text, expected[i].first) << i;
    EXPECT_EQ(form.rows()[i].commandNumber, expected[i].second) << i;
    EXPECT_EQ(form.editable(i), expected[i].second > 0) << i;
    EXPECT_EQ(form.rows()[i].shortcut, expected[i].second == 16 ? "JB" : "") << i;
  }
  for (int n : kNoShortcutCommands)
    for (const Dlg_ShortCut::Row& r : form.rows()) EXPECT_NE(r.commandNumber, n);
}

TEST_F(MenuModelTest, EditedShortcutsLoseTheirBlanksAndBlankRowsTakeNone) {
  Dlg_ShortCut form;
  EXPECT_TRUE(form.setShortcut(0, " p \t1 "));
  EXPECT_EQ(form.rows()[0].shortcut, "p1");
  EXPECT_FALSE(form.setShortcut(5, "X"));
  EXPECT_EQ(form.rows()[5].shortcut, "");
  EXPECT_FALSE(form.setShortcut(99, "X"));
  form.setShortcut(16, "WK");
  form.clearAll();
  for (const Dlg_ShortCut::Row& r : form.rows()) EXPECT_EQ(r.shortcut, "");
}

TEST_F(MenuModelTest, OkTakesTheRowsIntoTheSettingsMenuCommandsAndFile) {
  Open();
  OnLoad();
  SetShortcuts({2}, {"OLD"});
  RegisterCommands();
  ASSERT_NE(session_->editor().findCommand("OLD"), nullptr);

  Dlg_ShortCut form;
  form.setShortcut(0, "P1");
  form.setShortcut(1, "");  // the old one cleared
  form.setShortcut(16, "WK");
  ASSERT_TRUE(form.apply());

  // Row order, not the order they were typed in.
  EXPECT_EQ(settings::GlobalConfig().shortcut_ids, (std::vector<std::int32_t>{1, 17}));
  EXPECT_EQ(settings::GlobalConfig().shortcut_names, (std::vector<std::string>{"P1", "WK"}));
  EXPECT_EQ(session_->editor().findCommand("OLD"), nullptr);
  ASSERT_NE(session_->editor().findCommand("wk"), nullptr);
  EXPECT_EQ(session_->editor().findCommand("wk")->body, *LookupCommand(17));
  EXPECT_EQ(ModulePopup()->items[0].label, "单张打印到文件--P1");
  EXPECT_EQ(ModulePopup()->items[2].label, "批打到文件(通用型)");

  // Written at once, so the next load has them.
  settings::Config reread;
  ASSERT_TRUE(settings::LoadConfigFrom(reread, settings::ConfigFilePath()));
  EXPECT_EQ(reread.shortcut_names, (std::vector<std::string>{"P1", "WK"}));
}

}  // namespace
}  // namespace tv::host
