#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

#include "diagnosis/record/record.h"
#include "kernels/matrix.h"

// Which answers OpenCL C 1.2, full profile, allows, worked on the host without regard to the mode
// that its own floats are in.

namespace diagnosis {

enum class Rounding { toNearest, towardZero, upward, downward };

/// Puts the host into a rounding mode for as long as it lives.
class HostRounding {
 public:
  explicit HostRounding(Rounding rounding);
  HostRounding(const HostRounding&) = delete;
  HostRounding& operator=(const HostRounding&) = delete;
  ~HostRounding();

 private:
  int before_;
};

/// What becomes of a denormal operand or result: it stays, it may become a zero of either sign, or
/// it always does.
enum class Denormals { kept, mayBeFlushed, flushed };

/// How a device computes.
struct FloatMode {
  Rounding conversion = Rounding::toNearest;  // of an integer to float
  Rounding arithmetic = Rounding::toNearest;  // of a sum or a product
  Denormals operands = Denormals::kept;
  Denormals results = Denormals::kept;
  bool signedZeros = true;  // if not, a zero may have either sign
  bool nonFinite = true;    // if not, where one goes in or comes out anything is right
  bool unsafeMath = false;  // the rules of accuracy may be broken
  bool operator==(const FloatMode&) const = default;
};

/// The mode that a device has by what it reports: it rounds toward zero only if it does not report
/// that it rounds to nearest, and may flush only if it does not report denormals. A device whose
/// report is not to be had is held to what every full profile has. Build options may permit more:
/// -cl-denorms-are-zero a flush, -cl-no-signed-zeros and -cl-finite-math-only what they say,
/// -cl-unsafe-math-optimizations a flush, zeros of either sign and whatever accuracy, and
/// -cl-fast-relaxed-math all of these.
FloatMode ModeOf(const Device& device, std::string_view buildOptions);

/// The place of `x` on the line of all floats in ascending order, neighbours one apart. Both zeros
/// are at 0; NaNs have no place.
std::int64_t PlaceOf(float x);

/// The float at that place: the positive zero at 0, an infinity at its own place and behind it.
float FloatAt(std::int64_t place);

/// How many units in the last place lie between two floats that are not NaNs.
std::uint64_t UlpsBetween(float x, float y);

bool IsDenormal(float x);

/// An answer that is exactly right, correctly rounded, with the answers that pass for it: those
/// from `first` to `last` on the line of floats.
struct RightAnswer {
  float value;
  std::int64_t first;
  std::int64_t last;
};

/// All answers that are right in one lane.
class RightAnswers {
 public:
  /// Nothing but NaNs, of whatever bits.
  static RightAnswers AnyNan();
  /// Whatever there is.
  static RightAnswers Anything();

  /// That one float; one of these bits is added once.
  void Add(float value);
  /// That float, and all others from `first` to `last`.
  void Add(const RightAnswer& answer);
  void AddAnyNan() { anyNan_ = true; }

  bool HaveAnyNan() const { return anyNan_; }
  std::span<const RightAnswer> Floats() const { return {floats_.data(), count_}; }

  /// Whether `answer` is right. The sign of a zero counts.
  bool Allow(float answer) const;
  /// The right answer with the smallest distance from `answer`; the first one, or a NaN, if none
  /// has a distance; itself, if anything is right.
  float NearestTo(float answer) const;

 private:
  std::array<RightAnswer, 8> floats_{};
  std::size_t count_ = 0;
  bool anyNan_ = false;
  bool anything_ = false;
};

/// `x` as a float, correctly rounded.
float Converted(std::int64_t x, Rounding rounding);
float Sum(float a, float b, Rounding rounding);
float Product(float a, float b, Rounding rounding);

/// `x` by way of a float of 16 bits, to the nearest; a NaN stays.
float ThroughHalf(float x);

/// `x` to the power of `exponent`, from 0 on, within `ulps` units in the last place as OpenCL
/// counts them: of the exact result, not of the float nearest to it. Overflow is an infinity, and
/// the largest float too in a device that rounds toward zero. Knows nothing of flushes.
RightAnswers Power(float x, int exponent, Rounding rounding, int ulps);

/// OpenCL's bound for pow.
inline constexpr int ulpsOfPower = 16;

/// OpenCL sets no bound to an operation where unsafe optimizations are asked for. What lies farther
/// off than its loosest functions, those on half of the digits, is no optimization any more.
inline constexpr int ulpsOfUnsafeMath = 8192;

/// The right answers of an operation on operands that were converted already: `b` counts in add
/// and multiply, `exponent` in power. A single operation leaves a compiler nothing to contract.
RightAnswers RightAnswersOf(Operation operation, float a, float b, int exponent,
                            const FloatMode& mode);

}  // namespace diagnosis
