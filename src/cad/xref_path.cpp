#include "cad/xref_path.h"

#include <filesystem>
#include <system_error>

#include "cad/names_internal.h"

namespace tv::cad {

namespace fs = std::filesystem;

namespace {

std::string ForwardSlashes(std::string path) {
  for (char& c : path)
    if (c == '\\') c = '/';
  return path;
}

// "D:/x", "//server/share/x": saved on another system, never a path of this one.
bool IsForeignAbsolute(const std::string& path) {
  const bool drive = path.size() >= 2 && path[1] == ':' &&
                     ((path[0] >= 'A' && path[0] <= 'Z') || (path[0] >= 'a' && path[0] <= 'z'));
  return drive || path.starts_with("//");
}

std::string LastComponent(const std::string& path) {
  const auto slash = path.find_last_of('/');
  std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
  if (name.size() >= 2 && name[1] == ':') name.erase(0, 2);  // "D:plan.dxf"
  return name;
}

}  // namespace

std::vector<std::string> XrefCandidates(const std::string& savedPath, const std::string& folder) {
  std::vector<std::string> candidates;
  const std::string path = ForwardSlashes(savedPath);
  if (path.empty() || path.find('\0') != std::string::npos) return candidates;
  const fs::path base = folder.empty() ? fs::path(".") : fs::path(folder);
  if (path.front() == '/' && !path.starts_with("//")) candidates.push_back(path);
  else if (!IsForeignAbsolute(path)) candidates.push_back((base / path).lexically_normal().string());
  const std::string name = LastComponent(path);
  if (!name.empty() && name != "." && name != "..") {
    std::string sibling = (base / name).lexically_normal().string();
    if (candidates.empty() || candidates.front() != sibling) candidates.push_back(std::move(sibling));
  }
  return candidates;
}

bool IsDrawingFileName(const std::string& path) {
  const std::string ext = fs::path(path).extension().string();
  if (!EqualsNoCase(ext, ".dxf") && !EqualsNoCase(ext, ".dwg")) return false;
  std::error_code ec;
  return fs::is_regular_file(path, ec);
}

std::string ResolveXrefPath(const std::string& savedPath, const std::string& folder) {
  for (const std::string& candidate : XrefCandidates(savedPath, folder))
    if (IsDrawingFileName(candidate)) return candidate;
  return {};
}

}  // namespace tv::cad
