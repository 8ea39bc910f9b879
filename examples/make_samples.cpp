// make_samples OUTDIR [--big N] [--frames N]: writes the shipped sample drawing set (sample.dxf,
// sample_ucs.dxf, sample_titleblocks.dxf with its library sample_titleblocks.tk,
// the stamp library sample_stamps.tvlib2, the traced signature sample_signature.dxf) into OUTDIR; with --big also big.dxf of about N entities for load benchmarks,
// with --frames also frames.dxf of N frames of 2000 entities each for recognition benchmarks.
#include <charconv>
#include <cstdio>
#include <filesystem>
#include <string>
#include <string_view>

#include "cad/dxf_writer.h"
#include "examples/sample_drawing.h"
#include "examples/sample_library.h"
#include "examples/sample_signature.h"
#include "examples/sample_stamps.h"
#include "titleblock/tk_library.h"

namespace {

constexpr std::size_t kContentPerFrame = 2000;

int Usage() {
  std::fputs("用法：make_samples 输出文件夹 [--big 实体数] [--frames 图框数]\n", stderr);
  return 1;
}

bool ParseCount(std::string_view text, std::size_t& count) {
  auto r = std::from_chars(text.data(), text.data() + text.size(), count);
  return r.ec == std::errc{} && r.ptr == text.data() + text.size() && count > 0;
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

bool WriteLibrary(const tv::titleblock::TK_Library& library, const std::filesystem::path& path) {
  // A file rewritten within the same second would look unchanged to the checked write.
  std::error_code ec;
  std::filesystem::remove(path, ec);
  if (!tv::titleblock::SaveTkFileTo(library, path.string(), false)) {
    std::fprintf(stderr, "无法写入 %s\n", path.string().c_str());
    return false;
  }
  std::printf("%s\n", path.string().c_str());
  return true;
}

bool WriteStamps(const std::filesystem::path& path) {
  tv::signing::StampLibrary library = tv::samples::BuildStampLibrary();
  if (!tv::signing::SaveStampLibrary(library, path.string())) {
    std::fprintf(stderr, "无法写入 %s\n", path.string().c_str());
    return false;
  }
  std::printf("%s\n", path.string().c_str());
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2 || argc % 2 != 0) return Usage();
  const std::string_view first = argv[1];
  if (first == "--help" || first == "-h") {
    Usage();
    return 0;
  }
  // An option where the folder belongs is a slip, never a folder to create.
  if (first.starts_with("-")) return Usage();
  std::filesystem::path outDir = argv[1];
  std::size_t bigCount = 0, frameCount = 0;
  for (int i = 2; i + 1 < argc; i += 2) {
    std::string_view flag = argv[i];
    std::size_t* target = flag == "--big" ? &bigCount : flag == "--frames" ? &frameCount : nullptr;
    if (!target || *target != 0 || !ParseCount(argv[i + 1], *target)) return Usage();
  }
  std::error_code ec;
  std::filesystem::create_directories(outDir, ec);
  if (ec) {
    std::fprintf(stderr, "无法创建文件夹 %s: %s\n", outDir.string().c_str(), ec.message().c_str());
    return 2;
  }
  if (!Write(tv::samples::BuildSampleDrawing(), outDir / "sample.dxf")) return 2;
  if (!Write(tv::samples::BuildUcsDrawing(), outDir / "sample_ucs.dxf")) return 2;
  if (!Write(tv::samples::BuildTitleBlockDrawing(), outDir / "sample_titleblocks.dxf")) return 2;
  if (!WriteLibrary(tv::samples::BuildTitleBlockLibrary(), outDir / "sample_titleblocks.tk")) return 2;
  if (!WriteStamps(outDir / "sample_stamps.tvlib2")) return 2;
  if (!Write(tv::samples::BuildSignatureDrawing(), outDir / "sample_signature.dxf")) return 2;
  if (bigCount > 0 && !Write(tv::samples::BuildBigDrawing(bigCount), outDir / "big.dxf")) return 2;
  if (frameCount > 0 && !Write(tv::samples::BuildFrameSet(frameCount, kContentPerFrame), outDir / "frames.dxf")) return 2;
  return 0;
}
