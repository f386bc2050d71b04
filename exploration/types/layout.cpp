#include "exploration/types/layout.h"

#include <algorithm>

namespace exploration {
namespace {

std::size_t RoundedUp(std::size_t size, std::size_t alignment) {
  return (size + alignment - 1) / alignment * alignment;
}

std::size_t AlignmentOf(const Types& types, const Type& record, const Member& member) {
  const std::size_t own = record.packed ? 1 : AlignmentOf(types, member.type);
  return std::max(own, static_cast<std::size_t>(member.aligned));
}

/// Where the member that follows `end` begins; in a union all begin at 0.
std::size_t Begin(const Types& types, const Type& record, const Member& member, std::size_t end) {
  if (record.kind == Type::Kind::unionType) return 0;
  return RoundedUp(end, AlignmentOf(types, record, member));
}

void AddLeaves(const Types& types, TypeId id, std::size_t offset, std::vector<Leaf>& leaves) {
  const Type& type = types[id];
  if (type.IsLeaf()) leaves.push_back({id, offset});
  if (type.kind == Type::Kind::array) {
    const std::size_t size = SizeOf(types, type.element);
    for (int i = 0; i < type.count; ++i)
      AddLeaves(types, type.element, offset + static_cast<std::size_t>(i) * size, leaves);
  }
  std::size_t end = 0;
  for (const Member& member : type.members) {
    const std::size_t begin = Begin(types, type, member, end);
    end = begin + SizeOf(types, member.type);
    AddLeaves(types, member.type, offset + begin, leaves);
  }
}

}  // namespace

// A vector is aligned to its size, and one of three components takes the room of four (OpenCL
// C 1.2, 6.1.5). What is aligned or packed by attribute follows 6.11.1; of structures without
// attributes the language says what C99 says, and C99 leaves padding to the implementation: all
// implementations that share buffers with a host put as little as the alignments allow.
std::size_t SizeOf(const Types& types, TypeId id) {
  const Type& type = types[id];
  const auto scalar = static_cast<std::size_t>(TraitsOf(type.scalar).size);
  switch (type.kind) {
    case Type::Kind::scalar:
      return scalar;
    case Type::Kind::vector:
      return scalar * static_cast<std::size_t>(type.count == 3 ? 4 : type.count);
    case Type::Kind::array:
      return SizeOf(types, type.element) * static_cast<std::size_t>(type.count);
    case Type::Kind::structure:
    case Type::Kind::unionType: {
      std::size_t end = 0;
      for (const Member& member : type.members)
        end = std::max(end, Begin(types, type, member, end) + SizeOf(types, member.type));
      return RoundedUp(end, AlignmentOf(types, id));
    }
    case Type::Kind::pointer:
      break;
  }
  return 0;
}

std::size_t AlignmentOf(const Types& types, TypeId id) {
  const Type& type = types[id];
  if (type.IsLeaf()) return SizeOf(types, id);
  if (type.kind == Type::Kind::array) return AlignmentOf(types, type.element);
  auto alignment = static_cast<std::size_t>(std::max(1, type.aligned));
  for (const Member& member : type.members)
    alignment = std::max(alignment, AlignmentOf(types, type, member));
  return alignment;
}

std::size_t OffsetOf(const Types& types, TypeId record, int member) {
  const Type& type = types[record];
  std::size_t begin = 0;
  std::size_t end = 0;
  for (int i = 0; i <= member; ++i) {
    const Member& one = type.members.at(static_cast<std::size_t>(i));
    begin = Begin(types, type, one, end);
    end = begin + SizeOf(types, one.type);
  }
  return begin;
}

std::vector<bool> ValueBytesOf(const Types& types, TypeId id) {
  std::vector<bool> bytes(SizeOf(types, id));
  for (const Leaf& leaf : LeavesOf(types, id)) {
    const Type& type = types[leaf.type];
    const int size = TraitsOf(type.scalar).size * type.count;
    std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(leaf.offset), size, true);
  }
  return bytes;
}

std::vector<Leaf> LeavesOf(const Types& types, TypeId id) {
  std::vector<Leaf> leaves;
  AddLeaves(types, id, 0, leaves);
  return leaves;
}

}  // namespace exploration
