#pragma once
// The settings' tests: a private data and installation folder, fresh global settings, and small
// helpers for building the text of configuration files.
#include <gtest/gtest.h>

#include <optional>
#include <span>
#include <sstream>
#include <string>
#include <type_traits>
#include <variant>
#include <vector>

#include "host/null_editor.h"
#include "settings/config.h"
#include "settings/field_table.h"
#include "settings/folders.h"
#include "settings/plot_setting.h"
#include "../support/run_program.h"
#include "../support/fake_editor.h"
#include "../support/scoped_env.h"

namespace tv::settings::testing {

using test_support::ScopedEnv;

// Records message boxes and answers file dialogs with a prepared path.
class MessageRecorder final : public test_support::FakeEditor {
 public:
  host::MessageAnswer messageBox(std::string_view text, std::string_view caption, host::MessageButtons) override {
    messages.emplace_back(text);
    captions.emplace_back(caption);
    return host::MessageAnswer::Ok;
  }
  std::optional<std::string> askOpenPath(std::string_view title, std::string_view) override {
    titles.emplace_back(title);
    return answerPath;
  }
  std::optional<std::string> askSavePath(std::string_view title, std::string_view defaultName, std::string_view) override {
    titles.emplace_back(title);
    defaultNames.emplace_back(defaultName);
    return answerPath;
  }
  std::vector<std::string> messages, captions, titles, defaultNames;
  std::optional<std::string> answerPath;
};

class SettingsTest : public ::testing::Test {
 protected:
  SettingsTest()
      : data_(dir_ / "data"), install_(dir_ / "install"), dataEnv_("XDG_DATA_HOME", data_.string()),
        installEnv_("TARVEX_HOME", install_.string()) {
    std::filesystem::create_directories(install_);
    ComputeFolders();
    Reset();
  }
  ~SettingsTest() override { Reset(); }

  static void Reset() {
    GlobalConfig() = Config{};
    GlobalIni() = Ini{};
    CurrentPlotSetting() = PlotSettingRec{};
  }

  std::string path(const std::string& name) const { return (dir_ / name).string(); }

  test_support::TempDir dir_{"tv_settings"};
  std::filesystem::path data_, install_;
  ScopedEnv dataEnv_, installEnv_;
};

// Every field of `rec` set to a value of its own, none its default: numbers counted on from `base`
// (the margin, 14, stays within its range), strings with blanks and Chinese.
template <class Rec>
void MakeDistinct(Rec& rec, std::span<const FieldSpec<Rec>> fields, int base = 0) {
  int i = base;
  for (const auto& field : fields) {
    ++i;
    std::visit(
        [&](auto member) {
          auto& v = rec.*member;
          using T = std::decay_t<decltype(v)>;
          if constexpr (std::is_same_v<T, std::int32_t>)
            v = 10 + i;
          else if constexpr (std::is_same_v<T, double>)
            v = 0.25 + i;
          else
            v = "图 " + std::to_string(i) + " x";
        },
        field.member);
  }
}

// The whitespace-separated tokens of a text, as a file reader sees them.
inline std::vector<std::string> Tokens(const std::string& text) {
  std::istringstream in(text);
  std::vector<std::string> tokens;
  for (std::string t; in >> t;) tokens.push_back(t);
  return tokens;
}

}  // namespace tv::settings::testing
