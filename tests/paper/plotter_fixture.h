#pragma once
// A host whose plotter, model, style and driver folders all lie in a temporary folder, for the
// tests that write the private plotter and style files and read them back.
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "host/null_editor.h"
#include "paper/paper.h"
#include "paper/plotter_writer.h"
#include "paper/saved_plotter.h"
#include "settings/config.h"
#include "settings/folders.h"
#include "settings/plot_setting.h"
#include "../support/run_program.h"
#include "../support/fake_editor.h"
#include "../support/scoped_env.h"

namespace tv::paper::testing {

namespace fs = std::filesystem;

// How often `part` occurs in `text`, overlapping occurrences included (closing lines share their
// line feeds).
inline std::size_t Count(const std::string& text, const std::string& part) {
  std::size_t n = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++n;
  return n;
}

// Papers as a job would hold them.
inline PaperList Papers(std::initializer_list<std::pair<int, int>> sizes) {
  PaperList list;
  bool added = false;
  for (const auto& [a, b] : sizes) AddPaper(list, a, b, added);
  return list;
}

// Answers the folder preferences and the version; records message boxes and choice forms.
class PlotterHost final : public test_support::FakeEditor {
 public:
  std::vector<std::pair<std::string, std::string>> boxes;  // caption, text
  std::vector<std::pair<std::string, int>> choices;        // title, preselected item
  std::optional<int> choiceAnswer;

  host::MessageAnswer messageBox(std::string_view text, std::string_view caption, host::MessageButtons) override {
    boxes.emplace_back(std::string(caption), std::string(text));
    return host::MessageAnswer::Ok;
  }
  std::optional<int> chooseItem(std::string_view title, const std::vector<std::string>&, int defaultItem) override {
    choices.emplace_back(std::string(title), defaultItem);
    return choiceAnswer;
  }
};

class PlotterFolderTest : public ::testing::Test {
 protected:
  PlotterFolderTest() {
    fs::create_directories(plotters() / "PMP Files");
    fs::create_directories(styles());
    fs::create_directories(drivers());
    fs::create_directories(dir_ / "docs");
    for (const char* driver : {"pdfplot25.hdi", "dwfplot25.hdi", "raster25.hdi", "hpgl250.hdi", "ps25.hdi"})
      test_support::WriteFile(drivers() / driver, "driver\n");
    const std::string root = (dir_ / "Roaming").string();
    host_.vars["ACADVER"] = std::string("25.0s");
    host_.vars["LOCALROOTPREFIX"] = root + "/";
    host_.vars["ROAMABLEROOTPREFIX"] = root + "/";
    host_.env["ACADDRV"] = drivers().string();
    host_.env["PrinterConfigDir"] = "%roamablerootfolder%/Plotters";
    host_.env["PrinterDescDir"] = "%roamablerootfolder%/Plotters/PMP Files";
    host_.env["PrinterStyleSheetDir"] = "%roamablerootfolder%/Plot Styles";
    settings::ComputeFolders();
    ResetGlobals();
  }
  ~PlotterFolderTest() override { ResetGlobals(); }

  static void ResetGlobals() {
    settings::GlobalConfig() = settings::Config{};
    settings::CurrentPlotSetting() = settings::PlotSettingRec{};
    GlobalSavedPlotter() = SavedPlotter{};
    SetPrivatePlotterReady(false);
  }

  fs::path plotters() const { return dir_ / "Roaming" / "Plotters"; }
  fs::path models() const { return plotters() / "PMP Files"; }
  fs::path styles() const { return dir_ / "Roaming" / "Plot Styles"; }
  fs::path drivers() const { return dir_ / "install" / "drivers"; }

  test_support::TempDir dir_{"tv_plotter"};
  test_support::ScopedEnv home_{"HOME", (dir_ / "home").string()};
  test_support::ScopedEnv data_{"XDG_DATA_HOME", (dir_ / "data").string()};
  test_support::ScopedEnv docs_{"XDG_DOCUMENTS_DIR", (dir_ / "docs").string()};
  test_support::ScopedEnv install_{"TARVEX_HOME", (dir_ / "install").string()};
  PlotterHost host_;
};

}  // namespace tv::paper::testing
