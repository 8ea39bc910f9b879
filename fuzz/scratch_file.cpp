#include "fuzz/scratch_file.h"

#include <unistd.h>

#include <filesystem>
#include <fstream>

namespace tv::fuzz {

namespace {

// The folder of the process's scratch files, removed when the process ends.
class ScratchFolder {
 public:
  ScratchFolder() {
    std::error_code ec;
    // The process id keeps parallel fuzzing jobs (-jobs=N) apart.
    path_ = std::filesystem::temp_directory_path(ec) / ("tv_fuzz_" + std::to_string(getpid()));
    std::filesystem::create_directories(path_, ec);
  }
  ~ScratchFolder() {
    std::error_code ec;
    std::filesystem::remove_all(path_, ec);
  }
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;
  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

}  // namespace

std::string WriteScratchFile(std::string_view name, std::string_view bytes) {
  static const ScratchFolder folder;
  const std::filesystem::path path = folder.path() / name;
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  out.close();
  return out ? path.string() : std::string();
}

}  // namespace tv::fuzz
