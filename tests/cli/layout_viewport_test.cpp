// The layout's own viewport, whichever way the writer marked it: plotted to PNG, a layout shows
// model space only inside its floating viewport, and `tvplot info` counts only that one.
#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "cad/database.h"
#include "tests/render/plot_test_support.h"
#include "tests/support/tvplot_test.h"

namespace tv::console {
namespace {

namespace fs = std::filesystem;

using test_support::FilesIn;
using test_support::ReadFile;
using test_support::RunResult;
using test_support::WriteFile;

using LayoutViewportTest = test_support::TvplotTest;

// The floating viewport: 100 x 60 on the sheet around (148.5, 105), showing model space around
// the origin at 1:1.
constexpr double kVpLeft = 98.5, kVpRight = 198.5, kVpBottom = 75, kVpTop = 135;

std::unique_ptr<cad::Viewport> MakeViewport(cad::Point3d centre, double w, double h, cad::Point2d viewCentre,
                                            std::int16_t number) {
  auto vp = std::make_unique<cad::Viewport>();
  vp->center = centre;
  vp->width = w;
  vp->height = h;
  vp->viewCenter = viewCentre;
  vp->viewHeight = h;
  vp->status = 1;
  vp->number = number;
  return vp;
}

struct Marking {
  const char* name;
  bool numbers;         // group 69 written
  bool ownNamedSecond;  // the layout names its own viewport, which comes after the floating one
};

// Model space: lines every 5 units over -1000..1000 both ways. Layout1: an A4 frame across
// 0..297 x 0..210, its own viewport over the whole sheet and a floating one.
cad::Database Drawing(const Marking& m) {
  cad::Database db = cad::Database::createDefault();
  for (double t = -1000; t <= 1000; t += 5) {
    db.append(*db.modelSpace(), test_support::MakeLine({-1000, t, 0}, {1000, t, 0}));
    db.append(*db.modelSpace(), test_support::MakeLine({t, -1000, 0}, {t, 1000, 0}));
  }
  cad::Layout* layout = db.findLayout("Layout1");
  cad::BlockRecord& paper = *db.blockOf(*layout);
  db.append(paper, test_support::MakeLwPolyline({{0, 0}, {297, 0}, {297, 210}, {0, 210}}, true));
  auto own = MakeViewport({148.5, 105, 0}, 400, 300, {148.5, 105}, 1);
  auto floating = MakeViewport({148.5, 105, 0}, kVpRight - kVpLeft, kVpTop - kVpBottom, {0, 0}, 2);
  if (m.ownNamedSecond) {
    db.append(paper, std::move(floating));
    layout->lastActiveViewport = db.append(paper, std::move(own)).id;
  } else {
    db.append(paper, std::move(own));
    db.append(paper, std::move(floating));
  }
  return db;
}

// The DXF text without the viewports' group 69, as some writers leave it.
std::string WithoutViewportNumbers(const std::string& dxf) {
  std::istringstream in(dxf);
  std::vector<std::string> lines;
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  std::string out;
  bool inViewport = false;
  for (std::size_t i = 0; i + 1 < lines.size(); i += 2) {
    const std::string code = lines[i].substr(lines[i].find_first_not_of(' '));
    if (code == "0" || code == "0\r") inViewport = lines[i + 1].rfind("VIEWPORT", 0) == 0;
    if (inViewport && (code == "69" || code == "69\r")) continue;
    out += lines[i] + "\n" + lines[i + 1] + "\n";
  }
  return out;
}

TEST_F(LayoutViewportTest, ModelSpaceShowsOnlyInsideTheFloatingViewport) {
  for (const Marking& m : {Marking{"numbered", true, false}, Marking{"unnumbered", false, false},
                           Marking{"unnumbered, named by the layout", false, true}}) {
    SCOPED_TRACE(m.name);
    const fs::path drawing = Write(std::string(m.name) + "/plan.dxf", Drawing(m));
    if (!m.numbers) {
      const std::string text = ReadFile(drawing);
      const std::string stripped = WithoutViewportNumbers(text);
      ASSERT_LT(stripped.size(), text.size());
      WriteFile(drawing, stripped);
    }

    const RunResult info = Run({"info", drawing.string(), "--json"});
    ASSERT_EQ(info.exitCode, 0) << info.err;
    EXPECT_NE(info.out.find("\"viewports\": 1"), std::string::npos) << info.out;

    const fs::path out = drawing.parent_path() / "png";
    const RunResult r = Run(
        {"plot", drawing.string(), "--range", "layouts", "--format", "png", "--out", out.string(), "--margin", "0"});
    ASSERT_EQ(r.exitCode, 0) << r.err << r.out;
    ASSERT_EQ(FilesIn(out), std::vector<std::string>{"plan01.png"});
    const render::test::Picture pic((out / "plan01.png").string());
    ASSERT_TRUE(pic.ok());
    // One paper millimetre is `k` pixels; the sheet is A4 across.
    const double k = pic.width() / 297.0;
    ASSERT_NEAR(pic.height() / k, 210, 1);
    const render::Rgb white{255, 255, 255};
    const auto px = [&](double x) { return static_cast<int>(x * k); };
    const auto py = [&](double y) { return static_cast<int>((210 - y) * k); };
    // Inside the floating viewport the grid shows; between it and the frame nothing does.
    EXPECT_GT(pic.countNot(white, px(kVpLeft + 2), py(kVpTop - 2), px(kVpRight - 2), py(kVpBottom + 2)), 100);
    const int edge = px(3), gap = px(2);
    int outside = pic.countNot(white, edge, edge, pic.width() - edge, py(kVpTop) - gap);     // above
    outside += pic.countNot(white, edge, py(kVpBottom) + gap, pic.width() - edge, pic.height() - edge);  // below
    outside += pic.countNot(white, edge, py(kVpTop), px(kVpLeft) - gap, py(kVpBottom));     // left
    outside += pic.countNot(white, px(kVpRight) + gap, py(kVpTop), pic.width() - edge, py(kVpBottom));  // right
    EXPECT_EQ(outside, 0);
  }
}

}  // namespace
}  // namespace tv::console
