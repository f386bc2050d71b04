#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "exploration/program/check.h"
#include "exploration/types/layout.h"

// What a device must do follows OpenCL C 1.2 and, where that says nothing, C99. The comments here
// and at the features name the paragraphs; the two texts could not be looked up when they were
// written, and so wherever more than one reading is possible nothing is known, or the program is
// not valid.

namespace exploration {

enum class Knowledge : std::uint8_t {
  unspecified,
  customary,  ///< Every compiler keeps it, but the standard does not promise it.
  known
};

struct Byte {
  std::uint8_t value = 0;
  Knowledge knowledge = Knowledge::unspecified;

  bool operator==(const Byte&) const = default;
};

/// A member of a structure or union on the way from an object to a place in it.
struct Step {
  TypeId record = noType;
  std::size_t offset = 0;  ///< Of the structure or union, in the object.
  int member = 0;
};

/// Something that can be loaded and stored.
struct Place {
  int object = -1;
  std::size_t offset = 0;
  TypeId type = noType;  ///< Of the vector, where components of it are meant.
  std::vector<Step> path;
  /// Which components of the vector, in this order; empty for all of it or what is no vector.
  std::vector<int> components;
  /// Reached through a pointer and since then through no union.
  bool throughPointer = false;
};

/// Whether the two share a byte without being the same, which no assignment may have on its sides.
bool Overlap(const Types& types, const Place& one, const Place& other);

/// The bytes of a value as it would lie in memory, or where a pointer points.
struct Value {
  TypeId type = noType;
  std::vector<Byte> bytes;
  Place target;

  /// The least that is known of any byte that belongs to a value.
  Knowledge KnowledgeOf(const Types& types) const;
};

/// A byte of an object.
struct Cell {
  Byte byte;
  /// A store or load through a pointer has been here: until the next store, nothing but that type
  /// may be used.
  bool throughPointer = false;
  /// The scalar or vector that was last stored here, and where that begins.
  std::int16_t type = noType;
  std::uint16_t start = 0;

  /// In place of a type: part of a union that was stored whole, of which no member is known to be
  /// the last that was stored. (noType: written byte by byte, or not at all.)
  static constexpr std::int16_t ofUnion = -2;
};

/// In place of the number of an atomic function.
inline constexpr int notAtomic = -1;

/// Who has touched a byte of memory that several work-items see. An epoch ends at a barrier.
struct Touch {
  struct By {
    std::int16_t item = nobody;
    std::int16_t group = nobody;
    std::int32_t epoch = -1;
    std::int16_t atomic = notAtomic;
  };
  static constexpr std::int16_t nobody = -1;
  static constexpr std::int16_t several = -2;
  By writer;  ///< The last; of stores by one atomic function all that came without another between.
  By others;  ///< All before it that were made in another way, and that no later store is behind.
  By readers[2];                      ///< The last, and the last other one.
  std::int16_t readerGroup = nobody;  ///< Of all readers.
};

struct Object {
  TypeId type = noType;
  Space space = Space::privateSpace;
  std::vector<Cell> cells;
  std::vector<Touch> touches;  ///< Empty where only one work-item sees the object, or none stores.
};

/// An object of which nothing is known.
Object MadeObject(const Types& types, TypeId type, Space space);

/// What stands there. Throws Invalid if a byte of a scalar or vector is unspecified, if a float is
/// not ordinary, or if it was stored as another type and one of the two went through a pointer.
Value Loaded(const Types& types, Object& object, const Place& place);

/// Throws Invalid as Loaded does.
void Store(const Types& types, Object& object, const Place& place, const Value& value);

/// The value as it arrives where a structure or union is assigned, passed or returned whole.
Value Copied(const Types& types, Value value);

/// Whether the number is neither denormal nor infinite nor NaN. What is no float is ordinary.
bool IsOrdinary(Scalar scalar, const std::uint8_t* bytes);

}  // namespace exploration
