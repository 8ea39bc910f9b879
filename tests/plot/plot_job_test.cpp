// The plot job driver in a console session: the answers of -plot, the run from the review list
// through the private command to files, the cancel question, names that stay in their folder, and
// the PDF direction option.
#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "../support/pdf_reading.h"
#include "../support/run_program.h"
#include "../support/scoped_env.h"
#include "cad/database.h"
#include "console/console_editor.h"
#include "console/session.h"
#include "host/cad_binding.h"
#include "host/module_entry.h"
#include "host/wrappers.h"
#include "paper/saved_plotter.h"
#include "plot/generic_review.h"
#include "plot/output_paths.h"
#include "plot/plot_job.h"
#include "recognition/working_coordinates.h"
#include "settings/config.h"
#include "settings/plot_setting.h"

namespace tv::plot {
namespace {

namespace fs = std::filesystem;
using test_support::ReadFile;
using test_support::TempDir;

TEST(PlotAnswers, FileBatchesAcceptTheLayoutAndNameTheFile) {
  const std::vector<std::string> head{"-plot", "y", "", "", "", "M", "", "N", "W", "", "", "F", "C", "Y", "", ""};
  std::vector<std::string> model = head;
  model.insert(model.end(), {"A", "/out/1.pdf", "N", "Y"});
  EXPECT_EQ(PlotAnswers(settings::kFormatPdf, false, "/out/1.pdf"), model);
  // PLT and EPS devices could drive a plotter: they are told to write a file first.
  std::vector<std::string> eps = head;
  eps.insert(eps.end(), {"N", "N", "N", "Y", "/out/1.eps", "N", "Y"});
  EXPECT_EQ(PlotAnswers(settings::kFormatEps, true, "/out/1.eps"), eps);

  const auto paper = PaperAnswers(false, true, "");
  EXPECT_EQ(paper[5], "");
  EXPECT_EQ(paper[6], "P");
  EXPECT_EQ(std::vector<std::string>(paper.end() - 4, paper.end()), (std::vector<std::string>{"A", "N", "N", "Y"}));
  const auto toFile = PaperAnswers(true, false, "/out/a.plt");
  EXPECT_EQ(toFile[6], "L");
  EXPECT_EQ(std::vector<std::string>(toFile.end() - 7, toFile.end()),
            (std::vector<std::string>{"N", "N", "N", "Y", "/out/a.plt", "N", "Y"}));
}

// A drawing with two A3 frames at 1:100 in model space (one upright) and an A4 frame in a layout.
cad::Database PlanWithSheets() {
  cad::Database db = cad::Database::createDefault();
  cad::BlockRecord& model = *db.modelSpace();
  const auto frame = [&](cad::BlockRecord& space, Point2d lo, double w, double h) {
    auto pl = std::make_unique<cad::LwPolyline>();
    pl->points = {lo, {lo.x + w, lo.y}, {lo.x + w, lo.y + h}, {lo.x, lo.y + h}};
    pl->polyFlags = cad::LwPolyline::kClosed;
    db.append(space, std::move(pl));
    auto line = std::make_unique<cad::Line>();
    line->start = {lo.x + w * 0.2, lo.y + h * 0.5, 0};
    line->end = {lo.x + w * 0.8, lo.y + h * 0.5, 0};
    db.append(space, std::move(line));
  };
  frame(model, {0, 0}, 42000, 29700);
  frame(model, {50000, 0}, 29700, 42000);
  cad::Layout* layout = nullptr;
  for (cad::Layout* l : db.layoutsInTabOrder())
    if (!l->isModel()) layout = l;
  if (layout)
    if (cad::BlockRecord* paper = db.blockOf(*layout)) frame(*paper, {0, 0}, 210, 297);
  return db;
}

class PlotJobTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_FALSE(dir_.path().empty());
    recognition::ResetUcs();
    console::SessionOptions options;
    options.out = &out_;
    session_ = std::make_unique<console::Session>(PlanWithSheets(), (dir_ / "plan.dxf").string(), options);
    host::OnLoad();
    settings::Config& config = settings::GlobalConfig();
    config.open_folder_after = 0;
    settings::PlotSettingRec rec = settings::CurrentPlotSetting();
    rec.path_mode = kPathCustom;
    rec.custom_path = Folder();
    settings::SaveDwgPlotSetting(rec);
    fs::create_directories(Folder());
  }
  void TearDown() override {
    host::OnUnload();
    session_.reset();
    settings::GlobalConfig() = settings::Config{};
    settings::CurrentPlotSetting() = settings::PlotSettingRec{};
    recognition::ResetUcs();
  }
  std::string Folder() const { return (dir_ / "out").string(); }
  static std::vector<std::string> Names(const fs::path& folder) { return test_support::FilesIn(folder); }
  std::vector<std::string> Written() const { return Names(Folder()); }
  console::ConsoleEditor& editor() { return session_->editor(); }

  TempDir dir_{"tv_plot_job"};
  // Settings of a data folder of its own: what one run keeps must not reach the next test.
  test_support::ScopedEnv data_{"XDG_DATA_HOME", (dir_ / "data").string()};
  std::ostringstream out_;
  std::unique_ptr<console::Session> session_;
};

TEST_F(PlotJobTest, ReviewListRunsThroughThePrivateCommandToOneFilePerSheet) {
  const ObjectId layoutBefore = host::Working().currentLayout;
  // Range: every space; OK at the list; Esc when the command comes back to show the list again.
  editor().answers().pushFront({"", "3", "", "^C"});
  ASSERT_TRUE(session_->runCommandLine("TV_BatchPlot_2"));
  EXPECT_EQ(Written(), (std::vector<std::string>{"plan01.pdf", "plan02.pdf", "plan03.pdf"})) << out_.str();
  ASSERT_EQ(editor().plots().size(), 3u);
  for (const auto& p : editor().plots()) EXPECT_TRUE(p.ok) << p.message;

  // The run ended cleanly: the form is gone, the layout is back, the settings went into the drawing.
  EXPECT_EQ(GenericReview(), nullptr);
  EXPECT_EQ(host::Working().currentLayout, layoutBefore);
  EXPECT_EQ(host::GetIntVar("FILEDIA"), 1);
  EXPECT_NE(out_.str().find("命令: Plot_Temp1"), std::string::npos);
}

TEST_F(PlotJobTest, CancelQuestionNoGoesOnYesStops) {
  // The run posted by the list's OK, taken from the queue by hand so the flag can be set first.
  const auto startRun = [&] {
    editor().answers().pushFront({"", "1", ""});
    GenericPlotCommand();
    editor().clearQueued();
    Dlg_BPlot1* form = GenericReview();
    EXPECT_TRUE(form && form->plot_started);
    if (form) form->cancel_requested = true;
  };
  startRun();
  editor().answers().pushFront({"N"});
  EXPECT_TRUE(PlotSheets({}, 2));
  EXPECT_EQ(Written().size(), 2u) << out_.str();
  EXPECT_NE(out_.str().find(std::string(kCancelQuestion)), std::string::npos);

  for (const std::string& name : Written()) fs::remove(fs::path(Folder()) / name);
  startRun();
  editor().answers().pushFront({"Y"});
  EXPECT_FALSE(PlotSheets({}, 2));
  EXPECT_TRUE(Written().empty());
  EXPECT_EQ(GenericReview(), nullptr) << "a stopped run finishes its form";
  EXPECT_EQ(host::GetIntVar("FILEDIA"), 1);
}

TEST_F(PlotJobTest, StandbyPassPlotsTheSheetsLeftForASecondTry) {
  editor().answers().pushFront({"", "3", ""});
  GenericPlotCommand();
  editor().clearQueued();
  ASSERT_NE(GenericReview(), nullptr);
  // What the first pass leaves when an old host came back before the files of two sheets.
  Job().RetryFolder = Folder();
  Job().RetryIndices = {2, 0};
  Job().RetryLayoutId = host::OpenCurrentSpace();
  const fs::path cwd = fs::current_path();
  fs::current_path(dir_.path());
  ASSERT_TRUE(session_->runCommandLine("Plot_BaseFun1_Standby"));
  fs::current_path(cwd);
  // The stand-by pass answers as for a layout: the layout's sheet comes out; in model space the
  // answers fall out of step with the prompts, are refused, and nothing is written anywhere.
  EXPECT_EQ(Written(), std::vector<std::string>{"plan03.pdf"}) << out_.str();
  EXPECT_EQ(Names(dir_.path()), (std::vector<std::string>{"data", "out"}));
  EXPECT_NE(out_.str().find("无效的选项关键字"), std::string::npos);
  EXPECT_TRUE(Job().RetryIndices.empty());
  EXPECT_EQ(GenericReview(), nullptr);
  EXPECT_EQ(host::GetIntVar("FILEDIA"), 1);
}

TEST_F(PlotJobTest, NamesFromTheSettingsStayInTheOutputFolder) {
  settings::PlotSettingRec rec;
  settings::LoadDwgPlotSetting(rec);
  rec.name_prefix = "../../escape/";
  rec.name_suffix = ":*?";
  settings::SaveDwgPlotSetting(rec);
  editor().answers().pushFront({"", "1", "", "^C"});
  ASSERT_TRUE(session_->runCommandLine("TV_BatchPlot_2"));
  const auto names = Written();
  ASSERT_EQ(names.size(), 2u) << out_.str();
  for (const std::string& n : names) {
    EXPECT_EQ(n.find('/'), std::string::npos);
    EXPECT_EQ(n.find(':'), std::string::npos);
  }
  EXPECT_FALSE(fs::exists(dir_ / "escape"));
  EXPECT_FALSE(fs::exists(fs::path(Folder()).parent_path().parent_path() / "escape"));
}

TEST_F(PlotJobTest, EdgesOfTheLoopNoSheetAndAPathOverTheHostLimit) {
  // A run of no sheet ends normally, with its folder made.
  editor().answers().pushFront({"", "1", ""});
  GenericPlotCommand();
  editor().clearQueued();
  fs::remove_all(Folder());
  settings::PlotSettingRec& form = GenericReview()->setting;
  form.custom_path = Folder();
  fs::create_directories(Folder());
  EXPECT_TRUE(PlotSheets({}, 0));
  EXPECT_TRUE(fs::is_directory(Folder()));
  EXPECT_TRUE(Written().empty());
  EXPECT_EQ(GenericReview(), nullptr);

  // A path over 255 characters is reported, and the plot goes ahead all the same.
  settings::PlotSettingRec rec;
  settings::LoadDwgPlotSetting(rec);
  rec.name_prefix = std::string(240, 'a');
  settings::SaveDwgPlotSetting(rec);
  editor().answers().pushFront({"", "1", "", "^C"});
  ASSERT_TRUE(session_->runCommandLine("TV_BatchPlot_2"));
  EXPECT_NE(out_.str().find("输出文件的文件名长度（路径+文件名）超过了限值"), std::string::npos);
  EXPECT_EQ(Written().size(), 2u);
}

TEST_F(PlotJobTest, APlotThatFailsLeavesTheFileOfAnEarlierRun) {
  editor().answers().pushFront({"", "1", "", "^C"});
  ASSERT_TRUE(session_->runCommandLine("TV_BatchPlot_2"));
  const std::vector<std::string> names{"plan01.pdf", "plan02.pdf"};
  ASSERT_EQ(Written(), names) << out_.str();
  const std::string first = ReadFile(fs::path(Folder()) / "plan01.pdf");

  // The next run's device has lost its papers, so each of its plots fails.
  editor().answers().pushFront({"", "1", ""});
  GenericPlotCommand();
  editor().clearQueued();
  ASSERT_NE(GenericReview(), nullptr);
  const std::string media = paper::GlobalSavedPlotter().pmpPath;
  ASSERT_TRUE(fs::is_regular_file(media));
  test_support::WriteFile(media, "no media");
  const std::size_t before = editor().plots().size();
  PlotSheets({}, 2);
  ASSERT_EQ(editor().plots().size(), before + 2) << out_.str();
  for (std::size_t i = before; i < editor().plots().size(); ++i) EXPECT_FALSE(editor().plots()[i].ok);
  EXPECT_EQ(Written(), names) << "nothing of the failed run is left, and nothing is lost";
  EXPECT_EQ(ReadFile(fs::path(Folder()) / "plan01.pdf"), first);
}

TEST_F(PlotJobTest, PdfDirectionOptionTurnsUprightPages) {
  settings::GlobalConfig().pdf_orientation = 1;  // "全部转为横放"
  settings::GlobalConfig().pdf_rotate_side = 0;
  editor().answers().pushFront({"", "1", "", "^C"});
  ASSERT_TRUE(session_->runCommandLine("TV_BatchPlot_2"));
  ASSERT_EQ(Written().size(), 2u) << out_.str();
  const std::string across = ReadFile(fs::path(Folder()) / "plan01.pdf");
  const std::string upright = ReadFile(fs::path(Folder()) / "plan02.pdf");
  EXPECT_EQ(across.find("/Rotate 90"), std::string::npos);
  EXPECT_NE(upright.find("/Rotate 90"), std::string::npos);
}


TEST_F(PlotJobTest, AMergeOffersTheDrawingsNameAndWritesOnlyTheMergedFile) {
  settings::GlobalConfig().merge_pdf = 1;
  settings::GlobalConfig().pdf_open_after_merge = 0;
  // Range: model space; OK at the list; Enter takes the offered file; Esc at the list again.
  editor().answers().pushFront({"", "1", "", "", "^C"});
  ASSERT_TRUE(session_->runCommandLine("TV_BatchPlot_2"));
  const std::string offered = (fs::path(Folder()) / "plan.pdf").string();
  EXPECT_NE(out_.str().find(std::string(kMergedPdfTitle) + " <" + offered + ">"), std::string::npos) << out_.str();
  EXPECT_EQ(Written(), std::vector<std::string>{"plan.pdf"}) << out_.str();
  const test_support::PdfFacts merged = test_support::ReadPdfFacts(offered);
  EXPECT_EQ(merged.pages.size(), 2u);
  EXPECT_EQ(merged.outline, (std::vector<std::string>{"plan01", "plan02"}));
}

TEST_F(PlotJobTest, CancellingTheMergedFileKeepsTheListOpenAndPlotsNothing) {
  settings::GlobalConfig().merge_pdf = 1;
  editor().answers().pushFront({"", "1", "", "^C", "^C"});
  ASSERT_TRUE(session_->runCommandLine("TV_BatchPlot_2"));
  EXPECT_NE(out_.str().find(std::string(kMergedPdfTitle)), std::string::npos);
  EXPECT_TRUE(Written().empty()) << out_.str();
  EXPECT_TRUE(editor().plots().empty());
  EXPECT_TRUE(Job().MergedPdfPath.empty());
}


}  // namespace
}  // namespace tv::plot
