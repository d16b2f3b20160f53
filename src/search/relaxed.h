#pragma once
// A word shared between the input, think and search threads without a lock.
// Readers only ever need the latest value eventually, so relaxed ordering is
// enough; the atomic keeps the sharing well defined.
#include <atomic>

namespace zorva {

template <typename T>
class Relaxed {
 public:
  constexpr Relaxed(T value = T()) : value_(value) {}
  Relaxed(const Relaxed&) = delete;
  Relaxed& operator=(const Relaxed&) = delete;

  operator T() const { return value_.load(std::memory_order_relaxed); }
  Relaxed& operator=(T value) {
    value_.store(value, std::memory_order_relaxed);
    return *this;
  }

 private:
  std::atomic<T> value_;
};

}  // namespace zorva
