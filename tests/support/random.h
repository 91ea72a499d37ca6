#pragma once

#include <cstdint>

namespace toplist::test {

/// A small generator of repeatable numbers (SplitMix64): a seed gives the same numbers everywhere,
/// which the standard library's distributions do not promise.
class Random {
 public:
  explicit Random(std::uint64_t seed) : state_(seed) {}

  std::uint64_t bits() {
    state_ += 0x9E3779B97F4A7C15U;
    std::uint64_t z = state_;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9U;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBU;
    return z ^ (z >> 31);
  }

  /// A number from 0 up to but without 1.
  double unit() { return static_cast<double>(bits() >> 11) * 0x1.0p-53; }

  double between(double low, double high) { return low + (high - low) * unit(); }

  /// A whole number from 0 up to but without `count`, which must not be 0.
  std::uint64_t below(std::uint64_t count) { return bits() % count; }

 private:
  std::uint64_t state_;
};

}  // namespace toplist::test
