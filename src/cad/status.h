#pragma once
#include <string>

namespace tv::cad {

// Outcome of a platform operation: success, or a message for the user.
struct Status {
  bool ok = true;
  std::string message;
  static Status success() { return {}; }
  static Status failure(std::string m) { return {false, std::move(m)}; }
  explicit operator bool() const { return ok; }
};

}  // namespace tv::cad
