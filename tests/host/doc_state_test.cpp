// The documents, commands, database changes and keys the module watches, as the console host
// reports them: documents entering and leaving the tracker, the menu coming back after the
// workspace threw it away, appended entities noted, and the keys' order of precedence.
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "cad/database.h"
#include "console/console_editor.h"
#include "console/session.h"
#include "host/doc_state.h"
#include "host/menu.h"
#include "host/module_entry.h"
#include "host/wrappers.h"
#include "host/entity.h"
#include "settings/config.h"
#include "../support/run_program.h"
#include "../support/scoped_env.h"
#include "module_session_fixture.h"

namespace tv::host {
namespace {

namespace fs = std::filesystem;

class DocStateTest : public test::ModuleSessionTest {
 protected:
  DocStateTest() : ModuleSessionTest("tv-docstate") {}
  void SetUp() override {
    ModuleSessionTest::SetUp();
    Menus() = HostMenus{{MenuGroup{"ACAD", {}}}, {}};
  }
  void TearDown() override {
    second_.reset();
    ModuleSessionTest::TearDown();
    Menus() = HostMenus{{MenuGroup{"ACAD", {}}}, {}};
    menuLost = false;
    recordAppended = false;
    appendedIds.clear();
    singlePlotWaiting = frameSettingKey = jigActive1 = jigActive2 = false;
    singlePlotMode = jigMode1 = jigMode2 = 0;
    reviewKind = 0;
    PreviewIndex = -1;
    frameSettingForm = nullptr;
    singlePlotSettingForm = nullptr;
  }
  std::unique_ptr<console::Session> second_;
};

TEST_F(DocStateTest, DocumentsOpenedOneAfterAnotherEnterAndLeaveTheTracker) {
  session_ = OpenSession("a.dxf");
  OnLoad();
  DocTracker* tracker = LiveDocTracker();
  ASSERT_NE(tracker, nullptr);
  ASSERT_EQ(tracker->documentCount(), 1);
  EXPECT_EQ(tracker->current()->document.fileName, "a.dxf");
  EXPECT_TRUE(MonitorAttached());

  // A drawing opened while the module is loaded gets its node at the end and becomes current.
  second_ = OpenSession("b.dxf");
  ASSERT_EQ(tracker->documentCount(), 2);
  EXPECT_EQ(tracker->head()->document.fileName, "a.dxf");
  EXPECT_EQ(tracker->current()->document.fileName, "b.dxf");
  EXPECT_EQ(monitoredDocument.fileName, "b.dxf");
  ASSERT_NE(tracker->current()->reactor, nullptr);

  // Closed, it leaves; current falls back to the head.
  second_.reset();
  ASSERT_EQ(tracker->documentCount(), 1);
  EXPECT_EQ(tracker->current(), tracker->head());

  OnUnload();
  EXPECT_EQ(LiveDocTracker(), nullptr);
  EXPECT_EQ(LiveEditorReactor(), nullptr);
}

TEST_F(DocStateTest, TrackingTwiceKeepsOneNodeAndForgettingTheLastLeavesNone) {
  DocTracker tracker;
  const DocumentRef a{reinterpret_cast<const void*>(0x10), "a.dxf"}, b{reinterpret_cast<const void*>(0x20), "b.dxf"};
  tracker.TrackDocument(a);
  tracker.TrackDocument(b);
  tracker.TrackDocument(a);
  EXPECT_EQ(tracker.documentCount(), 2);
  EXPECT_EQ(tracker.current()->document, a);
  tracker.reactor().documentToBeActivated(nullptr);  // ignored
  tracker.reactor().documentToBeActivated(&b);
  EXPECT_EQ(tracker.current()->document, b);
  EXPECT_EQ(tracker.reactor().lastDocument, b);
  tracker.ForgetDocument(a);
  EXPECT_EQ(tracker.current()->document, b);  // not the forgotten one: stays
  tracker.ForgetDocument(b);
  EXPECT_EQ(tracker.documentCount(), 0);
  EXPECT_EQ(tracker.current(), nullptr);
}

TEST_F(DocStateTest, MenuComesBackAfterTheWorkspaceCommandsOnly) {
  session_ = OpenSession("a.dxf");
  OnLoad();
  ASSERT_EQ(Menus().bar, std::vector<std::string>{"T_批打印"});

  struct Case {
    std::string line;
    bool rebuilt;
  };
  const std::vector<Case> cases{
      {"TV_BatchPlot_12", false},  // a command of its own changes nothing
      {"wscurrent 二维草图", true},
      {"_MENU ^C", true},
      {"MENUBAR 0", true},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.line);
    Menus().bar.clear();
    session_->runCommandLine(c.line);
    EXPECT_EQ(Menus().bar.size(), c.rebuilt ? 1u : 0u);
  }
  EXPECT_FALSE(menuLost);

  // A variable changed outside those commands: the next command to end rebuilds.
  Menus().bar.clear();
  SetVar("MENUBAR", std::int32_t{1});
  EXPECT_TRUE(menuLost);
  session_->runCommandLine("TV_BatchPlot_12");
  EXPECT_EQ(Menus().bar.size(), 1u);
  EXPECT_FALSE(menuLost);
}

TEST_F(DocStateTest, AppendedEntitiesAreNotedWhileRecording) {
  session_ = OpenSession("a.dxf");
  OnLoad();
  const ObjectId before = AppendToSpace(NewLine({0, 0, 0}, {1, 1, 0}), 0, ObjectId{});
  EXPECT_TRUE(appendedIds.empty());
  recordAppended = true;
  const ObjectId first = AppendToSpace(NewLine({0, 0, 0}, {2, 2, 0}), 0, ObjectId{});
  const ObjectId second = AppendToSpace(NewLine({0, 0, 0}, {3, 3, 0}), 0, ObjectId{});
  recordAppended = false;
  AppendToSpace(NewLine({0, 0, 0}, {4, 4, 0}), 0, ObjectId{});
  EXPECT_FALSE(before.isNull());
  EXPECT_EQ(appendedIds, (ObjectIdArray{first, second}));
}

int g_formsOpened = 0;
void CountForm() { ++g_formsOpened; }

TEST_F(DocStateTest, KeysActInTheirOrderOfPrecedence) {
  session_ = OpenSession("a.dxf");
  frameSettingForm = &CountForm;
  singlePlotSettingForm = &CountForm;
  struct Case {
    std::string what;
    bool frameKey, singleWaiting, jig1;
    std::int32_t kind, index;
    int key;
    KeyAction expected;
    std::int32_t indexAfter;
  };
  // Without a review, PreviewIndex stays; the generic list has no rows here, so Next can't move.
  const std::vector<Case> cases{
      {"S opens the frame settings before the single plot's", true, true, false, 0, -1, 'S', KeyAction::FrameSettings, -1},
      {"s likewise", true, false, false, 0, -1, 's', KeyAction::FrameSettings, -1},
      {"S of the single plot", false, true, false, 0, -1, 'S', KeyAction::SinglePlotSettings, -1},
      {"Tab of the single plot before the jig's", false, true, true, 0, -1, 9, KeyAction::SinglePlotMode, -1},
      {"Tab of the jig", false, false, true, 0, -1, 9, KeyAction::JigMode, -1},
      {"a key nobody watches", false, false, false, 1, 2, 'X', KeyAction::None, 2},
      {"Up moves the preview back", false, false, false, 1, 2, 38, KeyAction::PreviewPrevious, 1},
      {"Page Up at the first row stays", false, false, false, 1, 0, 33, KeyAction::None, 0},
      {"Down at the last row stays", false, false, false, 1, 0, 40, KeyAction::None, 0},
      {"no preview: no move", false, false, false, 0, 2, 37, KeyAction::None, 2},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    frameSettingKey = c.frameKey;
    singlePlotWaiting = c.singleWaiting;
    jigActive1 = c.jig1;
    reviewKind = c.kind;
    PreviewIndex = c.index;
    EXPECT_EQ(KeyWatcher(WM_KEYDOWN, c.key), c.expected);
    EXPECT_EQ(PreviewIndex, c.indexAfter);
    // The single plot's prompt is given back after its form.
    if (c.expected == KeyAction::SinglePlotSettings) {
      EXPECT_TRUE(singlePlotWaiting);
    }
    EXPECT_EQ(KeyWatcher(WM_KEYDOWN + 1, c.key), KeyAction::None);  // only key-down counts
  }
  EXPECT_EQ(g_formsOpened, 3);
  session_->editor().clearQueued();

  // Tab restarts the single plot's prompt in the other mode; the jig cycles 0, 1, 2, 0.
  frameSettingKey = false;
  singlePlotWaiting = true;
  singlePlotMode = 0;
  KeyWatcher(WM_KEYDOWN, 9);
  EXPECT_EQ(singlePlotMode, 1);
  std::vector<std::string> queued;
  while (auto text = session_->editor().takeQueued()) queued.push_back(*text);
  EXPECT_EQ(queued, (std::vector<std::string>{"\x03", "SinglePlot_SelectW\n"}));
  singlePlotWaiting = false;
  jigActive1 = false;
  jigActive2 = true;
  jigMode2 = 0;
  for (int expected : {1, 2, 0}) {
    KeyWatcher(WM_KEYDOWN, 9);
    EXPECT_EQ(jigMode2, expected);
  }
}

TEST_F(DocStateTest, BadgeStandsAheadOfPromptsWhileItIsOn) {
  session_ = OpenSession("a.dxf", {"x", "y"});
  std::string answer;
  {
    const BadgeScope badge("结构设计");
    CurrentEditor().getString("\n输入：", answer);
  }
  CurrentEditor().getString("\n再输入：", answer);
  EXPECT_NE(out_.str().find("\n[结构设计] 输入："), std::string::npos) << out_.str();
  EXPECT_NE(out_.str().find("\n再输入："), std::string::npos);
  EXPECT_FALSE(badgeOn);
}

}  // namespace
}  // namespace tv::host
