#pragma once
// A home and a data folder of the process's own, removed again at its end, so that a run which
// loads the module (and with it writes the configuration, the first-use flags and the title-block
// library) never touches the files of the user running it.
#include <stdlib.h>

#include <filesystem>
#include <string>
#include <system_error>

namespace tv::test_support {

class PrivateHome {
 public:
  // `prefix` names the temporary folder, e.g. "tv_tests_home".
  explicit PrivateHome(const std::string& prefix) {
    std::error_code ec;
    std::string pattern = (std::filesystem::temp_directory_path(ec) / (prefix + "_XXXXXX")).string();
    if (!mkdtemp(pattern.data())) return;
    root_ = pattern;
    const std::string home = root_ + "/home", data = home + "/.local/share";
    std::filesystem::create_directories(data, ec);
    setenv("HOME", home.c_str(), 1);
    setenv("XDG_DATA_HOME", data.c_str(), 1);
  }
  ~PrivateHome() {
    std::error_code ec;
    if (!root_.empty()) std::filesystem::remove_all(root_, ec);
  }
  PrivateHome(const PrivateHome&) = delete;
  PrivateHome& operator=(const PrivateHome&) = delete;

 private:
  std::string root_;
};

}  // namespace tv::test_support
