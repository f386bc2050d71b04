#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace exploration {

/// The same numbers everywhere, which the standard library's distributions are not.
class Random {
 public:
  Random(std::uint64_t seed, std::uint64_t number) : state(seed * 0x9E3779B97F4A7C15U) {
    state = Next() ^ (number * 0xD1B54A32D192ED03U);
    Next();
  }

  /// SplitMix64.
  std::uint64_t Next() {
    std::uint64_t mixed = state += 0x9E3779B97F4A7C15U;
    mixed = (mixed ^ (mixed >> 30U)) * 0xBF58476D1CE4E5B9U;
    mixed = (mixed ^ (mixed >> 27U)) * 0x94D049BB133111EBU;
    return mixed ^ (mixed >> 31U);
  }
  /// From 0 to `count` - 1; `count` must be positive, and much smaller than 2^64.
  int Below(int count) { return static_cast<int>(Next() % static_cast<std::uint64_t>(count)); }
  int Between(int least, int most) { return least + Below(most - least + 1); }
  bool Chance(int percent) { return Below(100) < percent; }
  template <typename T>
  const T& OneOf(const std::vector<T>& all) {
    return all[static_cast<std::size_t>(Below(static_cast<int>(all.size())))];
  }

 private:
  std::uint64_t state;
};

}  // namespace exploration
