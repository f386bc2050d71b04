#include "exploration/model/memory.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace exploration {
namespace {

void Weaken(Byte& byte, Knowledge to) { byte.knowledge = std::min(byte.knowledge, to); }

bool IsCharacter(const Types& types, TypeId id) {
  return types[id].kind == Type::Kind::scalar && TraitsOf(types[id].scalar).size == 1;
}

/// The scalars and vectors as which an access of the type sees the memory: nothing in unions, which
/// may hold any of their members.
void AddAccesses(const Types& types, TypeId id, std::size_t offset, std::vector<Leaf>& leaves) {
  const Type& type = types[id];
  if (type.IsLeaf()) leaves.push_back({id, offset});
  if (type.kind == Type::Kind::array) {
    for (int i = 0; i < type.count; ++i)
      AddAccesses(types, type.element,
                  offset + static_cast<std::size_t>(i) * SizeOf(types, type.element), leaves);
  }
  if (type.kind != Type::Kind::structure) return;
  for (std::size_t i = 0; i < type.members.size(); ++i)
    AddAccesses(types, type.members[i].type, offset + OffsetOf(types, id, static_cast<int>(i)),
                leaves);
}

// C99 6.5, paragraph 7: an object is accessed as its own type, as a structure or union that has it
// among its members, or by characters. Between accesses through the union OpenCL C 1.2, 6.2.4.1,
// lets the type change. Where one of them goes through a pointer to a member, compilers may take
// the two for different objects, and their order for nobody's concern: that is never asked for.
void Access(const Types& types, Object& object, const Place& place, bool stores) {
  std::vector<Leaf> leaves;
  AddAccesses(types, place.type, place.offset, leaves);
  for (const Leaf& leaf : leaves) {
    if (IsCharacter(types, leaf.type)) continue;
    const std::size_t end = leaf.offset + SizeOf(types, leaf.type);
    for (std::size_t i = leaf.offset; i < end; ++i) {
      Cell& cell = object.cells.at(i);
      const bool isSame = cell.type == leaf.type && cell.start == leaf.offset;
      if (cell.type != noType && !isSame)
        Require(!cell.throughPointer && !place.throughPointer, "another type, through a pointer");
      if (!stores && !place.throughPointer) continue;
      cell.type = static_cast<std::int16_t>(leaf.type);
      cell.start = static_cast<std::uint16_t>(leaf.offset);
      cell.throughPointer = place.throughPointer;
    }
  }
}

// C99 6.2.6.1, paragraph 6: when a value is stored in a structure or in a member of one, its
// padding takes unspecified values; paragraph 7: when one is stored in a member of a union, those
// bytes do that belong to other members alone. Neither happens in practice, so that what was known
// there is customary.
void ForgetBeside(const Types& types, Object& object, const Place& place) {
  for (const Step& step : place.path) {
    const std::size_t size = SizeOf(types, step.record);
    if (types[step.record].kind == Type::Kind::unionType) {
      const Member& member = types[step.record].members.at(static_cast<std::size_t>(step.member));
      for (std::size_t i = SizeOf(types, member.type); i < size; ++i)
        Weaken(object.cells.at(step.offset + i).byte, Knowledge::customary);
    } else {
      const std::vector<bool> isValue = ValueBytesOf(types, step.record);
      for (std::size_t i = 0; i < size; ++i)
        if (!isValue[i]) Weaken(object.cells.at(step.offset + i).byte, Knowledge::customary);
    }
  }
}

bool IsOrdinary(const Types& types, TypeId leaf, const std::vector<Byte>& bytes,
                std::size_t offset) {
  const Type& type = types[leaf];
  const int size = TraitsOf(type.scalar).size;
  if (!TraitsOf(type.scalar).isFloat) return true;
  for (int component = 0; component < type.count; ++component) {
    std::uint8_t raw[8] = {};
    bool isThere = true;
    for (int i = 0; i < size; ++i) {
      const Byte& byte = bytes.at(offset + static_cast<std::size_t>(component * size + i));
      raw[i] = byte.value;
      isThere = isThere && byte.knowledge != Knowledge::unspecified;
    }
    if (isThere && !IsOrdinary(type.scalar, raw)) return false;
  }
  return true;
}

}  // namespace

bool Overlap(const Types& types, const Place& one, const Place& other) {
  if (one.object != other.object) return false;
  const auto bytesOf = [&types](const Place& place) {
    std::vector<bool> bytes(place.offset + SizeOf(types, place.type));
    const auto size = static_cast<std::ptrdiff_t>(TraitsOf(types[place.type].scalar).size);
    const auto begin = bytes.begin() + static_cast<std::ptrdiff_t>(place.offset);
    for (const int component : place.components) std::fill_n(begin + component * size, size, true);
    if (place.components.empty()) std::fill(begin, bytes.end(), true);
    return bytes;
  };
  const bool isSame =
      one.offset == other.offset && one.type == other.type && one.components == other.components;
  const std::vector<bool> ones = bytesOf(one);
  const std::vector<bool> others = bytesOf(other);
  for (std::size_t i = 0; i < std::min(ones.size(), others.size()); ++i)
    if (ones[i] && others[i]) return !isSame;
  return false;
}

Knowledge Value::KnowledgeOf(const Types& types) const {
  Knowledge least = Knowledge::known;
  const std::vector<bool> isValue = ValueBytesOf(types, type);
  for (std::size_t i = 0; i < bytes.size(); ++i)
    if (isValue[i]) least = std::min(least, bytes[i].knowledge);
  return least;
}

Object MadeObject(const Types& types, TypeId type, Space space) {
  Object object;
  object.type = type;
  object.space = space;
  object.cells.resize(SizeOf(types, type));
  if (space == Space::localSpace || space == Space::globalSpace)
    object.touches.resize(object.cells.size());
  return object;
}

bool IsOrdinary(Scalar scalar, const std::uint8_t* bytes) {
  if (scalar == Scalar::halfType) {
    const int exponent = (bytes[1] >> 2) & 0x1F;
    return exponent != 0x1F && (exponent != 0 || ((bytes[1] & 0x7F) == 0 && bytes[0] == 0));
  }
  double number = 0;
  if (scalar == Scalar::floatType) {
    float small = 0;
    std::memcpy(&small, bytes, sizeof small);
    return std::isnormal(small) || std::fpclassify(small) == FP_ZERO;
  }
  if (scalar != Scalar::doubleType) return true;
  std::memcpy(&number, bytes, sizeof number);
  return std::isnormal(number) || std::fpclassify(number) == FP_ZERO;
}

Value Loaded(const Types& types, Object& object, const Place& place) {
  Access(types, object, place, false);
  const Type& type = types[place.type];
  Value value;
  value.type = place.type;
  const std::size_t bytes = SizeOf(types, place.type);
  value.bytes.reserve(bytes);
  for (std::size_t i = 0; i < bytes; ++i)
    value.bytes.push_back(object.cells.at(place.offset + i).byte);
  if (!type.IsLeaf()) return Copied(types, value);
  if (!place.components.empty()) {
    const auto size = static_cast<std::size_t>(TraitsOf(type.scalar).size);
    Value chosen;
    chosen.type = VectorOf(type.scalar, static_cast<int>(place.components.size()));
    for (const int component : place.components) {
      const auto from = value.bytes.begin() +
                        static_cast<std::ptrdiff_t>(static_cast<std::size_t>(component) * size);
      chosen.bytes.insert(chosen.bytes.end(), from, from + static_cast<std::ptrdiff_t>(size));
    }
    chosen.bytes.resize(SizeOf(types, chosen.type));
    value = std::move(chosen);
  }
  Require(value.KnowledgeOf(types) != Knowledge::unspecified, "an unspecified byte is read");
  Require(IsOrdinary(types, value.type, value.bytes, 0), "a float that is not ordinary is read");
  return value;
}

void Store(const Types& types, Object& object, const Place& place, const Value& value) {
  const Type& type = types[place.type];
  const std::vector<bool> isValue = ValueBytesOf(types, place.type);
  const std::size_t size = SizeOf(types, place.type);
  Access(types, object, place, true);
  ForgetBeside(types, object, place);
  // What a whole structure, union or vector of three components has behind its values: a compiler
  // may store anything there, and compilers do.
  for (std::size_t i = 0; i < size; ++i)
    if (!isValue[i]) object.cells.at(place.offset + i).byte.knowledge = Knowledge::unspecified;
  if (!place.components.empty()) {
    const auto width = static_cast<std::size_t>(TraitsOf(type.scalar).size);
    for (std::size_t c = 0; c < place.components.size(); ++c)
      for (std::size_t i = 0; i < width; ++i)
        object.cells.at(place.offset + static_cast<std::size_t>(place.components[c]) * width + i)
            .byte = value.bytes.at(c * width + i);
    return;
  }
  for (std::size_t i = 0; i < size; ++i)
    if (isValue[i]) object.cells.at(place.offset + i).byte = value.bytes.at(i);
  if (IsCharacter(types, place.type)) {
    object.cells.at(place.offset).type = noType;
    return;
  }
  if (type.IsLeaf()) return;
  std::vector<Leaf> leaves;
  AddAccesses(types, place.type, place.offset, leaves);
  std::vector<bool> isOfUnion(size, true);
  for (const Leaf& leaf : leaves)
    std::fill_n(isOfUnion.begin() + static_cast<std::ptrdiff_t>(leaf.offset - place.offset),
                SizeOf(types, leaf.type), false);
  for (std::size_t i = 0; i < size; ++i) {
    if (!isOfUnion[i]) continue;
    object.cells.at(place.offset + i).type = Cell::ofUnion;
    object.cells.at(place.offset + i).throughPointer = false;
  }
}

// An assignment of a structure carries the values of its members, by C99 6.2.6.1 with its footnote
// member by member or all bytes at once, and so no padding. Of a union all bytes are carried that
// belong to a member: which of them is the last that was stored, no compiler knows. A float that
// is denormal or NaN, or an integer that would be one as a float, might not survive the journey on
// a device that moves it as a float.
Value Copied(const Types& types, Value value) {
  const std::vector<bool> isValue = ValueBytesOf(types, value.type);
  for (std::size_t i = 0; i < value.bytes.size(); ++i)
    if (!isValue[i]) value.bytes[i].knowledge = Knowledge::unspecified;
  Require(std::any_of(value.bytes.begin(), value.bytes.end(),
                      [](const Byte& byte) { return byte.knowledge != Knowledge::unspecified; }),
          "nothing of what is copied is known");
  for (const Leaf& leaf : LeavesOf(types, value.type)) {
    if (IsOrdinary(types, leaf.type, value.bytes, leaf.offset)) continue;
    const std::size_t end = leaf.offset + SizeOf(types, leaf.type);
    for (std::size_t i = leaf.offset; i < end; ++i) Weaken(value.bytes[i], Knowledge::customary);
  }
  return value;
}

}  // namespace exploration
