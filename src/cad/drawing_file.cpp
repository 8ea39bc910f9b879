#include "cad/drawing_file.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string_view>

#include "cad/dwg_converter.h"

namespace tv::cad {

namespace fs = std::filesystem;

namespace {

// A private folder under the temporary folder, removed with all in it whatever happens.
struct TempFolder {
  fs::path path;
  TempFolder() {
    std::error_code ec;
    fs::path base = fs::temp_directory_path(ec);
    if (ec) return;
    std::string pattern = (base / "tvplot-dwg-XXXXXX").string();
    if (char* made = ::mkdtemp(pattern.data())) path = made;
  }
  ~TempFolder() {
    std::error_code ec;
    if (!path.empty()) fs::remove_all(path, ec);
  }
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;
};

// The first six bytes: "AC1032" and the like.
std::string MagicOf(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  char magic[6] = {};
  if (!in.read(magic, sizeof magic)) return {};
  return std::string(magic, sizeof magic);
}

void ReplaceAll(std::string& text, const std::string& from, const std::string& to) {
  if (from.empty()) return;
  for (auto pos = text.find(from); pos != std::string::npos; pos = text.find(from, pos + to.size()))
    text.replace(pos, from.size(), to);
}

}  // namespace

bool LooksLikeDwg(const std::string& path) {
  const std::string magic = MagicOf(path);
  return magic.size() == 6 && (std::string_view(magic).substr(0, 4) == "AC10" || std::string_view(magic).substr(0, 4) == "AC20");
}

DxfReadResult ReadDrawing(const std::string& path, const DxfReadOptions& options) {
  std::error_code ec;
  if (!fs::is_regular_file(path, ec) || !LooksLikeDwg(path)) return ReadDxf(path, options);

  DxfReadResult result;
  const std::string node = FindNode(), bridge = FindDwgBridge();
  if (node.empty() || bridge.empty()) {
    result.error = "图纸文件 " + path + " 是 DWG 格式，需要先转换为 DXF：本机未安装 DWG 转换程序（" +
                   std::string(node.empty() ? "node" : "LibreDWG 转换脚本") + "），请运行 scripts/setup.sh 安装";
    return result;
  }
  TempFolder temp;
  if (temp.path.empty()) {
    result.error = "无法创建临时文件夹，DWG 文件 " + path + " 未能转换";
    return result;
  }
  const fs::path absolute = fs::absolute(path, ec);
  DwgConversion converted = ConvertDwg(node, bridge, ec ? fs::path(path) : absolute, temp.path, DwgConverterLimits());
  if (converted.dxf.empty()) {
    result.error = "DWG 文件 " + path + " 转换失败：" + converted.failure;
    return result;
  }
  result = ReadDxf(converted.dxf.string(), options);
  // Name the user's file, not the temporary one.
  const std::string tmp = converted.dxf.string();
  ReplaceAll(result.error, tmp, path);
  for (std::string& w : result.warnings) ReplaceAll(w, tmp, path);
  if (result.ok()) {
    DrawingSource& source = converted.source;
    source.format = "DWG";
    source.version = MagicOf(path);
    source.release = DwgRelease(source.version);
    if (source.converter.empty()) source.converter = "LibreDWG";
    result.source = std::move(source);
  }
  return result;
}

}  // namespace tv::cad
