#pragma once
// A progress figure on the terminal's message line ("正在读取 图纸.dxf … 45%"), rewritten in
// place with a carriage return and cleared when done. Disabled, it prints nothing.
#include <cstdint>
#include <ostream>
#include <string>

namespace tv::console {

class ProgressLine {
 public:
  ProgressLine(std::ostream& err, bool enabled, std::string label);
  ~ProgressLine();
  ProgressLine(const ProgressLine&) = delete;
  ProgressLine& operator=(const ProgressLine&) = delete;

  void update(std::uint64_t done, std::uint64_t total);
  // Clears the line (also done by the destructor).
  void finish();

 private:
  std::ostream& err_;
  bool enabled_;
  bool shown_ = false;
  int lastPercent_ = -1;
  std::string label_;
};

}  // namespace tv::console
