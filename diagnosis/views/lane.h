#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "diagnosis/judgement/arithmetic.h"
#include "diagnosis/judgement/opinion.h"
#include "diagnosis/record/record.h"
#include "diagnosis/record/row.h"

namespace diagnosis {

/// One lane of a record, with all that belongs to it. What it refers to outlives it.
struct Lane {
  const Row& row;
  const Device& device;
  const FloatMode& mode;  // of the device under the row's build options
  const Repetition& repetition;
  int number;  // of the repetition, from 1
  int element;
  int lane;

  std::span<const std::uint8_t> Of(const Bytes& bytes) const {
    return std::span(bytes).subspan(row.stride * static_cast<std::size_t>(element), row.stride);
  }
  std::int64_t A() const { return IntegerLane(row, Of(repetition.inputA), lane); }
  float B() const { return FloatLane(Of(repetition.inputB), lane); }
  float Answer() const { return FloatLane(Of(repetition.result), lane); }
  int Exponent() const { return ExponentOf(row, element, lane); }
  Lane At(int otherElement, int otherLane) const {
    return {row, device, mode, repetition, number, otherElement, otherLane};
  }
};

/// What the suite holds the answer against, and how that comes about, a step a line.
float ReferenceOf(const Lane& lane);
std::vector<std::string> StepsOf(const Lane& lane);

/// How the rounding is called.
std::string_view WordsOf(Rounding rounding);

/// "a[2]", or "a" where there is one lane only.
std::string MemberName(const Row& row, std::string_view member, int lane);

/// "-2.5", "NaN", "infinity".
std::string NumberOf(float x);

/// "0x3F800000 (1)", with a word where it is denormal.
std::string BitsAndNumber(float x);

}  // namespace diagnosis
