#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "diagnosis/judgement/arithmetic.h"
#include "diagnosis/record/row.h"

// A device that does something wrong, told by what it does otherwise than a right one.

namespace diagnosis {

/// Where a member lies, in bytes from the front of its buffer.
struct Place {
  int offset = 0;
  int stride = 0;  // from an element to the next; 0: the union's size
  int step = 0;    // from a lane to the next; 0: the lane's width
  bool operator==(const Place&) const = default;
};

enum class View { own, integer, real };
enum class Sign { own, isSigned, isUnsigned };

/// The lane that stands in the place of each.
using LaneMap = std::array<std::uint8_t, 16>;
inline constexpr LaneMap ownLanes = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};

/// The element that stands in the place of each; -1 is one that nothing is known of.
using ElementMap = std::array<std::int16_t, elementsOfRow>;
inline constexpr ElementMap ownElements = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9};

/// How an operand is read.
struct Reading {
  Place place{};
  View view = View::own;
  int width = 0;  // of an integer lane; 0: the element's own
  Sign sign = Sign::own;
  bool reversed = false;      // the bytes of a lane
  bool otherInput = false;    // from the other operand's buffer
  int repetitionsBefore = 0;  // from what the buffer held so many repetitions before
  int elementsOn = 0;         // from so many elements on
  LaneMap lanes = ownLanes;
};

/// What becomes of an integer before it is a float.
enum class Conversion {
  own,
  low24Bits,        // only these count, without a sign
  low24BitsSigned,  // the highest of them is the sign
  low24BitsOfMagnitude,
  throughHalf,  // by way of a float of 16 bits
  saturatedToInt,
  saturatedToShort,
  saturatedToUshort,
  saturatedToChar,
  saturatedToUchar,
  positive,      // its magnitude
  complemented,  // its bits are inverted
  truth,         // 0 or 1
  leftOut,       // its bits are taken for a float's
};

enum class Formula {
  own,
  copy,  // the converted integer
  onlyB,
  sum,
  product,
  difference,
  inIntegers,      // B is truncated, the result converted
  unconverted,     // the integer takes part as it is, and the result is rounded once
  byLogarithm,     // a power that is no number for a negative base
  exponentOfLane,  // lane in place of element, element in place of lane
};

/// What becomes of an answer before it is stored. Some know an amount.
enum class Change {
  none,
  negated,
  magnitude,
  zeroOfEitherSign,
  integerTruncated,    // the bits of an integer; the amount is an OverflowPolicy
  integerRounded,      // to the nearest
  integerComputed,     // of the operands as integers
  reversed,            // its bytes
  throughHalf,         // by way of a float of 16 bits
  largestForInfinite,  // and a number for what is not one
  bits,                // those of the amount, whatever the answer; for 0 a zero of either sign
  bitsLost,            // so many of the lowest are cut off
  bitsRounded,         // so many of the lowest are rounded away, to nearest
  ulpsOutward,         // so many units away from zero
  ulpsInward,
  ulpsUpward,
  ulpsDownward,
  ulpsAround,  // at most so many
  ulpsAtMostOutward,
  ulpsAtMostInward,
};

/// What an integer is where it cannot be the float's, which OpenCL leaves open: the nearest that
/// can be, or one of the bit patterns that processors give.
enum class OverflowPolicy { intNearest, intLowest, uintNearest, uintHighest, lowBitsOfLong };

/// All that a device does otherwise. A right one does nothing otherwise.
struct Fault {
  Reading a{};
  Reading b{};
  Place result{};
  int resultWidth = 0;  // bytes stored of a lane; 0: all four
  Conversion conversion = Conversion::own;
  std::optional<Rounding> conversionRounding{};
  std::optional<Rounding> arithmeticRounding{};
  std::optional<Denormals> denormalOperands{};
  std::optional<Denormals> denormalResults{};
  Formula formula = Formula::own;
  bool truncatedB = false;  // to an integer, which is converted back
  Change change = Change::none;
  std::int64_t amount = 0;
  std::uint32_t changedElements = 0;  // bit i: the change is made in element i; 0: in all
  std::uint32_t changedLanes = 0;
  int repetitionsBefore = 0;  // the answers are those of so many repetitions before
  LaneMap lanes = ownLanes;   // lane j has the answer of lane lanes[j]
  ElementMap elements = ownElements;
  std::uint32_t unwrittenElements = 0;  // bit i: element i keeps what stood there
  std::uint32_t unwrittenLanes = 0;
};

/// Whether bit `number` of a mask of elements or lanes is set.
constexpr bool Holds(std::uint32_t numbers, int number) {
  constexpr int most = 32;
  return number < most && (numbers >> number & 1U) != 0;
}

/// Both faults in one device, or nothing where they contradict each other.
std::optional<Fault> Both(const Fault& one, const Fault& other);

}  // namespace diagnosis
