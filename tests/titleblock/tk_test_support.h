#pragma once
// Pieces shared by the title-block library tests: an editor that answers message boxes and file
// dialogs from the test, and a data folder of the test's own.
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "../support/run_program.h"
#include "../support/fake_editor.h"
#include "../support/scoped_env.h"
#include "host/editor.h"
#include "host/null_editor.h"
#include "settings/folders.h"

namespace tv::titleblock::testing {

// Installs itself as the editor for its lifetime; message boxes and dialogs are recorded.
class DialogEditor final : public test_support::FakeEditor {
 public:

  struct Box {
    std::string text, caption;
    host::MessageButtons buttons;
  };
  std::vector<Box> boxes;
  host::MessageAnswer answer = host::MessageAnswer::Yes;  // for questions
  std::vector<std::string> dialogs;                       // "title|default|extension"
  std::optional<std::string> openPath, savePath;          // nullopt = cancel

  host::MessageAnswer messageBox(std::string_view text, std::string_view caption,
                                 host::MessageButtons buttons) override {
    boxes.push_back({std::string(text), std::string(caption), buttons});
    return buttons == host::MessageButtons::Ok ? host::MessageAnswer::Ok : answer;
  }
  std::optional<std::string> askOpenPath(std::string_view title, std::string_view extension) override {
    dialogs.push_back(std::string(title) + "|" + std::string(extension));
    return openPath;
  }
  std::optional<std::string> askSavePath(std::string_view title, std::string_view defaultName,
                                         std::string_view extension) override {
    dialogs.push_back(std::string(title) + "|" + std::string(defaultName) + "|" + std::string(extension));
    return savePath;
  }
};

// Points the data folder at a temporary folder for the length of a test.
// The folders are computed again by whoever loads the module next; computing them on the way out
// would create the user's real data folder.
class DataFolderTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_FALSE(dir_.path().empty());
    settings::ComputeFolders();
  }

  std::string file(const std::string& name) const { return (dir_ / name).string(); }

  test_support::TempDir dir_{"tv_tk"};
  test_support::ScopedEnv data_{"XDG_DATA_HOME", (dir_.path() / "data").string()};
};

}  // namespace tv::titleblock::testing
