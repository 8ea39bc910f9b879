// The private plotter of a batch is the job's, not the drawing's: whether the list is closed or
// every sheet of model space and two layouts is plotted, each layout ends with the plot settings
// it had, and the private plotter files are gone from the user's plotter folders.
#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "cad/database.h"
#include "cad/dxf_reader.h"
#include "tests/support/frame_drawings.h"
#include "tests/support/tvplot_test.h"

namespace tv::console {
namespace {

namespace fs = std::filesystem;

using test_support::RunResult;

// What each layout plots on before the batch: a device of the office, not of this machine.
std::map<std::string, cad::PlotSettings> OfficeSettings() {
  std::map<std::string, cad::PlotSettings> out;
  for (const auto& [name, device, media] : std::vector<std::array<std::string, 3>>{
           {"Model", "Office Plotter.pc3", "ISO_A3_(420.00_x_297.00_MM)"},
           {"Layout1", "Office Printer.pc3", "ISO_A4_(297.00_x_210.00_MM)"},
           {"Layout2", "None", "ISO_A4_(210.00_x_297.00_MM)"}}) {
    cad::PlotSettings& p = out[name];
    p.plotterName = device;
    p.paperSize = media;
    p.styleSheet = name == "Model" ? "monochrome.ctb" : "acad.ctb";
    p.plotType = name == "Model" ? 1 : 5;
  }
  return out;
}

// An A3 frame at 1:100 in model space, an A4 frame on each of two layouts.
cad::Database Drawing() {
  cad::Database db = cad::Database::createDefault();
  test_support::AddFrame(db, *db.modelSpace(), 0, 0, 42000, 29700);
  if (!db.findLayout("Layout1")) db.addLayout("Layout1");
  db.addLayout("Layout2");
  for (const auto& [name, settings] : OfficeSettings()) {
    cad::Layout* layout = db.findLayout(name);
    layout->plot = settings;
    if (name != "Model") test_support::AddFrame(db, *db.blockOf(*layout), 0, 0, 297, 210);
  }
  return db;
}

class PlotterRestoreTest : public test_support::TvplotTest {
 protected:
  // `tvplot run` of the generic batch over layouts and model with `atList` as the answer to the
  // list, the session saved to a new drawing; the home folder is the test's, to look into.
  RunResult Batch(const std::string& atList, const std::string& savedAs) {
    std::vector<std::string> args{"run",      drawing_,  "TV_BatchPlot_2", "--answer", "",         "--answer",
                                  "3",        "--answer", atList,          "--answer", "^C",       "--save-as",
                                  savedAs};
    return Run(args, {}, home_.string());
  }
  void ExpectOwnSettingsAndNoPrivateFiles(const std::string& savedAs) {
    cad::DxfReadResult read = cad::ReadDxf(savedAs);
    ASSERT_TRUE(read.ok()) << read.error;
    for (const auto& [name, settings] : OfficeSettings()) {
      SCOPED_TRACE(name);
      const cad::Layout* layout = read.db->findLayout(name);
      ASSERT_NE(layout, nullptr);
      EXPECT_EQ(layout->plot.plotterName, settings.plotterName);
      EXPECT_EQ(layout->plot.paperSize, settings.paperSize);
      EXPECT_EQ(layout->plot.styleSheet, settings.styleSheet);
      EXPECT_EQ(layout->plot.plotType, settings.plotType);
    }
    std::error_code ec;
    for (const auto& e : fs::recursive_directory_iterator(home_ / ".local/share/Tarvex", ec)) {
      const std::string file = e.path().filename().string();
      EXPECT_FALSE(file.starts_with("T_PDF") || file.starts_with("T_PNG")) << e.path();
    }
  }

  const fs::path home_ = Path("home");
  const std::string drawing_ = Write("plan.dxf", Drawing());
};

TEST_F(PlotterRestoreTest, ClosingTheListGivesEveryLayoutItsPlotterBack) {
  const std::string saved = Path("closed.dxf").string();
  const RunResult r = Batch("C", saved);
  ASSERT_EQ(r.exitCode, 0) << r.out << r.err;
  ASSERT_NE(r.out.find("关闭(C)"), std::string::npos) << r.out;
  ExpectOwnSettingsAndNoPrivateFiles(saved);
}

TEST_F(PlotterRestoreTest, AfterARunOverSeveralLayoutsEachHasItsOwnPlotterBack) {
  const std::string saved = Path("plotted.dxf").string();
  const RunResult r = Batch("", saved);
  ASSERT_EQ(r.exitCode, 0) << r.out << r.err;
  std::size_t files = 0;
  for (const auto& e : fs::recursive_directory_iterator(dir_.path()))
    if (e.path().extension() == ".pdf") ++files;
  EXPECT_EQ(files, 3u) << r.out;
  ExpectOwnSettingsAndNoPrivateFiles(saved);
}

}  // namespace
}  // namespace tv::console
