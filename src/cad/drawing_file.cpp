#include "cad/drawing_file.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <vector>

extern char** environ;

namespace tv::cad {

namespace fs = std::filesystem;

namespace {

std::string FindOnPath(std::string_view program) {
  const char* path = std::getenv("PATH");
  if (!path) return {};
  std::string_view rest(path);
  while (!rest.empty()) {
    auto colon = rest.find(':');
    std::string_view dir = rest.substr(0, colon);
    rest = colon == std::string_view::npos ? std::string_view{} : rest.substr(colon + 1);
    if (dir.empty()) continue;
    fs::path candidate = fs::path(dir) / program;
    if (::access(candidate.c_str(), X_OK) == 0) return candidate.string();
  }
  return {};
}

// Runs a program without a shell, so that no file name is ever interpreted.
int RunProgram(const std::vector<std::string>& args) {
  std::vector<char*> argv;
  for (const auto& a : args) argv.push_back(const_cast<char*>(a.c_str()));
  argv.push_back(nullptr);
  pid_t pid = 0;
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
  int rc = posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (rc != 0) return -1;
  int status = 0;
  if (waitpid(pid, &status, 0) < 0) return -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

struct TempFolder {
  fs::path path;
  TempFolder() {
    std::string pattern = (fs::temp_directory_path() / "tvplot-dwg-XXXXXX").string();
    if (char* made = ::mkdtemp(pattern.data())) path = made;
  }
  ~TempFolder() {
    std::error_code ec;
    if (!path.empty()) fs::remove_all(path, ec);
  }
};

}  // namespace

bool LooksLikeDwg(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  char magic[6] = {};
  if (!in.read(magic, sizeof magic)) return false;
  return std::string_view(magic, 4) == "AC10" || std::string_view(magic, 4) == "AC20";
}

DxfReadResult ReadDrawing(const std::string& path, const DxfReadOptions& options) {
  std::error_code ec;
  if (!fs::is_regular_file(path, ec) || !LooksLikeDwg(path)) return ReadDxf(path, options);

  DxfReadResult result;
  std::string converter = FindOnPath("dwg2dxf");
  if (converter.empty()) {
    result.error = "图纸文件 " + path + " 是 DWG 格式，需要先转换为 DXF：本机未安装 DWG 转换程序 dwg2dxf";
    return result;
  }
  TempFolder temp;
  if (temp.path.empty()) {
    result.error = "无法创建临时文件夹，DWG 文件 " + path + " 未能转换";
    return result;
  }
  fs::path out = temp.path / "drawing.dxf";
  int rc = RunProgram({converter, "-y", "-o", out.string(), fs::absolute(path).string()});
  if (!fs::exists(out, ec)) {
    result.error = "DWG 文件 " + path + " 转换失败（dwg2dxf 返回 " + std::to_string(rc) + "）";
    return result;
  }
  result = ReadDxf(out.string(), options);
  if (!result.ok()) {
    // Name the user's file, not the temporary one.
    std::string tmp = out.string();
    for (auto pos = result.error.find(tmp); pos != std::string::npos; pos = result.error.find(tmp))
      result.error.replace(pos, tmp.size(), path);
  }
  return result;
}

}  // namespace tv::cad
