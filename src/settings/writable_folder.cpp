// The proof that a folder takes files: a folder may look writable and still refuse, so the only
// test is writing to it.
#include <ctime>
#include <filesystem>
#include <fstream>
#include <random>
#include <system_error>

#include "settings/folders.h"

namespace tv::settings {

namespace {
namespace fs = std::filesystem;

// A new number on each run, so that a file another user left behind can't pass for ours.
long long FreshNumber() {
  std::minstd_rand generator(static_cast<std::minstd_rand::result_type>(std::time(nullptr) % 789));
  return generator();
}

bool WriteNumber(const fs::path& file, long long number) {
  std::ofstream out(file, std::ios::out | std::ios::trunc);
  if (!out) return false;
  out << number << '\n';
  out.close();
  return !out.fail();
}

bool HoldsNumber(const fs::path& file, long long number) {
  std::ifstream in(file);
  long long read = 0;
  return in && (in >> read) && read == number;
}

}  // namespace

bool WritableTempFolder(const std::string& root) {
  if (root.empty()) return false;
  const fs::path folder = fs::path(root) / "Tarvex_Temp";
  std::error_code ec;
  fs::create_directory(folder, ec);
  if (!fs::is_directory(folder, ec)) return false;

  const fs::path file = folder / "test.txt";
  const long long number = FreshNumber();
  if (!WriteNumber(file, number) || !HoldsNumber(file, number)) return false;
  fs::remove(file, ec);
  return true;
}

}  // namespace tv::settings
