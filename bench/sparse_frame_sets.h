#pragma once
// Two frame sets whose sheets are found one by one through many small selections, written once per
// size to the temp folder as bench/frame_set.h does; delete them to regenerate.
//
// Bare frames: A1 frames at 1:100 in rows of ten, in turn a closed polyline, four loose lines and a
// double frame (outer and inner polyline), with 2000 entities of content each: texts, circles and
// slanted lines. No rectangle and no axis line lies inside a sheet, so recognition cannot tell a
// sheet from a stray rectangle by its candidates: every sheet takes the empty-sheet fence test.
//
// Title frames: inserts of 标准图框A2 (the sample library's plain frame, no attributes) at 1:100 in
// rows of ten, their drawing number, title and date written over the title block as loose MTEXT
// and TEXT, with 2000 entities of content each, as above.
//
// Many frames: A4 frames at 1:100 in rows of ten, each a closed polyline holding one slanted line
// and one text: the cost of the sheet count itself, with next to no content to look through.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <random>
#include <string>

#include "cad/dxf_reader.h"
#include "cad/dxf_writer.h"
#include "examples/sample_drawing.h"
#include "examples/sample_kit.h"

namespace tv::bench {

namespace fs = std::filesystem;

namespace sparse {

using namespace tv::samples::kit;

constexpr std::size_t kContent = 2000;
// Part of the cached files' names: raise it when the sets or the writer's output change.
constexpr int kRevision = 1;
constexpr std::size_t kPerRow = 10;

struct Style {
  cad::ObjectId frame, content, text, hz;
};

inline Style SetUp(cad::Database& db) {
  db.header.setInt("$INSUNITS", 4);
  Style s;
  s.frame = AddLayer(db, "图框", 7).id;
  s.content = AddLayer(db, "WALL", 2).id;
  s.text = AddLayer(db, "TEXT", 7).id;
  cad::TextStyle& hz = db.addTextStyle("HZ");
  hz.fontFile = "gbenor.shx";
  hz.bigFontFile = "gbcbig.shx";
  hz.widthFactor = 0.7;
  s.hz = hz.id;
  return s;
}

// Texts, circles and slanted lines inside `area`; the same seed gives the same content.
inline void AddContent(cad::Database& db, const Style& s, const Box& area, std::mt19937& rng) {
  std::uniform_real_distribution<double> u(0.0, 1.0);
  static constexpr const char* kWords[] = {"办公室", "会议室", "走廊", "KL1(2) 250×600", "C1", "M1021", "±0.000"};
  const Box inner{{area.min.x + 3000, area.min.y + 3000}, {area.max.x - 8000, area.max.y - 3000}};
  for (std::size_t i = 0; i < kContent; ++i) {
    const cad::Point2d p = inner.at(u(rng), u(rng));
    switch (i % 3) {
      case 0:
        AddText(db, *db.modelSpace(), kWords[i % std::size(kWords)], p, s.text, s.hz, {.height = 250 + 250 * u(rng)});
        break;
      case 1: AddCircle(db, *db.modelSpace(), p, 100 + 900 * u(rng), s.content); break;
      default: {
        // Between 20 and 70 degrees: never along an axis.
        const double angle = (20 + 50 * u(rng)) * 3.14159265358979 / 180 + (i % 2 ? 0 : 3.14159265358979 / 2);
        const double len = 500 + 2500 * u(rng);
        AddLine(db, *db.modelSpace(), p, {p.x + len * std::cos(angle), p.y + len * std::sin(angle)}, s.content);
        break;
      }
    }
  }
}

inline cad::Point2d Tile(std::size_t f, const Sheet& sheet) {
  return {static_cast<double>(f % kPerRow) * (sheet.width + 50) * 100, static_cast<double>(f / kPerRow) * (sheet.height + 50) * 100};
}

inline cad::Database BuildBareFrames(std::size_t frames) {
  cad::Database db = cad::Database::createDefault();
  const Style s = SetUp(db);
  std::mt19937 rng(20240501);
  for (std::size_t f = 0; f < frames; ++f) {
    const cad::Point2d at = Tile(f, kA1);
    const Box box = SheetBox(at, kA1, 100);
    switch (f % 3) {
      case 0: AddRectangle(db, *db.modelSpace(), box.min, box.max, s.frame); break;
      case 1: AddRectangleLines(db, *db.modelSpace(), box.min, box.max, s.frame); break;
      default: DrawBorder(db, *db.modelSpace(), {s.frame, s.text, s.hz}, at, kA1, 100, false); break;
    }
    AddContent(db, s, DrawingArea(at, kA1, 100), rng);
  }
  return db;
}

inline cad::Database BuildTitleFrames(std::size_t frames) {
  cad::Database db = cad::Database::createDefault();
  const Style s = SetUp(db);
  const cad::BlockRecord& a2 = MakePlainFrameBlock(db, {s.frame, s.text, s.hz}, samples::kTitleFrameA2, kA2);
  std::mt19937 rng(20240502);
  constexpr double k = 100;
  for (std::size_t f = 0; f < frames; ++f) {
    const cad::Point2d at = Tile(f, kA2);
    AddInsert(db, *db.modelSpace(), a2, at, k, s.frame);
    const cad::Point2d o{at.x + TitleGridOrigin(kA2).x * k, at.y + TitleGridOrigin(kA2).y * k};
    const auto P = [&](double x, double y) { return cad::Point2d{o.x + x * k, o.y + y * k}; };
    AddMText(db, *db.modelSpace(), "建施\\P-" + std::to_string(f + 1), P(kCellDrawingNo.min.x + 6, kCellDrawingNo.max.y - 1), 3 * k,
             50 * k, s.text, s.hz);
    AddMText(db, *db.modelSpace(), "标准层平面图\\P（" + std::to_string(f + 1) + "）", P(kCellTitle.min.x + 4, kCellTitle.max.y - 1),
             3 * k, 76 * k, s.text, s.hz);
    AddText(db, *db.modelSpace(), "2026.11.25", P(kCellDate.min.x + 8, kCellDate.min.y + 3), s.text, s.hz, {.height = 3.5 * k});
    AddContent(db, s, DrawingArea(at, kA2, k), rng);
  }
  return db;
}

inline cad::Database BuildManyFrames(std::size_t frames) {
  cad::Database db = cad::Database::createDefault();
  const Style s = SetUp(db);
  for (std::size_t f = 0; f < frames; ++f) {
    const cad::Point2d at = Tile(f, kA4);
    const Box box = SheetBox(at, kA4, 100);
    AddRectangle(db, *db.modelSpace(), box.min, box.max, s.frame);
    const Box area = DrawingArea(at, kA4, 100);
    AddLine(db, *db.modelSpace(), area.at(0.2, 0.3), area.at(0.6, 0.7), s.content);
    AddText(db, *db.modelSpace(), "C" + std::to_string(f + 1), area.at(0.5, 0.2), s.text, s.hz, {.height = 350});
  }
  return db;
}

}  // namespace sparse

enum class SparseSet { BareFrames, TitleFrames, ManyFrames };

inline fs::path SparseFilePath(SparseSet set, std::size_t frames) {
  const char* name = set == SparseSet::BareFrames ? "bare-frames-" : set == SparseSet::TitleFrames ? "title-frames-" : "many-frames-";
  return fs::temp_directory_path() / "tarvex-bench" /
         (name + std::to_string(frames) + "x" + std::to_string(sparse::kContent) + "-r" + std::to_string(sparse::kRevision) + ".dxf");
}

inline bool EnsureSparseFile(SparseSet set, std::size_t frames, const fs::path& path) {
  std::error_code ec;
  if (fs::exists(path, ec) && fs::file_size(path, ec) > 0) return true;
  fs::create_directories(path.parent_path(), ec);
  std::fprintf(stderr, "writing %s (%zu frames) …\n", path.c_str(), frames);
  const cad::Database db = set == SparseSet::BareFrames    ? sparse::BuildBareFrames(frames)
                           : set == SparseSet::TitleFrames ? sparse::BuildTitleFrames(frames)
                                                           : sparse::BuildManyFrames(frames);
  const cad::Status st = cad::WriteDxf(db, path.string());
  if (!st) std::fprintf(stderr, "%s\n", st.message.c_str());
  return st.ok;
}

inline std::optional<cad::Database> LoadSparseSet(benchmark::State& state, SparseSet set, std::size_t frames) {
  const fs::path path = SparseFilePath(set, frames);
  if (!EnsureSparseFile(set, frames, path)) {
    state.SkipWithError("could not write the frame set");
    return std::nullopt;
  }
  cad::DxfReadResult r = cad::ReadDxf(path.string());
  if (!r.ok()) {
    state.SkipWithError(r.error.c_str());
    return std::nullopt;
  }
  return std::move(r.db);
}

}  // namespace tv::bench
