#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "kernels/matrix.h"

namespace diagnosis {

/// A row as its name tells it: what is in its bytes and what the kernel makes of them. Everything
/// that a view must know to read a record's bytes; the row's own constants are in RowFacts.
struct Row {
  std::string name;
  Operation operation;
  Shape shape;
  ElementType elementType;

  int lanes;
  std::size_t width;   // bytes of a lane of the element member
  std::size_t stride;  // bytes of a union, and from one element to the next
  bool isSigned;       // the element member
  bool twoInputs;      // add and multiply
};

/// The row of that name, or nothing.
std::optional<Row> RowNamed(std::string_view name);

/// The number of elements that a row fills, computes and compares.
inline constexpr int elementsOfRow = 10;

/// The number of elements that its buffers have room for.
inline constexpr int elementsInBuffer = 256;

/// Lane `lane` of the element member at the front of `element`.
std::int64_t IntegerLane(const Row& row, std::span<const std::uint8_t> element, int lane);

/// Lane `lane` of the float member at the front of `element`.
float FloatLane(std::span<const std::uint8_t> element, int lane);

/// The exponent of a power row: the lane in arrays rows, else the element.
int ExponentOf(const Row& row, int element, int lane);

}  // namespace diagnosis
