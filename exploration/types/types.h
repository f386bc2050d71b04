#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace exploration {

/// The scalar types that can stand in memory, in the order of the table behind TraitsOf.
enum class Scalar : std::uint8_t {
  charType,
  ucharType,
  shortType,
  ushortType,
  intType,
  uintType,
  longType,
  ulongType,
  halfType,
  floatType,
  doubleType
};
inline constexpr int scalarCount = 11;

struct ScalarTraits {
  std::string_view name;
  int size;
  bool isSigned;
  bool isFloat;
};
const ScalarTraits& TraitsOf(Scalar scalar);

enum class Space : std::uint8_t { privateSpace, localSpace, globalSpace, constantSpace };

/// "__private", "__local", "__global", "__constant".
std::string_view NameOf(Space space);

/// Which type of a program's table. The scalars and vectors have the same in every program.
using TypeId = int;
/// Of what has no value.
inline constexpr TypeId noType = -1;

struct Member {
  std::string name;  ///< Empty for an anonymous structure or union.
  TypeId type = noType;
  int aligned = 0;  ///< N of `__attribute__((aligned(N)))`; 0 without.
};

struct Type {
  enum class Kind : std::uint8_t { scalar, vector, array, structure, unionType, pointer };
  Kind kind = Kind::scalar;
  Scalar scalar = Scalar::intType;    ///< Of a scalar, and of a vector's components.
  int count = 1;                      ///< Components of a vector, elements of an array.
  TypeId element = noType;            ///< Of an array; what a pointer points to.
  Space space = Space::privateSpace;  ///< Where a pointer points.
  std::string name;                   ///< The tag of a structure or union; empty if anonymous.
  std::vector<Member> members;        ///< Of a structure or union.
  bool packed = false;
  int aligned = 0;

  bool IsLeaf() const { return kind == Kind::scalar || kind == Kind::vector; }
  bool IsRecord() const { return kind == Kind::structure || kind == Kind::unionType; }
};

/// The vector widths, with 1 for the scalar itself.
inline constexpr int widths[] = {1, 2, 3, 4, 8, 16};

/// The types of one program: all scalars and vectors, and behind them what it defines itself.
class Types {
 public:
  const Type& operator[](TypeId id) const;
  /// A type that this program defined; the scalars and vectors cannot be changed.
  Type& Own(TypeId id);
  TypeId Add(Type type);
  /// Takes back what was added since End() was `end`.
  void Shrink(TypeId end) { own.resize(static_cast<std::size_t>(end - FirstOwn())); }
  /// These two add the type only where there is none.
  TypeId ArrayOf(TypeId element, int count);
  TypeId PointerTo(TypeId element, Space space);

  /// Every id that is below this and not negative is a type; those from FirstOwn() on are its own.
  TypeId End() const { return FirstOwn() + static_cast<TypeId>(own.size()); }
  static constexpr TypeId FirstOwn() {
    return scalarCount * static_cast<TypeId>(std::size(widths));
  }

 private:
  std::vector<Type> own;
};

/// The scalar for a width of 1. The width must be one of `widths`.
TypeId VectorOf(Scalar scalar, int width);
inline TypeId TypeOf(Scalar scalar) { return VectorOf(scalar, 1); }

}  // namespace exploration
