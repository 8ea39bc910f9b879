// Tokenizer throughput on a large synthetic R2013 drawing.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "cad/dxf_tokenizer.h"

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kTargetBytes = 100u << 20;

void Append(std::string& s, const char* fmt, auto... args) {
  char buf[256];
  int n = std::snprintf(buf, sizeof buf, fmt, args...);
  s.append(buf, static_cast<std::size_t>(n));
}

void AppendEntity(std::string& s, unsigned i) {
  const unsigned handle = 0x200 + i;
  const double x = (i % 10000) * 12.5 + 0.125, y = (i / 10000) * 7.25 - 3.5;
  const char* layer = (i % 4 == 0) ? "WALL" : (i % 4 == 1) ? "DIM" : (i % 4 == 2) ? "文字" : "0";
  switch (i % 4) {
    case 0:
      Append(s, "  0\nLINE\n  5\n%X\n330\n1F\n100\nAcDbEntity\n  8\n%s\n 62\n     1\n100\nAcDbLine\n", handle,
             layer);
      Append(s, " 10\n%.6f\n 20\n%.6f\n 30\n0.0\n 11\n%.6f\n 21\n%.6f\n 31\n0.0\n", x, y, x + 100.0,
             y + 50.0);
      break;
    case 1:
      Append(s, "  0\nLWPOLYLINE\n  5\n%X\n330\n1F\n100\nAcDbEntity\n  8\n%s\n100\nAcDbPolyline\n", handle,
             layer);
      Append(s, " 90\n        4\n 70\n     1\n 43\n0.0\n");
      for (int k = 0; k < 4; ++k)
        Append(s, " 10\n%.6f\n 20\n%.6f\n", x + (k & 1) * 30.0, y + (k >> 1) * 20.0);
      break;
    case 2:
      Append(s, "  0\nTEXT\n  5\n%X\n330\n1F\n100\nAcDbEntity\n  8\n%s\n100\nAcDbText\n", handle, layer);
      Append(s, " 10\n%.6f\n 20\n%.6f\n 30\n0.0\n 40\n3.5\n  1\n图号 A-%u 第%u张\n  7\nHZ\n100\nAcDbText\n",
             x, y, i, i % 50);
      break;
    default:
      Append(s, "  0\nINSERT\n  5\n%X\n330\n1F\n100\nAcDbEntity\n  8\n%s\n100\nAcDbBlockReference\n", handle,
             layer);
      Append(s, "  2\nDOOR-%u\n 10\n%.6f\n 20\n%.6f\n 30\n0.0\n 41\n1.0\n 42\n1.0\n 50\n%.1f\n", i % 20, x, y,
             (i % 8) * 45.0);
      break;
  }
}

// The drawing is written once per run and removed at exit.
class SyntheticDrawing {
 public:
  SyntheticDrawing() {
    path_ = fs::temp_directory_path() / ("tv_tokenizer_bench_" + std::to_string(::getpid()) + ".dxf");
    std::ofstream out(path_, std::ios::binary);
    std::string chunk =
        "  0\nSECTION\n  2\nHEADER\n  9\n$ACADVER\n  1\nAC1027\n  9\n$DWGCODEPAGE\n  3\nANSI_936\n"
        "  0\nENDSEC\n  0\nSECTION\n  2\nENTITIES\n";
    for (unsigned i = 0; bytes_ + chunk.size() < kTargetBytes; ++i) {
      AppendEntity(chunk, i);
      ++entities_;
      if (chunk.size() > (1u << 20)) {
        out.write(chunk.data(), static_cast<std::streamsize>(chunk.size()));
        bytes_ += chunk.size();
        chunk.clear();
      }
    }
    chunk += "  0\nENDSEC\n  0\nEOF\n";
    out.write(chunk.data(), static_cast<std::streamsize>(chunk.size()));
    bytes_ += chunk.size();
  }
  ~SyntheticDrawing() {
    std::error_code ec;
    fs::remove(path_, ec);
  }
  std::string path() const { return path_.string(); }
  std::size_t bytes() const { return bytes_; }
  std::size_t entities() const { return entities_; }

 private:
  fs::path path_;
  std::size_t bytes_ = 0;
  std::size_t entities_ = 0;
};

const SyntheticDrawing& Drawing() {
  static const SyntheticDrawing drawing;
  return drawing;
}

void BM_TokenizeAsciiDxf(benchmark::State& state) {
  const SyntheticDrawing& drawing = Drawing();
  std::size_t groups = 0;
  for (auto _ : state) {
    tv::cad::DxfTokenizer t(drawing.path());
    tv::cad::DxfGroup g;
    std::int64_t sum = 0;
    groups = 0;
    // Like the reader: the views of one entity are released when the next one starts.
    while (t.next(g)) {
      if (g.code == 0) t.release();
      sum += g.integer + static_cast<std::int64_t>(g.text.size());
      ++groups;
    }
    if (!t.error().empty()) state.SkipWithError(t.error().c_str());
    benchmark::DoNotOptimize(sum);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * drawing.bytes()));
  state.counters["groups"] = static_cast<double>(groups);
  state.counters["entities"] = static_cast<double>(drawing.entities());
}
BENCHMARK(BM_TokenizeAsciiDxf)->Unit(benchmark::kMillisecond)->MinTime(3.0)->UseRealTime();

}  // namespace
