#include "plot/pdf_rotation.h"

#include <filesystem>
#include <system_error>

#include "host/pdf_files.h"

namespace tv::plot {

namespace {
// Below this no PDF can hold a page: such a file is left alone.
constexpr std::uintmax_t kSmallestPageFile = 20;
}  // namespace

bool RotatePdf(const std::string& path, int angle) {
  std::error_code ec;
  const std::uintmax_t size = std::filesystem::file_size(path, ec);
  if (ec || size <= kSmallestPageFile) return false;
  // The page is turned through the file's structure rather than by patching bytes: the box may
  // be inherited or sit in a compressed object stream, and the cross-reference table stays right.
  return host::SetFirstPageRotation(path, angle == 90 ? 90 : 270);
}

}  // namespace tv::plot
