#include "cad/dwg_converter.h"

#include <unistd.h>

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string_view>

namespace tv::cad {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kBridge = "dwg2dxf.mjs";

std::string Env(const char* name) {
  const char* v = std::getenv(name);
  return v ? std::string(v) : std::string();
}

bool IsFile(const fs::path& p) {
  std::error_code ec;
  return fs::is_regular_file(p, ec);
}

// The line of the program's standard error that says why: the last one that is not a stack
// frame or node's version banner, made printable and short.
std::string WhyFromStderr(const std::string& text) {
  std::string why;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (line.empty() || line[0] == ' ' || line[0] == '\t' || line.rfind("Node.js v", 0) == 0) continue;
    why = line;
  }
  for (char& c : why)
    if (static_cast<unsigned char>(c) < 0x20) c = ' ';
  if (why.size() > 200) {
    std::size_t cut = 200;
    while (cut > 0 && (static_cast<unsigned char>(why[cut]) & 0xC0) == 0x80) --cut;  // whole UTF-8 characters
    why = why.substr(0, cut) + "…";
  }
  return why;
}

std::string Said(const std::string& why) { return why.empty() ? std::string() : "：" + why; }

std::string Failure(const ProcessOutcome& run, const ProcessLimits& limits) {
  if (!run.started) return std::string("无法启动 node（") + std::strerror(run.startError) + "）";
  if (run.timedOut) {
    const double seconds = static_cast<double>(limits.time.count()) / 1000.0;
    std::ostringstream s;
    s << "转换程序超过 " << seconds << " 秒仍未完成，已终止";
    return s.str();
  }
  if (run.memoryExceeded)
    return "转换程序占用内存超过 " + std::to_string(limits.residentBytes >> 20) + " MB，已终止";
  const std::string why = WhyFromStderr(run.stderrText);
  if (run.signal) return "转换程序异常终止（信号 " + std::to_string(run.signal) + "）" + Said(why);
  if (run.exitCode == 2) return "转换程序无法读取此文件" + Said(why);
  if (run.exitCode == 3) return "转换程序只写出了部分内容" + Said(why);
  return "转换程序返回 " + std::to_string(run.exitCode) + Said(why);
}

std::vector<std::pair<std::string, std::size_t>> Counts(const nlohmann::json& j) {
  std::vector<std::pair<std::string, std::size_t>> counts;
  if (!j.is_object()) return counts;
  for (const auto& [name, n] : j.items())
    if (n.is_number_unsigned()) counts.emplace_back(name, n.get<std::size_t>());
  return counts;
}

std::size_t Count(const nlohmann::json& j, const char* key) {
  auto it = j.find(key);
  return it != j.end() && it->is_number_unsigned() ? it->get<std::size_t>() : 0;
}

// The bridge's report beside the DXF; a missing or unreadable one leaves the fields empty.
void ReadReport(const fs::path& file, DrawingSource& source) {
  std::ifstream in(file, std::ios::binary);
  if (!in) return;
  const nlohmann::json j = nlohmann::json::parse(in, nullptr, /*allow_exceptions=*/false);
  if (!j.is_object()) return;
  if (auto it = j.find("converter"); it != j.end() && it->is_string()) source.converter = it->get<std::string>();
  if (auto it = j.find("readProblems"); it != j.end() && it->is_array())
    for (const auto& p : *it)
      if (p.is_string()) source.readProblems.push_back(p.get<std::string>());
  if (auto it = j.find("dropped"); it != j.end() && it->is_object()) {
    source.droppedEntities = Counts(it->value("entities", nlohmann::json()));
    source.droppedObjects = Counts(it->value("objects", nlohmann::json()));
  }
  if (auto it = j.find("stubs"); it != j.end()) source.stubs = Counts(*it);
  if (auto it = j.find("layerStatesKnown"); it != j.end() && it->is_boolean()) source.layerStatesKnown = it->get<bool>();
  if (auto it = j.find("repairs"); it != j.end() && it->is_object()) {
    source.layerStatesRepaired = Count(*it, "layerOnOff");
    source.trueColoursDropped = Count(*it, "trueColours");
    source.lineBreaksRepaired = Count(*it, "lineBreaks");
  }
}

}  // namespace

std::string FindDwgBridge() {
  if (std::string given = Env("TVPLOT_DWG_CONVERTER"); !given.empty()) return IsFile(given) ? given : std::string();
  std::error_code ec;
  const fs::path self = fs::read_symlink("/proc/self/exe", ec);
  if (!ec) {
    const fs::path installed = self.parent_path().parent_path() / "share" / "tvplot" / "dwg" / kBridge;
    if (IsFile(installed)) return installed.string();
  }
#ifdef TV_DWG_BRIDGE_DIR
  const fs::path source = fs::path(TV_DWG_BRIDGE_DIR) / kBridge;
  if (IsFile(source)) return source.string();
#endif
  return {};
}

std::string FindNode() {
  const std::string path = Env("PATH");
  std::string_view rest(path);
  while (!rest.empty()) {
    const auto colon = rest.find(':');
    const std::string_view dir = rest.substr(0, colon);
    rest = colon == std::string_view::npos ? std::string_view{} : rest.substr(colon + 1);
    if (dir.empty()) continue;
    const fs::path candidate = fs::path(dir) / "node";
    if (IsFile(candidate) && ::access(candidate.c_str(), X_OK) == 0) return candidate.string();
  }
  return {};
}

ProcessLimits DwgConverterLimits() {
  ProcessLimits limits;
  if (std::string t = Env("TVPLOT_DWG_TIMEOUT"); !t.empty()) {
    const double seconds = std::strtod(t.c_str(), nullptr);
    if (std::isfinite(seconds) && seconds > 0 && seconds < 86'400)
      limits.time = std::chrono::milliseconds(static_cast<long long>(seconds * 1000));
  }
  if (std::string m = Env("TVPLOT_DWG_MAX_RSS_MB"); !m.empty()) {
    const unsigned long long mb = std::strtoull(m.c_str(), nullptr, 10);
    if (mb > 0 && mb < (1ull << 24)) limits.residentBytes = mb << 20;
  }
  return limits;
}

std::string DwgRelease(const std::string& version) {
  static constexpr std::pair<std::string_view, std::string_view> kReleases[] = {
      {"AC1012", "R13"},   {"AC1014", "R14"},   {"AC1015", "R2000"}, {"AC1018", "R2004"},
      {"AC1021", "R2007"}, {"AC1024", "R2010"}, {"AC1027", "R2013"}, {"AC1032", "R2018"},
  };
  for (const auto& [v, r] : kReleases)
    if (v == version) return std::string(r);
  return {};
}

DwgConversion ConvertDwg(const std::string& node, const std::string& bridge, const fs::path& dwg,
                         const fs::path& folder, const ProcessLimits& limits) {
  DwgConversion result;
  const fs::path dxf = folder / "drawing.dxf";
  // --liftoff-only: without it V8 optimises the 10 MB of WebAssembly in the background and the
  // process waits for that at exit, some 15 s and 0.8 GB more; the output is the same.
  const ProcessOutcome run = RunBounded({node, "--liftoff-only", "--max-old-space-size=256", bridge, "-y", "-o",
                                         dxf.string(), dwg.string()},
                                        limits);
  if (!run.ok()) {
    result.failure = Failure(run, limits);
    return result;
  }
  if (!IsFile(dxf)) {
    result.failure = "转换程序未写出 DXF 文件" + Said(WhyFromStderr(run.stderrText));
    return result;
  }
  result.dxf = dxf;
  ReadReport(folder / "drawing.json", result.source);
  return result;
}

}  // namespace tv::cad
