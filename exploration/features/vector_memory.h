#pragma once

#include <optional>
#include <string>
#include <vector>

#include "exploration/features/drawing.h"

// What vloadN and vstoreN have in common: N elements from an array of scalars, or bytes of an
// object through a pointer to uchar.

namespace exploration {

/// parts[0] is the array or object, numbers[0] the first argument in elements of N, numbers[1]
/// where the pointer points, in elements.
void CheckVectorMemory(const Node& node, const Program& program, TypeId vector);
/// "2, u1.a + 1" or "0, (__private uchar *)&u1 + 3".
std::string VectorMemoryText(const Node& node, const Printer& printer, TypeId vector);
std::vector<Place> LocateVectorMemory(const Node& node, Machine& machine, TypeId vector);

/// The array and the numbers for so many components; the type says of which vectors.
struct VectorMemory {
  TypeId vector = noType;
  Node place;
  std::vector<std::int64_t> numbers;
};
std::optional<VectorMemory> DrawVectorMemory(Drawing& drawing, bool forStore);

}  // namespace exploration
