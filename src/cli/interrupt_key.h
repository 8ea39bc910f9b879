#pragma once
// Ctrl-C while a batch plots is the list's "中 断 打 印": the run asks whether to stop before its
// next sheet. At any other time Ctrl-C ends the program as usual.
namespace tv::cli {

class InterruptKey {
 public:
  InterruptKey();
  ~InterruptKey();
  InterruptKey(const InterruptKey&) = delete;
  InterruptKey& operator=(const InterruptKey&) = delete;
};

}  // namespace tv::cli
