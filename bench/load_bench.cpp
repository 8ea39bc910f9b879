// Load speed and peak memory of the DXF reader.
//
// BM_LoadBigDxf reads a ~1M-entity ASCII drawing (the sample builder's big plan, written by our
// writer and cached in the temp folder between runs; delete it to regenerate). Counters:
//   bytes_per_second  reading speed, per CPU second
//   peak_MB           growth of the resident set while one load runs (measured in a child process)
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
#include <optional>
#include <string>

#include "cad/dxf_reader.h"
#include "cad/dxf_writer.h"
#include "examples/sample_drawing.h"

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kBigEntities = 1'000'000;
// Part of the cached file's name: raise it when the big drawing or the writer's output changes.
constexpr int kBigFileRevision = 1;

fs::path BigFilePath() {
  return fs::temp_directory_path() / "tarvex-bench" /
         ("big-" + std::to_string(kBigEntities) + "-r" + std::to_string(kBigFileRevision) + ".dxf");
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

bool EnsureBigFile(const fs::path& path) {
  std::error_code ec;
  if (fs::exists(path, ec) && fs::file_size(path, ec) > 0) return true;
  fs::create_directories(path.parent_path(), ec);
  std::fprintf(stderr, "writing %s (%zu entities) …\n", path.c_str(), kBigEntities);
  // WriteDxf renames a finished temporary file into place, so an interrupted run leaves no
  // half-written cache behind.
  auto ok = InChild([&] {
    tv::cad::Status st = tv::cad::WriteDxf(tv::samples::BuildBigDrawing(kBigEntities), path.string());
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

void BM_LoadBigDxf(benchmark::State& state) {
  const fs::path path = BigFilePath();
  if (!EnsureBigFile(path)) {
    state.SkipWithError("could not write the big drawing");
    return;
  }
  const double fileBytes = static_cast<double>(fs::file_size(path));
  const double fileMb = fileBytes / (1024.0 * 1024.0);

  // Before any load in this process, so the child starts from a small heap.
  std::optional<double> peak = PeakLoadMb(path.string());

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
// The rate is per CPU second of the (single-threaded) load: the file comes from the page cache,
// and wall time on a shared build machine says more about the neighbours than about the reader.
BENCHMARK(BM_LoadBigDxf)->Unit(benchmark::kMillisecond)->Iterations(3);

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
