#pragma once

#include <bit>
#include <cmath>
#include <cstdint>

/// Whether `d` is at most `tolerance` units in the last place from `c` in magnitude. The bounds are
/// integer steps on the bits of `c`, which wrap; a bound that is a NaN bounds nothing, and a `d`
/// that is a NaN lies within any bounds.
inline bool WithinUlps(float c, float d, std::uint32_t tolerance) {
  const auto bits = std::bit_cast<std::uint32_t>(c);
  const auto hi = std::bit_cast<float>(bits + tolerance);
  const auto lo = std::bit_cast<float>(bits - tolerance);
  return !(std::fabs(hi) < std::fabs(d) || std::fabs(lo) > std::fabs(d));
}
