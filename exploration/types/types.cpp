#include "exploration/types/types.h"

#include <algorithm>
#include <array>
#include <utility>

namespace exploration {
namespace {

constexpr ScalarTraits traits[scalarCount] = {
    {"char", 1, true, false},    {"uchar", 1, false, false}, {"short", 2, true, false},
    {"ushort", 2, false, false}, {"int", 4, true, false},    {"uint", 4, false, false},
    {"long", 8, true, false},    {"ulong", 8, false, false}, {"half", 2, true, true},
    {"float", 4, true, true},    {"double", 8, true, true},
};

std::vector<Type> ScalarsAndVectors() {
  std::vector<Type> types;
  for (int scalar = 0; scalar < scalarCount; ++scalar) {
    for (const int width : widths) {
      Type type;
      type.kind = width == 1 ? Type::Kind::scalar : Type::Kind::vector;
      type.scalar = static_cast<Scalar>(scalar);
      type.count = width;
      types.push_back(std::move(type));
    }
  }
  return types;
}

}  // namespace

const ScalarTraits& TraitsOf(Scalar scalar) { return traits[static_cast<int>(scalar)]; }

std::string_view NameOf(Space space) {
  constexpr std::array<std::string_view, 4> names = {"__private", "__local", "__global",
                                                     "__constant"};
  return names.at(static_cast<std::size_t>(space));
}

const Type& Types::operator[](TypeId id) const {
  static const std::vector<Type> common = ScalarsAndVectors();
  return id < FirstOwn() ? common.at(static_cast<std::size_t>(id))
                         : own.at(static_cast<std::size_t>(id - FirstOwn()));
}

Type& Types::Own(TypeId id) { return own.at(static_cast<std::size_t>(id - FirstOwn())); }

TypeId Types::Add(Type type) {
  own.push_back(std::move(type));
  return End() - 1;
}

TypeId Types::ArrayOf(TypeId element, int count) {
  for (TypeId id = FirstOwn(); id < End(); ++id) {
    const Type& type = (*this)[id];
    if (type.kind == Type::Kind::array && type.element == element && type.count == count) return id;
  }
  Type type;
  type.kind = Type::Kind::array;
  type.element = element;
  type.count = count;
  return Add(std::move(type));
}

TypeId Types::PointerTo(TypeId element, Space space) {
  for (TypeId id = FirstOwn(); id < End(); ++id) {
    const Type& type = (*this)[id];
    if (type.kind == Type::Kind::pointer && type.element == element && type.space == space)
      return id;
  }
  Type type;
  type.kind = Type::Kind::pointer;
  type.element = element;
  type.space = space;
  return Add(std::move(type));
}

TypeId VectorOf(Scalar scalar, int width) {
  const auto* const found = std::find(std::begin(widths), std::end(widths), width);
  return static_cast<int>(scalar) * static_cast<int>(std::size(widths)) +
         static_cast<int>(found - std::begin(widths));
}

}  // namespace exploration
