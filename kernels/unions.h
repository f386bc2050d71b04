#pragma once

#include <CL/cl_platform.h>

#include <cstddef>
#include <type_traits>

#include "kernels/matrix.h"

// The element types in C++, and no other types.
template <class T>
constexpr ElementType ElementTypeOf(T) = delete;
constexpr ElementType ElementTypeOf(cl_int) { return ElementType::int_; }
constexpr ElementType ElementTypeOf(cl_uint) { return ElementType::uint_; }
constexpr ElementType ElementTypeOf(cl_short) { return ElementType::short_; }
constexpr ElementType ElementTypeOf(cl_ushort) { return ElementType::ushort_; }
constexpr ElementType ElementTypeOf(cl_char) { return ElementType::char_; }
constexpr ElementType ElementTypeOf(cl_uchar) { return ElementType::uchar_; }

/// The host mirrors of a row's three unions: byte n of one is byte n of the device's. The members
/// are true overlays, lane arrays that start at byte 0, of which the element member reads the
/// integer view and the float member the float view. `Lanes` are stored and read; `Slots` is what
/// the device's vector takes, one more than the lanes in a vector of three; `Stride` is the size in
/// bytes that the device's 32-byte alignment gives a union, and so the stride of every array.
///
/// The unions keep the ordinary alignment of their members, because nothing on the host needs more
/// and the arrays come from plain new[].
template <Shape OfShape, class T, int Lanes, int Slots, int Stride>
struct Unions {
  using Element = T;
  static constexpr Shape shape = OfShape;
  static constexpr ElementType elementType = ElementTypeOf(T{});
  static constexpr int lanes = Lanes;

  union InputA {
    Element a[Slots];
    cl_float h[Slots];
    std::byte bytes[Stride];
  };

  union InputB {
    Element k[Slots];
    cl_float b[Slots];
    std::byte bytes[Stride];
  };

  union Result {
    Element z[Slots];
    cl_float r[Slots];
    std::byte bytes[Stride];
  };

  static_assert(
      sizeof(InputA) == Stride && sizeof(InputB) == Stride && sizeof(Result) == Stride,
      "a union of this shape and element type outgrows the stride in the table below: make "
      "it the next multiple of 32, which is what the device's alignment gives");
};

// Whatever the platform's own char is.
static_assert(std::is_signed_v<cl_char> && std::is_unsigned_v<cl_uchar>);

// clang-format off
//                                                             lanes  slots  stride
template <class T> using Arrays   = Unions<Shape::arrays,    T,    4,     4,     32>;
template <class T> using Scalar   = Unions<Shape::scalar,    T,    1,     1,     32>;
template <class T> using Vector2  = Unions<Shape::vector2,   T,    2,     2,     32>;
template <class T> using Vector3  = Unions<Shape::vector3,   T,    3,     4,     32>;
template <class T> using Vector4  = Unions<Shape::vector4,   T,    4,     4,     32>;
template <class T> using Vector8  = Unions<Shape::vector8,   T,    8,     8,     32>;
template <class T> using Vector16 = Unions<Shape::vector16,  T,   16,    16,     64>;
// clang-format on
