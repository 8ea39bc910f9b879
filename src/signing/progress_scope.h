#pragma once
// The host's progress bar for one stretch of work, closed when the stretch ends however it ends.
#include <string_view>

#include "host/editor.h"

namespace tv::signing {

class ProgressScope {
 public:
  // Shows the bar only when `shown`.
  ProgressScope(std::string_view title, int range, bool shown = true) : shown_(shown) {
    if (shown_) host::CurrentEditor().progressBegin(title, range);
  }
  ~ProgressScope() {
    if (shown_) host::CurrentEditor().progressEnd();
  }
  ProgressScope(const ProgressScope&) = delete;
  ProgressScope& operator=(const ProgressScope&) = delete;

  void set(int position) {
    if (shown_) host::CurrentEditor().progressSet(position);
  }

 private:
  bool shown_;
};

}  // namespace tv::signing
