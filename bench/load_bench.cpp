// Load speed and peak memory of the DXF reader.
//
// BM_LoadBigDxf reads a ~1M-entity ASCII drawing (the sample builder's big plan, written by our
// writer and cached in the temp folder between runs; delete it to regenerate). BM_LoadTextDxf
// reads a drawing of annotation: TEXT, MTEXT of several lines and inserts of a block with six
// attributes, about 60 MB. Counters:
//   bytes_per_second  reading speed, per CPU second
//   peak_MB           growth of the resident set while one load runs (measured in a child process,
//                     before the first load in this one)
//   peak_over_file    peak_MB / file size
// Run with --benchmark_filter=Load.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <malloc.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <string>

#include "cad/dxf_reader.h"
#include "cad/dxf_writer.h"
#include "examples/sample_drawing.h"
#include "examples/sample_kit.h"

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kBigEntities = 1'000'000;
// Part of the cached file's name: raise it when the big drawing or the writer's output changes.
constexpr int kBigFileRevision = 1;

constexpr std::size_t kTextEntities = 60'000;
constexpr int kTextFileRevision = 1;

fs::path BigFilePath() {
  return fs::temp_directory_path() / "tarvex-bench" /
         ("big-" + std::to_string(kBigEntities) + "-r" + std::to_string(kBigFileRevision) + ".dxf");
}

fs::path TextFilePath() {
  return fs::temp_directory_path() / "tarvex-bench" /
         ("annotation-" + std::to_string(kTextEntities) + "-r" + std::to_string(kTextFileRevision) + ".dxf");
}

// Room labels (TEXT), notes (MTEXT with line breaks and formatting) and tag inserts with six
// attributes each, a third each, on a grid of 100 columns.
tv::cad::Database BuildAnnotation(std::size_t count) {
  using namespace tv::cad;
  using namespace tv::samples::kit;
  Database db = Database::createDefault();
  const ObjectId layer = AddLayer(db, "标注", 3).id;
  TextStyle& hz = db.addTextStyle("HZ");
  hz.fontFile = "gbenor.shx";
  hz.bigFontFile = "gbcbig.shx";
  const ObjectId style = hz.id;
  static constexpr const char* kTags[] = {"编号", "名称", "面积", "用途", "楼层", "备注"};
  BlockRecord& tag = db.addBlock("ROOMTAG6");
  AddCircle(db, tag, {0, 0}, 400, {});
  for (std::size_t i = 0; i < std::size(kTags); ++i) {
    auto def = std::make_unique<AttDef>();
    def->tag = kTags[i];
    def->prompt = std::string(kTags[i]) + "？";
    def->text = "-";
    def->height = 150;
    def->position = {-350, 250 - 100.0 * static_cast<double>(i), 0};
    def->style = style;
    db.append(tag, std::move(def));
  }
  tag.blockFlags |= BlockRecord::kHasAttributes;
  BlockRecord& ms = *db.modelSpace();
  for (std::size_t i = 0; i < count; ++i) {
    const Point2d at{static_cast<double>(i % 100) * 5000.0, static_cast<double>(i / 100) * 3000.0};
    const std::string n = std::to_string(i);
    switch (i % 3) {
      case 0: AddText(db, ms, "会议室 " + n, at, layer, style, {.height = 350}); break;
      case 1:
        AddMText(db, ms, "{\\fSimSun|b1;说明：}\\P1. 图中尺寸以毫米计，标高以米计。\\P2. 做法见 " + n + " 号详图。",
                 at, 250, 4000, layer, style);
        break;
      default:
        AddInsert(db, ms, tag, at, 1, layer,
                  {{"编号", "R" + n}, {"名称", "办公室"}, {"面积", "36.5㎡"}, {"用途", "办公"}, {"楼层", "3F"}, {"备注", "无"}});
        break;
    }
  }
  return db;
}

// Runs `f` in a child process and returns the double it produced, or nullopt when the child
// failed. Work done there never touches this process's heap or its resident set high-water mark.
template <class F>
std::optional<double> InChild(F f) {
  int fds[2];
  if (pipe(fds) != 0) return std::nullopt;
  pid_t pid = fork();
  if (pid < 0) {
    close(fds[0]);
    close(fds[1]);
    return std::nullopt;
  }
  if (pid == 0) {
    close(fds[0]);
    double value = f();
    ssize_t n = write(fds[1], &value, sizeof value);
    _exit(n == static_cast<ssize_t>(sizeof value) ? 0 : 1);
  }
  close(fds[1]);
  double value = 0;
  ssize_t n = read(fds[0], &value, sizeof value);
  close(fds[0]);
  int status = 0;
  waitpid(pid, &status, 0);
  if (n != static_cast<ssize_t>(sizeof value) || !WIFEXITED(status) || WEXITSTATUS(status) != 0) return std::nullopt;
  return value;
}

template <class Build>
bool EnsureFile(const fs::path& path, std::size_t entities, Build build) {
  std::error_code ec;
  if (fs::exists(path, ec) && fs::file_size(path, ec) > 0) return true;
  fs::create_directories(path.parent_path(), ec);
  std::fprintf(stderr, "writing %s (%zu entities) …\n", path.c_str(), entities);
  // WriteDxf renames a finished temporary file into place, so an interrupted run leaves no
  // half-written cache behind.
  auto ok = InChild([&] {
    tv::cad::Status st = tv::cad::WriteDxf(build(entities), path.string());
    if (!st) std::fprintf(stderr, "%s\n", st.message.c_str());
    return st.ok ? 1.0 : 0.0;
  });
  return ok && *ok == 1.0;
}

// A "Vm…:" figure of /proc/self/status in kB, or -1.
long StatusKb(const char* field) {
  std::ifstream in("/proc/self/status");
  std::string line;
  std::size_t len = std::strlen(field);
  while (std::getline(in, line))
    if (line.compare(0, len, field) == 0) return std::stol(line.substr(len));
  return -1;
}

// Growth of the resident set while one load runs, in MB; measured in a child whose freed heap
// was handed back first and whose high-water mark was reset to its current size.
std::optional<double> PeakLoadMb(const std::string& path) {
  return InChild([&] {
    malloc_trim(0);
    {
      std::ofstream clear("/proc/self/clear_refs");
      clear << "5";  // resets VmHWM to VmRSS (Linux 4.0 and later)
    }
    long base = StatusKb("VmRSS:");
    tv::cad::DxfReadResult r = tv::cad::ReadDxf(path);
    long peak = StatusKb("VmHWM:");
    if (!r.ok() || base < 0 || peak < 0) return -1.0;
    return static_cast<double>(peak - base) / 1024.0;
  });
}

bool EnsureLoadFiles() {
  return EnsureFile(BigFilePath(), kBigEntities, tv::samples::BuildBigDrawing) &&
         EnsureFile(TextFilePath(), kTextEntities, BuildAnnotation);
}

// The peak of each file, taken before any drawing is loaded in this process: memory a freed
// drawing left with the process could serve a child forked later and hide part of its peak.
std::optional<double> FirstPeakLoadMb(const fs::path& path) {
  static const std::map<fs::path, std::optional<double>> peaks = [] {
    std::map<fs::path, std::optional<double>> m;
    for (const fs::path& p : {BigFilePath(), TextFilePath()}) m[p] = PeakLoadMb(p.string());
    return m;
  }();
  auto it = peaks.find(path);
  return it == peaks.end() ? std::nullopt : it->second;
}

void LoadFile(benchmark::State& state, const fs::path& path) {
  const double fileBytes = static_cast<double>(fs::file_size(path));
  const double fileMb = fileBytes / (1024.0 * 1024.0);
  std::optional<double> peak = FirstPeakLoadMb(path);

  std::size_t entities = 0;
  std::optional<tv::cad::DxfReadResult> loaded;
  for (auto _ : state) {
    loaded = tv::cad::ReadDxf(path.string());
    state.PauseTiming();
    if (!loaded->ok()) {
      state.SkipWithError(loaded->error.c_str());
      state.ResumeTiming();
      break;
    }
    entities = loaded->db->modelSpace() ? loaded->db->modelSpace()->entities.size() : 0;
    loaded.reset();  // freeing the drawing is not part of loading it
    state.ResumeTiming();
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(fileBytes) * static_cast<std::int64_t>(state.iterations()));
  state.counters["file_MB"] = fileMb;
  state.counters["entities"] = static_cast<double>(entities);
  if (peak && *peak >= 0) {
    state.counters["peak_MB"] = *peak;
    state.counters["peak_over_file"] = *peak / fileMb;
  }
}

void BM_LoadBigDxf(benchmark::State& state) {
  if (!EnsureLoadFiles()) {
    state.SkipWithError("could not write the drawings");
    return;
  }
  LoadFile(state, BigFilePath());
}
// The rate is per CPU second of the (single-threaded) load: the file comes from the page cache,
// and wall time on a shared build machine says more about the neighbours than about the reader.
BENCHMARK(BM_LoadBigDxf)->Unit(benchmark::kMillisecond)->Iterations(3);

void BM_LoadTextDxf(benchmark::State& state) {
  if (!EnsureLoadFiles()) {
    state.SkipWithError("could not write the drawings");
    return;
  }
  LoadFile(state, TextFilePath());
}
BENCHMARK(BM_LoadTextDxf)->Unit(benchmark::kMillisecond)->Iterations(3);

// The shipped sample: a small drawing with every kind of record, read from memory.
void BM_LoadSampleDxf(benchmark::State& state) {
  const std::string bytes = tv::cad::WriteDxfToString(tv::samples::BuildSampleDrawing());
  for (auto _ : state) {
    state.PauseTiming();
    std::string copy = bytes;
    state.ResumeTiming();
    tv::cad::DxfReadResult r = tv::cad::ReadDxfFromBytes(std::move(copy), "sample.dxf");
    if (!r.ok()) {
      state.SkipWithError(r.error.c_str());
      break;
    }
    benchmark::DoNotOptimize(r);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(bytes.size()) * static_cast<std::int64_t>(state.iterations()));
}
BENCHMARK(BM_LoadSampleDxf)->Unit(benchmark::kMicrosecond);

}  // namespace
