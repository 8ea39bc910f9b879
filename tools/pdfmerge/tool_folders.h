#pragma once
// Where the merging programs find the exchange files. They take nothing on the command line; the
// run that starts them names its folders in the environment, and without it the data folder is
// found as the system finds it.
#include <cstdlib>
#include <string>

namespace tv::pdfmerge {

inline std::string EnvOr(const char* name, const std::string& fallback) {
  const char* v = std::getenv(name);
  return v && *v ? std::string(v) : fallback;
}

inline std::string ToolDataFolder() {
  std::string fallback;
  if (const char* xdg = std::getenv("XDG_DATA_HOME"); xdg && *xdg) fallback = std::string(xdg) + "/Tarvex";
  else if (const char* home = std::getenv("HOME"); home && *home) fallback = std::string(home) + "/.local/share/Tarvex";
  return EnvOr("TARVEX_DATA_FOLDER", fallback);
}

}  // namespace tv::pdfmerge
