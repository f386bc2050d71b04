#include "diagnosis/record/row.h"

#include <algorithm>
#include <bit>
#include <string>

namespace diagnosis {
namespace {

constexpr std::string_view operationNames[] = {"add", "copy", "floor", "multiply", "power"};
constexpr std::string_view shapeNames[] = {"arrays",  "scalar",  "vector2", "vector3",
                                           "vector4", "vector8", "vector16"};
constexpr int lanesOf[] = {4, 1, 2, 3, 4, 8, 16};
constexpr std::string_view numbers[] = {"1", "2", "3", "4", "5", "6"};
constexpr std::size_t widths[] = {4, 4, 2, 2, 1, 1};

/// The index of `word` in `words`, or nothing.
template <std::size_t size>
std::optional<std::size_t> IndexOf(std::string_view word, const std::string_view (&words)[size]) {
  const auto* const found = std::ranges::find(words, word);
  if (found == std::end(words)) return std::nullopt;
  return static_cast<std::size_t>(found - words);
}

}  // namespace

std::optional<Row> RowNamed(std::string_view name) {
  constexpr std::string_view middle = "_union_";
  const std::size_t behindOperation = name.find(middle);
  const std::size_t behindShape = name.rfind('_');
  if (behindOperation == std::string_view::npos || behindShape < behindOperation + middle.size())
    return std::nullopt;
  const std::size_t shapeAt = behindOperation + middle.size();
  const auto operation = IndexOf(name.substr(0, behindOperation), operationNames);
  const auto shape = IndexOf(name.substr(shapeAt, behindShape - shapeAt), shapeNames);
  const auto element = IndexOf(name.substr(behindShape + 1), numbers);
  if (!operation || !shape || !element) return std::nullopt;

  Row row;
  row.name = name;
  row.operation = static_cast<Operation>(*operation);
  row.shape = static_cast<Shape>(*shape);
  row.elementType = static_cast<ElementType>(*element);
  row.lanes = lanesOf[*shape];
  row.width = widths[*element];
  row.stride = row.shape == Shape::vector16 ? 64 : 32;
  row.isSigned = *element % 2 == 0;
  row.twoInputs = row.operation == Operation::add || row.operation == Operation::multiply;
  return row;
}

std::int64_t IntegerLane(const Row& row, std::span<const std::uint8_t> element, int lane) {
  const auto bytes = element.subspan(row.width * static_cast<std::size_t>(lane), row.width);
  std::int64_t value = row.isSigned && bytes.back() >= 0x80 ? -1 : 0;
  for (std::size_t n = row.width; n-- > 0;) value = value << 8 | bytes[n];
  return value;
}

float FloatLane(std::span<const std::uint8_t> element, int lane) {
  const auto bytes = element.subspan(sizeof(float) * static_cast<std::size_t>(lane), sizeof(float));
  std::uint32_t bits = 0;
  for (std::size_t n = sizeof bits; n-- > 0;) bits = bits << 8 | bytes[n];
  return std::bit_cast<float>(bits);
}

int ExponentOf(const Row& row, int element, int lane) {
  return row.shape == Shape::arrays ? lane : element;
}

}  // namespace diagnosis
