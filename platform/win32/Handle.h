// Owner of a system handle: closes it once, moves, and never copies.
#pragma once

#include <cstdint>

namespace orvanto::win32 {

// T is one of the system's pointer-like handles. `kNone` is the number that stands for no handle
// (-1 for files, 0 for nearly everything else); `Close` is called with every other one.
template <typename T, auto Close, std::intptr_t kNone = 0>
class Handle {
 public:
  Handle() = default;
  explicit Handle(T value) : value_(value) {}
  Handle(Handle&& other) noexcept : value_(other.Release()) {}
  Handle& operator=(Handle&& other) noexcept {
    Reset(other.Release());
    return *this;
  }
  ~Handle() { Reset(); }

  T Get() const { return value_; }
  explicit operator bool() const { return value_ != None(); }
  T Release() {
    const T old = value_;
    value_ = None();
    return old;
  }
  void Reset(T value = None()) {
    const T old = value_;
    value_ = value;
    if (old != None() && old != value) Close(old);
  }

 private:
  static T None() { return reinterpret_cast<T>(kNone); }

  T value_ = None();
};

}  // namespace orvanto::win32
