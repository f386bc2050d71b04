#include "diagnosis/localization/fault.h"

#include <cstddef>
#include <tuple>
#include <utility>

namespace diagnosis {
namespace {

/// Everything that a fault can do otherwise, one by one.
auto Parts(Fault& fault) {
  const auto parts = [](Reading& reading) {
    return std::tie(reading.place.offset, reading.place.stride, reading.place.step, reading.view,
                    reading.width, reading.sign, reading.reversed, reading.otherInput,
                    reading.repetitionsBefore, reading.elementsOn, reading.lanes);
  };
  return std::tuple_cat(
      parts(fault.a), parts(fault.b),
      std::tie(fault.result.offset, fault.result.stride, fault.result.step, fault.resultWidth,
               fault.conversion, fault.conversionRounding, fault.arithmeticRounding,
               fault.denormalOperands, fault.denormalResults, fault.formula, fault.truncatedB,
               fault.change, fault.amount, fault.changedElements, fault.changedLanes,
               fault.repetitionsBefore, fault.lanes, fault.elements, fault.unwrittenElements,
               fault.unwrittenLanes));
}

}  // namespace

std::optional<Fault> Both(const Fault& one, const Fault& other) {
  constexpr Fault right;
  Fault ofRight = right;
  Fault ofOther = other;
  Fault both = one;
  const auto join = [](auto& part, const auto& rightPart, const auto& otherPart) {
    if (part != rightPart && otherPart != rightPart && part != otherPart) return false;
    if (part == rightPart) part = otherPart;
    return true;
  };
  auto parts = Parts(both);
  auto partsOfRight = Parts(ofRight);
  auto partsOfOther = Parts(ofOther);
  const bool joined = [&]<std::size_t... n>(std::index_sequence<n...>) {
    return (join(std::get<n>(parts), std::get<n>(partsOfRight), std::get<n>(partsOfOther)) && ...);
  }
  (std::make_index_sequence<std::tuple_size_v<decltype(parts)>>());
  if (!joined) return std::nullopt;
  return both;
}

}  // namespace diagnosis
