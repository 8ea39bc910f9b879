// make_samples OUTDIR [--big N]: writes the shipped sample drawing set (sample.dxf) into OUTDIR,
// and with --big also big.dxf of about N entities for load benchmarks.
#include <charconv>
#include <cstdio>
#include <filesystem>
#include <string>
#include <string_view>

#include "cad/dxf_writer.h"
#include "examples/sample_drawing.h"

namespace {

int Usage() {
  std::fputs("用法：make_samples 输出文件夹 [--big 实体数]\n", stderr);
  return 1;
}

bool Write(const tv::cad::Database& db, const std::filesystem::path& path) {
  tv::cad::Status st = tv::cad::WriteDxf(db, path.string());
  if (!st) {
    std::fprintf(stderr, "%s\n", st.message.c_str());
    return false;
  }
  std::printf("%s\n", path.string().c_str());
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2 && argc != 4) return Usage();
  std::filesystem::path outDir = argv[1];
  std::size_t bigCount = 0;
  if (argc == 4) {
    std::string_view flag = argv[2], count = argv[3];
    auto r = std::from_chars(count.data(), count.data() + count.size(), bigCount);
    if (flag != "--big" || r.ec != std::errc{} || r.ptr != count.data() + count.size() || bigCount == 0) return Usage();
  }
  std::error_code ec;
  std::filesystem::create_directories(outDir, ec);
  if (ec) {
    std::fprintf(stderr, "无法创建文件夹 %s: %s\n", outDir.string().c_str(), ec.message().c_str());
    return 2;
  }
  if (!Write(tv::samples::BuildSampleDrawing(), outDir / "sample.dxf")) return 2;
  if (bigCount > 0 && !Write(tv::samples::BuildBigDrawing(bigCount), outDir / "big.dxf")) return 2;
  return 0;
}
