// Every test process gets a home and a data folder of its own before any test runs, so that a
// test which loads the module (and with it writes the configuration, the first-use flags and the
// title-block library) never touches the files of the user running the tests. Tests that need a
// folder of their own still set one in their fixture.
#include <stdlib.h>

#include <filesystem>
#include <string>
#include <system_error>

namespace {

class PrivateHome {
 public:
  PrivateHome() {
    std::error_code ec;
    std::string pattern = (std::filesystem::temp_directory_path(ec) / "tv_tests_home_XXXXXX").string();
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

const PrivateHome g_privateHome;

}  // namespace
