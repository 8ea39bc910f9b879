#pragma once
// The timed parts of the batch benchmarks, on a drawing read outside the timing. Each is called
// with the timing paused and returns with it running, so that only the batch itself is measured.
#include <benchmark/benchmark.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <sstream>
#include <string>

#include "bench/frame_set.h"
#include "cad/database.h"
#include "cad/dxf_reader.h"
#include "console/console_editor.h"
#include "console/session.h"
#include "host/module_entry.h"
#include "host/wrappers.h"
#include "plot/output_paths.h"
#include "recognition/sheet_order.h"
#include "recognition/sheet_records.h"
#include "recognition/sheet_traversal.h"
#include "settings/config.h"
#include "settings/plot_setting.h"

namespace tv::bench {

inline std::size_t ModelEntities(const cad::Database& db) {
  std::size_t n = 0;
  db.forEachEntity(*db.modelSpace(), [&](const cad::Entity&) { ++n; });
  return n;
}

// Reads the DXF file at `path` once per iteration, freeing the drawing outside the timing;
// returns the model space's entity count (0 after an error, which the state reports).
inline std::size_t TimeLoad(benchmark::State& state, const std::filesystem::path& path) {
  std::size_t entities = 0;
  for (auto _ : state) {
    std::optional<cad::DxfReadResult> loaded = cad::ReadDxf(path.string());
    state.PauseTiming();
    if (!loaded->ok()) {
      state.SkipWithError(loaded->error.c_str());
      state.ResumeTiming();
      break;
    }
    entities = ModelEntities(*loaded->db);
    loaded.reset();  // freeing the drawing is not part of loading it
    state.ResumeTiming();
  }
  return entities;
}

struct RecognisedSheets {
  std::size_t found = 0, kept = 0;
};

// The generic batch's road over model space in a console session: CollectSpaceIds, ScanSpace,
// FilterSheets, OrderSheets (rows from the top).
inline RecognisedSheets RecogniseModelSpace(benchmark::State& state, cad::Database db, const std::string& fileName) {
  std::ostringstream transcript;
  console::SessionOptions options;
  options.out = &transcript;
  auto session = std::make_unique<console::Session>(std::move(db), fileName, options);
  host::ReadLayerStates();
  auto job = std::make_unique<recognition::SheetJob>();
  state.ResumeTiming();

  ObjectIdArray ids;
  host::CollectSpaceIds(host::ModelSpaceId(), ids);
  recognition::ScanSpace(*job, ids, host::ModelSpaceId());
  recognition::FilterSheets(*job);
  recognition::OrderSheets(*job, 1);

  state.PauseTiming();
  const RecognisedSheets counts{job->allSheets.size(), job->keptSheets.size()};
  job.reset();  // erases the markers while the drawing is still there
  session.reset();
  state.ResumeTiming();
  return counts;
}

// The whole generic batch, as `tvplot plot DRAWING --format F --out OUT` runs it: the command's
// recognition and review list, then one -plot per sheet. Returns the number of files written.
// The benchmark's settings live beside its drawings (XDG_DATA_HOME), never in the user's folder.
// With `mergeTarget` the sheets are joined into that one PDF.
inline std::size_t PlotGenericBatch(benchmark::State& state, cad::Database db, const std::filesystem::path& drawing,
                                    const std::filesystem::path& out, std::int32_t format,
                                    const std::string& mergeTarget = {}) {
  std::error_code ec;
  std::filesystem::remove_all(out, ec);
  std::filesystem::create_directories(out, ec);
  std::ostringstream transcript;
  console::SessionOptions options;
  options.out = &transcript;
  options.yesNoAnswer = true;
  auto session = std::make_unique<console::Session>(std::move(db), drawing.string(), options);
  host::OnLoad();
  settings::GlobalConfig().open_folder_after = 0;
  settings::GlobalConfig().merge_pdf = mergeTarget.empty() ? 0 : 1;
  settings::GlobalConfig().pdf_open_after_merge = 0;
  settings::PlotSettingRec rec = settings::CurrentPlotSetting();
  rec.format = format;
  rec.path_mode = plot::kPathCustom;
  rec.custom_path = out.string();
  settings::SaveDwgPlotSetting(rec);
  if (mergeTarget.empty()) session->editor().answers().pushFront({"", "1", "", "^C"});
  else session->editor().answers().pushFront({"", "1", "", mergeTarget, "^C"});
  state.ResumeTiming();

  session->runCommandLine("TV_BatchPlot_2");

  state.PauseTiming();
  std::size_t written = 0;
  for (const auto& p : session->editor().plots()) written += p.ok ? 1 : 0;
  host::OnUnload();
  session.reset();
  state.ResumeTiming();
  return written;
}

// The frame set of `frames` sheets, read afresh (untimed) and put through the generic batch in
// each iteration. Returns the number of files the last one wrote.
inline std::size_t PlotFrameSetEachIteration(benchmark::State& state, std::size_t frames, const std::filesystem::path& out,
                                             std::int32_t format, const std::string& mergeTarget = {}) {
  const std::filesystem::path drawing = std::filesystem::temp_directory_path() / "tarvex-bench" / "frames.dxf";
  std::size_t written = 0;
  for (auto _ : state) {
    state.PauseTiming();
    std::optional<cad::Database> db = LoadFrameSet(state, frames);
    if (!db) break;
    written = PlotGenericBatch(state, std::move(*db), drawing, out, format, mergeTarget);
  }
  return written;
}

}  // namespace tv::bench
