#pragma once

#include <CL/cl_platform.h>

#include <cstddef>
#include <type_traits>

/// The host mirrors of a row's three unions: byte n of one is byte n of the device's. The members
/// are true overlays, lane arrays that start at byte 0, of which the element member reads the
/// integer view and the float member the float view. `Lanes` are stored and read; `Slots` is what
/// the device's vector takes, one more than the lanes in a vector of three; `Stride` is the size in
/// bytes that the device's 32-byte alignment gives a union, and so the stride of every array.
///
/// The unions keep the ordinary alignment of their members, because nothing on the host needs more
/// and the arrays come from plain new[].
template <class T, int Lanes, int Slots, int Stride>
struct Unions {
  using Element = T;
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

  static_assert(sizeof(InputA) == Stride && sizeof(InputB) == Stride && sizeof(Result) == Stride);
};

// Whatever the platform's own char is.
static_assert(std::is_signed_v<cl_char> && std::is_unsigned_v<cl_uchar>);

// clang-format off
//                                                       lanes  slots  stride
template <class Element> using Arrays   = Unions<Element,    4,     4,     32>;
template <class Element> using Scalar   = Unions<Element,    1,     1,     32>;
template <class Element> using Vector2  = Unions<Element,    2,     2,     32>;
template <class Element> using Vector3  = Unions<Element,    3,     4,     32>;
template <class Element> using Vector4  = Unions<Element,    4,     4,     32>;
template <class Element> using Vector8  = Unions<Element,    8,     8,     32>;
template <class Element> using Vector16 = Unions<Element,   16,    16,     64>;
// clang-format on
