#include "console/progress_line.h"

#include <algorithm>

namespace tv::console {

ProgressLine::ProgressLine(std::ostream& err, bool enabled, std::string label)
    : err_(err), enabled_(enabled), label_(std::move(label)) {}

ProgressLine::~ProgressLine() { finish(); }

void ProgressLine::update(std::uint64_t done, std::uint64_t total) {
  if (!enabled_ || total == 0) return;
  int percent = static_cast<int>(std::min<std::uint64_t>(100, done * 100 / total));
  if (percent == lastPercent_) return;  // the callback comes far more often than the figure changes
  lastPercent_ = percent;
  err_ << '\r' << label_ << " … " << percent << '%' << std::flush;
  shown_ = true;
}

void ProgressLine::finish() {
  if (!shown_) return;
  shown_ = false;
  err_ << "\r\x1b[K" << std::flush;  // back to column 0 and erase to the end of the line
}

}  // namespace tv::console
