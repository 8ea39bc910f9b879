#pragma once
// Runs a built program the way a user would from a shell, for tests of whole commands: a
// temporary folder, file helpers, and a child process whose output and exit code are captured.
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <system_error>
#include <vector>

namespace tv::test_support {

// A fresh folder under the system's temporary folder, removed with everything in it.
class TempDir {
 public:
  explicit TempDir(const std::string& prefix = "tv_test") {
    std::string pattern = (std::filesystem::temp_directory_path() / (prefix + "_XXXXXX")).string();
    if (mkdtemp(pattern.data())) path_ = pattern;
  }
  ~TempDir() {
    std::error_code ec;
    if (!path_.empty()) std::filesystem::remove_all(path_, ec);
  }
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;
  const std::filesystem::path& path() const { return path_; }
  std::filesystem::path operator/(const std::string& name) const { return path_ / name; }

 private:
  std::filesystem::path path_;
};

inline std::string ReadFile(const std::filesystem::path& p) {
  std::ifstream in(p, std::ios::binary);
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}

inline void WriteFile(const std::filesystem::path& p, const std::string& bytes) {
  std::ofstream out(p, std::ios::binary);
  out << bytes;
}

// A file holding `bytes`, alone in a temporary folder of its own and removed with it.
class TempFile {
 public:
  explicit TempFile(const std::string& bytes, const std::string& name = "drawing.dxf") : path_((dir_ / name).string()) {
    WriteFile(path_, bytes);
  }
  const std::string& path() const { return path_; }

 private:
  TempDir dir_{"tv_file"};
  std::string path_;
};

inline bool Has(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

// The names of a folder's entries, sorted.
inline std::vector<std::string> FilesIn(const std::filesystem::path& folder) {
  std::vector<std::string> names;
  std::error_code ec;
  for (const auto& e : std::filesystem::directory_iterator(folder, ec)) names.push_back(e.path().filename().string());
  std::sort(names.begin(), names.end());
  return names;
}

struct RunResult {
  int exitCode = -1;  // 128 + signal when the program was killed; -1 when it could not be waited for
  std::string out, err;
};

// A program started and not yet waited for; its output goes to files of its own folder.
struct StartedProgram {
  pid_t pid = -1;
  std::unique_ptr<TempDir> capture;
  bool ended = false;  // waited for already
  int status = 0;      // its wait status once ended
};

// Starts `program` with `args` and `input` on its standard input, and returns at once. Output goes
// to files in a folder of their own, so the folders the program works in see nothing new. The
// program gets a home folder of its own and no display, so settings land in that folder and no
// desktop is found. A `home` given is used instead, so that runs can share the user's settings.
inline StartedProgram StartProgram(const std::string& program, const std::vector<std::string>& args,
                                   const std::string& input = {}, const std::string& givenHome = {}) {
  StartedProgram started;
  started.capture = std::make_unique<TempDir>("tv_run_capture");
  const TempDir& capture = *started.capture;
  const std::string outPath = (capture / "out").string(), errPath = (capture / "err").string();
  const std::string inPath = (capture / "in").string();
  const std::string home = givenHome.empty() ? (capture / "home").string() : givenHome;
  // The child's strings are built before the fork.
  const std::string data = home + "/.local/share", config = home + "/.config", cache = home + "/.cache";
  WriteFile(inPath, input);
  std::error_code ec;
  std::filesystem::create_directories(home, ec);
  std::vector<std::string> storage{program};
  storage.insert(storage.end(), args.begin(), args.end());
  std::vector<char*> argv;
  for (auto& a : storage) argv.push_back(a.data());
  argv.push_back(nullptr);

  const pid_t pid = fork();
  if (pid < 0) return started;
  if (pid == 0) {
    const int in = open(inPath.c_str(), O_RDONLY);
    const int out = open(outPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    const int err = open(errPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    if (in < 0 || out < 0 || err < 0 || dup2(in, STDIN_FILENO) < 0 || dup2(out, STDOUT_FILENO) < 0 ||
        dup2(err, STDERR_FILENO) < 0)
      _exit(126);
    setenv("HOME", home.c_str(), 1);
    setenv("XDG_DATA_HOME", data.c_str(), 1);
    setenv("XDG_CONFIG_HOME", config.c_str(), 1);
    setenv("XDG_CACHE_HOME", cache.c_str(), 1);
    unsetenv("DISPLAY");
    unsetenv("WAYLAND_DISPLAY");
    execv(argv[0], argv.data());
    _exit(127);
  }
  started.pid = pid;
  return started;
}

// What the started program has written to its standard error so far.
inline std::string ErrorsSoFar(const StartedProgram& started) {
  return started.capture ? ReadFile(*started.capture / "err") : std::string();
}

// True while the started program runs.
inline bool StillRunning(StartedProgram& started) {
  if (started.pid <= 0 || started.ended) return false;
  const pid_t done = waitpid(started.pid, &started.status, WNOHANG);
  if (done == started.pid) started.ended = true;
  return done == 0;
}

// Waits for the started program and collects what it wrote.
inline RunResult WaitProgram(StartedProgram& started) {
  RunResult r;
  if (started.pid <= 0) return r;
  if (!started.ended && waitpid(started.pid, &started.status, 0) != started.pid) return r;
  started.ended = true;
  const int status = started.status;
  r.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + (WIFSIGNALED(status) ? WTERMSIG(status) : 0);
  r.out = ReadFile(*started.capture / "out");
  r.err = ReadFile(*started.capture / "err");
  return r;
}

// Runs `program` to its end; see StartProgram.
inline RunResult RunProgram(const std::string& program, const std::vector<std::string>& args, const std::string& input = {},
                            const std::string& givenHome = {}) {
  StartedProgram started = StartProgram(program, args, input, givenHome);
  return WaitProgram(started);
}

#ifdef TV_TVPLOT_PATH
// The tvplot built with the tests.
inline RunResult RunTvplot(const std::vector<std::string>& args, const std::string& input = {}) {
  return RunProgram(TV_TVPLOT_PATH, args, input);
}
#endif

}  // namespace tv::test_support
