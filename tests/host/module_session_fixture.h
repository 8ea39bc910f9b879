#pragma once
// A console session for the module's tests, with the module's folders inside a private temporary
// folder so that no test touches the user's own data; the module is unloaded and the settings put
// back after each test.
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "cad/database.h"
#include "console/session.h"
#include "host/module_entry.h"
#include "settings/config.h"
#include "../support/run_program.h"
#include "../support/scoped_env.h"

namespace tv::host::test {

class ModuleSessionTest : public ::testing::Test {
 protected:
  explicit ModuleSessionTest(const char* tempName) : dir_(tempName) {}
  void SetUp() override {
    std::filesystem::create_directories(root_ / "install");
    settings::GlobalConfig() = settings::Config{};
  }
  void TearDown() override {
    session_.reset();
    if (IsLoaded()) OnUnload();
    settings::GlobalConfig() = settings::Config{};
  }

  std::unique_ptr<console::Session> OpenSession(const std::string& path, std::vector<std::string> answers = {}) {
    console::SessionOptions options;
    options.out = &out_;
    options.answers = std::move(answers);
    return std::make_unique<console::Session>(cad::Database::createDefault(), path, options);
  }
  console::Session& Open(std::vector<std::string> answers = {}) {
    session_ = OpenSession("test.dxf", std::move(answers));
    return *session_;
  }

  test_support::TempDir dir_;
  std::filesystem::path root_ = dir_.path();
  test_support::ScopedEnv install_{"TARVEX_HOME", (root_ / "install").string()};
  test_support::ScopedEnv data_{"XDG_DATA_HOME", (root_ / "data").string()};
  // Where loading proves it can write.
  test_support::ScopedEnv documents_{"XDG_DOCUMENTS_DIR", (root_ / "documents").string()};
  std::ostringstream out_;
  std::unique_ptr<console::Session> session_;
};

}  // namespace tv::host::test
