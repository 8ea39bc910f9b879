// Opening a sheet set assembled from external references, as offices keep them: 20 layouts that
// each place the same frame xref and the same plan xref. Each referenced file is read once
// however many layouts place it; the figure to compare is the same set with the frame and the
// plan bound into the drawing as blocks.
//   BM_XrefSheetSet   read the set and load its xrefs; counters files_read (per load) and
//                     entities (copied from the xrefs)
//   BM_BoundSheetSet  read the same set with the blocks bound
// The files are written once per run into a folder of the temp folder and removed at exit.
// Run with --benchmark_filter=SheetSet.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "cad/drawing_file.h"
#include "cad/dxf_writer.h"
#include "cad/xref_load.h"
#include "examples/sample_kit.h"

namespace {

namespace fs = std::filesystem;
using namespace tv::cad;
namespace kit = tv::samples::kit;

constexpr int kLayouts = 20;
constexpr int kPlanBays = 60;  // the plan's grid is kPlanBays square: walls, axes and a label per bay

void DrawFrameInto(Database& db, BlockRecord& block) {
  kit::FrameStyle style;
  style.frameLayer = kit::AddLayer(db, "图框", 4).id;
  style.textLayer = kit::AddLayer(db, "文字", 3).id;
  style.textStyle = db.addTextStyle("HZ").id;
  kit::DrawFrame(db, block, style, {0, 0}, kit::kA1, 1, false, {"建施-01", "平面图", "1:100", "2026.11"});
}

void DrawPlanInto(Database& db, BlockRecord& block) {
  const ObjectId wall = kit::AddLayer(db, "墙", 2).id, axis = kit::AddLayer(db, "轴线", 1, "Continuous").id;
  const ObjectId style = db.addTextStyle("HZ").id;
  for (int i = 0; i < kPlanBays; ++i)
    for (int j = 0; j < kPlanBays; ++j) {
      const kit::Box bay{{i * 1000.0, j * 1000.0}, {i * 1000.0 + 900, j * 1000.0 + 900}};
      kit::AddRectangle(db, block, bay.min, bay.max, wall);
      kit::AddLine(db, block, bay.min, bay.max, axis);
      kit::AddText(db, block, "房间" + std::to_string(i * kPlanBays + j), bay.at(0.2, 0.5), wall, style);
    }
}

// Places `frame` and `plan` on kLayouts layouts.
void PlaceOnLayouts(Database& db, const BlockRecord& frame, const BlockRecord& plan) {
  for (int n = 1; n <= kLayouts; ++n) {
    BlockRecord& space = *db.blockOf(db.addLayout("图" + std::to_string(n)));
    auto place = [&](const BlockRecord& block, Point3d at, double scale) {
      auto insert = std::make_unique<Insert>();
      insert->block = block.id;
      insert->position = at;
      insert->scale = {scale, scale, scale};
      db.append(space, std::move(insert));
    };
    place(frame, {}, 1);
    place(plan, {50, 50, 0}, 0.01);
  }
}

struct SheetSet {
  fs::path folder;
  std::string withXrefs, bound;
  SheetSet() {
    std::string pattern = (fs::temp_directory_path() / "tarvex-xref-bench-XXXXXX").string();
    if (!::mkdtemp(pattern.data())) return;
    folder = pattern;
    fs::create_directories(folder / "xref");
    Database frame = Database::createDefault(), plan = Database::createDefault();
    DrawFrameInto(frame, *frame.modelSpace());
    DrawPlanInto(plan, *plan.modelSpace());
    WriteDxf(frame, (folder / "xref" / "图框A1.dxf").string());
    WriteDxf(plan, (folder / "xref" / "平面.dxf").string());

    Database host = Database::createDefault();
    BlockRecord& frameRef = host.addBlock("图框A1");
    frameRef.blockFlags |= BlockRecord::kXref;
    frameRef.xrefPath = "xref\\图框A1.dxf";
    BlockRecord& planRef = host.addBlock("平面");
    planRef.blockFlags |= BlockRecord::kXref;
    planRef.xrefPath = "xref\\平面.dxf";
    PlaceOnLayouts(host, frameRef, planRef);
    withXrefs = (folder / "图纸集.dxf").string();
    WriteDxf(host, withXrefs);

    Database same = Database::createDefault();
    BlockRecord& frameBlock = same.addBlock("图框A1");
    DrawFrameInto(same, frameBlock);
    BlockRecord& planBlock = same.addBlock("平面");
    DrawPlanInto(same, planBlock);
    PlaceOnLayouts(same, frameBlock, planBlock);
    bound = (folder / "图纸集-绑定.dxf").string();
    WriteDxf(same, bound);
  }
  ~SheetSet() {
    std::error_code ec;
    if (!folder.empty()) fs::remove_all(folder, ec);
  }
};

const SheetSet& Set() {
  static SheetSet set;
  return set;
}

void BM_XrefSheetSet(benchmark::State& state) {
  const SheetSet& set = Set();
  std::size_t reads = 0, entities = 0;
  for (auto _ : state) {
    DxfReadResult read = ReadDrawing(set.withXrefs);
    if (!read.ok()) {
      state.SkipWithError(read.error.c_str());
      return;
    }
    const XrefLoadResult xrefs = LoadXrefs(*read.db, set.withXrefs);
    reads = xrefs.fileReads;
    entities = read.db->findBlock("平面")->entities.size() + read.db->findBlock("图框A1")->entities.size();
    benchmark::DoNotOptimize(read.db);
  }
  state.counters["files_read"] = static_cast<double>(reads);
  state.counters["entities"] = static_cast<double>(entities);
}
BENCHMARK(BM_XrefSheetSet)->Unit(benchmark::kMillisecond);

void BM_BoundSheetSet(benchmark::State& state) {
  const SheetSet& set = Set();
  for (auto _ : state) {
    DxfReadResult read = ReadDrawing(set.bound);
    if (!read.ok()) {
      state.SkipWithError(read.error.c_str());
      return;
    }
    benchmark::DoNotOptimize(read.db);
  }
}
BENCHMARK(BM_BoundSheetSet)->Unit(benchmark::kMillisecond);

}  // namespace
