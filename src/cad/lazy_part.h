#pragma once
// Fields that most records leave at their defaults, kept out of line and allocated on the first
// write, so that the common record stays small and reading a default costs no allocation.
#include <memory>

namespace tv::cad {

template <class T>
class LazyPart {
 public:
  LazyPart() = default;
  LazyPart(const LazyPart& o) : part_(o.part_ ? std::make_unique<T>(*o.part_) : nullptr) {}
  LazyPart(LazyPart&&) noexcept = default;
  LazyPart& operator=(const LazyPart& o) {
    if (this != &o) part_ = o.part_ ? std::make_unique<T>(*o.part_) : nullptr;
    return *this;
  }
  LazyPart& operator=(LazyPart&&) noexcept = default;

  // The fields as set, or the defaults when none was.
  const T& get() const { return part_ ? *part_ : Defaults(); }
  T& edit() {
    if (!part_) part_ = std::make_unique<T>();
    return *part_;
  }
  // Sets one field; a default value needs no part when there is none yet.
  template <class M, class V>
  void set(M T::*field, V&& value) {
    if (!part_ && Defaults().*field == value) return;
    edit().*field = std::forward<V>(value);
  }

  static const T& Defaults() {
    static const T defaults{};
    return defaults;
  }

 private:
  std::unique_ptr<T> part_;
};

}  // namespace tv::cad
