#pragma once

#include <cstddef>
#include <vector>

#include "exploration/types/types.h"

namespace exploration {

/// In bytes; the type may not be a pointer, whose size is the device's own affair.
std::size_t SizeOf(const Types& types, TypeId id);
std::size_t AlignmentOf(const Types& types, TypeId id);

/// Of a member of a structure or union.
std::size_t OffsetOf(const Types& types, TypeId record, int member);

/// Of each byte whether it belongs to a value: to a scalar or to a component, the fourth of three
/// components left out. In a union those bytes do that belong to a value of any member. All others
/// are padding.
std::vector<bool> ValueBytesOf(const Types& types, TypeId id);

/// A scalar or vector that lies in a type, and where.
struct Leaf {
  TypeId type;
  std::size_t offset;
};
/// All of them, in the order of the members, those of all members of a union.
std::vector<Leaf> LeavesOf(const Types& types, TypeId id);

}  // namespace exploration
