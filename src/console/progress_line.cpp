#include "console/progress_line.h"

#include <algorithm>

namespace tv::console {

ProgressLine::ProgressLine(std::ostream& err, bool enabled, std::string label, bool counted)
    : err_(err), enabled_(enabled), counted_(counted), label_(std::move(label)) {}

ProgressLine::~ProgressLine() { finish(); }

void ProgressLine::update(std::uint64_t done, std::uint64_t total) {
  if (!enabled_ || total == 0) return;
  const int percent = static_cast<int>(std::min<std::uint64_t>(100, done * 100 / total));
  const std::int64_t figure = counted_ ? static_cast<std::int64_t>(done) : percent;
  if (figure == last_) return;  // the callback comes far more often than the figure changes
  last_ = figure;
  err_ << '\r' << label_;
  if (counted_) err_ << ' ' << done << '/' << total;
  err_ << " … " << percent << '%' << std::flush;
  shown_ = true;
}

void ProgressLine::finish() {
  if (!shown_) return;
  shown_ = false;
  err_ << "\r\x1b[K" << std::flush;  // back to column 0 and erase to the end of the line
}

}  // namespace tv::console
