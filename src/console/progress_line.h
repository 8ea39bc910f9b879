#pragma once
// A progress figure on the terminal's message line ("正在读取 图纸.dxf … 45%"; counted, as for
// sheets: "正在打印 3/12 … 25%"), rewritten in place with a carriage return and cleared when
// done. Disabled, it prints nothing.
#include <cstdint>
#include <ostream>
#include <string>

namespace tv::console {

class ProgressLine {
 public:
  ProgressLine(std::ostream& err, bool enabled, std::string label, bool counted = false);
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
  bool counted_;
  std::int64_t last_ = -1;  // the figure shown: the percentage, or the count when counted
  std::string label_;
};

}  // namespace tv::console
