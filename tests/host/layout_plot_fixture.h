#pragma once
// A host with plotter folders of its own for the tests of a layout's plot settings: folders for
// plotter configurations, model files, plot style tables, drivers and the installation, named by
// the host's preferences; devices written by the system's own plotter writer; a fresh drawing
// behind the seam; an editor whose variables and document path the test sets.
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "../support/fake_editor.h"
#include "../support/run_program.h"
#include "../support/scoped_env.h"
#include "cad/database.h"
#include "host/cad_binding.h"
#include "host/null_editor.h"
#include "host/text_files.h"
#include "paper/paper.h"
#include "paper/plotter_writer.h"
#include "settings/config.h"
#include "settings/folders.h"
#include "settings/plot_setting.h"

namespace tv::host::testing {

// Host preferences and variables are plain values; message boxes are recorded.
class PlotHostEditor final : public test_support::FakeEditor {
 public:
  std::vector<std::string> messages;
  std::string document;

  MessageAnswer messageBox(std::string_view text, std::string_view, MessageButtons) override {
    messages.emplace_back(text);
    return MessageAnswer::Ok;
  }
  std::string documentPath() override { return document; }
};

class LayoutPlotTest : public ::testing::Test {
 protected:
  LayoutPlotTest() : installEnv_("TARVEX_HOME", (dir_ / "install").string()) {
    for (const char* sub : {"plotters", "plotters/PMP Files", "styles", "drivers", "install"})
      std::filesystem::create_directories(dir_ / sub);
    editor.env = {{"ACADDRV", folder("drivers")},
                  {"PrinterConfigDir", folder("plotters")},
                  {"PrinterDescDir", folder("plotters/PMP Files")},
                  {"PrinterStyleSheetDir", folder("styles")}};
    settings::ComputeFolders();
    settings::GlobalConfig() = settings::Config{};
    settings::CurrentPlotSetting() = settings::PlotSettingRec{};
    SetWorkingDatabase(&db);
  }
  ~LayoutPlotTest() override {
    SetWorkingDatabase(nullptr);
    settings::GlobalConfig() = settings::Config{};
    settings::CurrentPlotSetting() = settings::PlotSettingRec{};
  }

  std::string folder(const std::string& sub) const { return (dir_ / sub).string(); }
  std::string pc3Folder() const { return folder("plotters"); }
  std::string pmpFolder() const { return folder("plotters/PMP Files"); }
  std::string styleFolder() const { return folder("styles"); }

  // A file whose content doesn't matter to the test.
  void touch(const std::string& path) const { test_support::WriteFile(path, "x\n"); }

  // A device `pc3Name` of `format` whose model file lists `papers` ({length, width} each; a paper
  // gets its medium across and, unless square, the turned one).
  void writeDevice(const std::string& pc3Name, const std::string& pmpName,
                   const std::vector<std::pair<int, int>>& papers, std::int32_t format = 0, std::int32_t margin = 0) {
    paper::PaperList list;
    for (auto [length, width] : papers) {
      bool added = false;
      paper::AddPaper(list, length, width, added);
    }
    paper::PlotterOptions options;
    options.format = format;
    options.margin = margin;
    const std::string pmpPath = pmpFolder() + "/" + pmpName;
    const std::string hdiPath = folder("drivers") + "/pdfplot16.hdi";
    ASSERT_TRUE(WriteTextFileReplacing(pc3Folder() + "/" + pc3Name, paper::Pc3Text(options, pmpPath, hdiPath)));
    ASSERT_TRUE(WriteTextFileReplacing(pmpPath, paper::PmpText(list, options, pmpPath, hdiPath)));
  }

  test_support::TempDir dir_{"tv_layout_plot"};
  test_support::ScopedEnv installEnv_;
  PlotHostEditor editor;
  cad::Database db = cad::Database::createDefault();
};

}  // namespace tv::host::testing
