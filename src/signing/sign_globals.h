#pragma once
// The switches signatures read while they draw, and the placing direction.
#include <cstdint>

namespace tv::signing {

// 0 keeps every signature from drawing; a plot run takes it from "打印签名" and puts 1 back.
inline std::int32_t SignsVisible = 1;
// 1 while a plot run draws: unapproved signatures then draw nothing at all.
inline std::int32_t PlotRunning = 0;
// Raised whenever approvals change, so that each signature checks its approval again.
inline std::int32_t SignGeneration = 0;
// 0, 1 or 2: the turn of the next placed signature, raised by the Tab key while placing.
inline std::int32_t SignDirection = 0;
// 1 while the second corner of a signature is being picked: only then does Tab count.
inline std::int32_t SignJigActive = 0;

// Tab while placing: the next direction, 2 wrapping to 0.
inline void RaiseSignDirection() {
  if (SignJigActive == 1) SignDirection = (SignDirection + 1) % 3;
}

// A plot run's setting of the switches, put back as they were when it ends.
class PlotSignScope {
 public:
  explicit PlotSignScope(bool plotSignatures) : visible_(SignsVisible), running_(PlotRunning) {
    SignsVisible = plotSignatures ? 1 : 0;
    PlotRunning = 1;
  }
  ~PlotSignScope() {
    SignsVisible = visible_;
    PlotRunning = running_;
  }
  PlotSignScope(const PlotSignScope&) = delete;
  PlotSignScope& operator=(const PlotSignScope&) = delete;

 private:
  std::int32_t visible_, running_;
};

}  // namespace tv::signing
