#pragma once
// Sheets and a console session built in code for the scale and paper fitting tests. Answers for
// message boxes are scripted; the settings and first-use flags start from their defaults.
#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "cad/database.h"
#include "console/session.h"
#include "paper/scale_fitting.h"
#include "settings/config.h"
#include "settings/plot_setting.h"

namespace tv::paper::test {

inline std::unique_ptr<Plot_Drawing1> MakeSheet(double minX, double minY, double maxX, double maxY,
                                                double unitFactor = 1.0) {
  auto s = std::make_unique<Plot_Drawing1>();
  s->minX = minX;
  s->minY = minY;
  s->maxX = maxX;
  s->maxY = maxY;
  s->sizeX = maxX - minX;
  s->sizeY = maxY - minY;
  s->rotated = s->sizeX < s->sizeY;
  s->unitFactor = unitFactor;
  return s;
}

inline std::unique_ptr<Plot_Drawing1> MakeSheet(double sizeX, double sizeY) { return MakeSheet(0, 0, sizeX, sizeY); }

inline std::vector<Plot_Drawing1*> Pointers(const std::vector<std::unique_ptr<Plot_Drawing1>>& sheets) {
  std::vector<Plot_Drawing1*> out;
  for (const auto& s : sheets) out.push_back(s.get());
  return out;
}

class ScaleFittingTest : public ::testing::Test {
 protected:
  void SetUp() override { ResetState(); }
  void TearDown() override {
    session_.reset();
    ResetState();
  }

  static void ResetState() {
    settings::CurrentPlotSetting() = settings::PlotSettingRec{};
    settings::GlobalIni() = settings::Ini{};
    SetPlotterRefresh({});
  }

  // Installs the drawing and a console editor that answers from `answers`, then cancels.
  void Open(std::vector<std::string> answers = {}, cad::Database db = cad::Database::createDefault()) {
    session_.reset();
    out_.str("");
    console::SessionOptions options;
    options.out = &out_;
    options.answers = std::move(answers);
    session_ = std::make_unique<console::Session>(std::move(db), "test.dxf", options);
  }

  std::string Shown() const { return out_.str(); }

  std::ostringstream out_;
  std::unique_ptr<console::Session> session_;
};

}  // namespace tv::paper::test
