#pragma once
// The frame set of the recognition and plot benchmarks: A1 frames at 1:100 in rows of ten, a third
// each closed polylines, inserts of one frame block and four loose lines, 2000 entities of content
// in each. Written once per size to the temp folder and kept between runs; delete it to regenerate.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <filesystem>
#include <optional>
#include <string>

#include "cad/dxf_reader.h"
#include "cad/dxf_writer.h"
#include "examples/sample_drawing.h"

namespace tv::bench {

namespace fs = std::filesystem;

constexpr std::size_t kContentPerFrame = 2000;
// Part of the cached file's name: raise it when the frame set or the writer's output changes.
constexpr int kFrameFileRevision = 1;

inline fs::path FrameFilePath(std::size_t frames) {
  return fs::temp_directory_path() / "tarvex-bench" /
         ("frames-" + std::to_string(frames) + "x" + std::to_string(kContentPerFrame) + "-r" +
          std::to_string(kFrameFileRevision) + ".dxf");
}

inline bool EnsureFrameFile(std::size_t frames, const fs::path& path) {
  std::error_code ec;
  if (fs::exists(path, ec) && fs::file_size(path, ec) > 0) return true;
  fs::create_directories(path.parent_path(), ec);
  std::fprintf(stderr, "writing %s (%zu frames) …\n", path.c_str(), frames);
  // WriteDxf renames a finished temporary file into place: an interrupted run leaves no cache.
  tv::cad::Status st = tv::cad::WriteDxf(tv::samples::BuildFrameSet(frames, kContentPerFrame), path.string());
  if (!st) std::fprintf(stderr, "%s\n", st.message.c_str());
  return st.ok;
}

inline std::optional<tv::cad::Database> LoadFrameSet(benchmark::State& state, std::size_t frames) {
  const fs::path path = FrameFilePath(frames);
  if (!EnsureFrameFile(frames, path)) {
    state.SkipWithError("could not write the frame set");
    return std::nullopt;
  }
  tv::cad::DxfReadResult r = tv::cad::ReadDxf(path.string());
  if (!r.ok()) {
    state.SkipWithError(r.error.c_str());
    return std::nullopt;
  }
  return std::move(r.db);
}

}  // namespace tv::bench
