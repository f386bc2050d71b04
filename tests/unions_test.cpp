// The byte contract of the host unions, at compile time but for the overlay of stores.

#include "kernels/unions.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <type_traits>

namespace {

template <class Unions, int lanes, std::size_t stride, std::size_t elementBytes,
          std::size_t floatBytes>
constexpr bool Holds() {
  using A = typename Unions::InputA;
  using B = typename Unions::InputB;
  using R = typename Unions::Result;
  static_assert(Unions::lanes == lanes);
  static_assert(sizeof(A) == stride && sizeof(B) == stride && sizeof(R) == stride);
  static_assert(sizeof(A::a) == elementBytes && sizeof(B::k) == elementBytes &&
                sizeof(R::z) == elementBytes);
  static_assert(sizeof(A::h) == floatBytes && sizeof(B::b) == floatBytes &&
                sizeof(R::r) == floatBytes);
  static_assert(offsetof(A, a) == 0 && offsetof(A, h) == 0 && offsetof(B, k) == 0 &&
                offsetof(B, b) == 0 && offsetof(R, z) == 0 && offsetof(R, r) == 0);
  // Nothing asks for more than plain new[] gives.
  static_assert(alignof(A) <= alignof(float) && std::is_trivially_default_constructible_v<A>);
  return true;
}

// Of each element type: its width, and then bytes of the element member over 4 bytes.
template <class Element, std::size_t width>
constexpr bool HoldsForAllShapes() {
  static_assert(sizeof(Element) == width);
  static_assert(Holds<Arrays<Element>, 4, 32, 4 * width, 16>());
  static_assert(Holds<Scalar<Element>, 1, 32, width, 4>());
  static_assert(Holds<Vector2<Element>, 2, 32, 2 * width, 8>());
  static_assert(Holds<Vector3<Element>, 3, 32, 4 * width, 16>());
  static_assert(Holds<Vector4<Element>, 4, 32, 4 * width, 16>());
  static_assert(Holds<Vector8<Element>, 8, 32, 8 * width, 32>());
  static_assert(Holds<Vector16<Element>, 16, 64, 16 * width, 64>());
  return true;
}

static_assert(HoldsForAllShapes<cl_int, 4>() && std::is_signed_v<cl_int>);
static_assert(HoldsForAllShapes<cl_uint, 4>() && std::is_unsigned_v<cl_uint>);
static_assert(HoldsForAllShapes<cl_short, 2>() && std::is_signed_v<cl_short>);
static_assert(HoldsForAllShapes<cl_ushort, 2>() && std::is_unsigned_v<cl_ushort>);
static_assert(HoldsForAllShapes<cl_char, 1>() && std::is_signed_v<cl_char>);
static_assert(HoldsForAllShapes<cl_uchar, 1>() && std::is_unsigned_v<cl_uchar>);

// Stores through one member must show through the other whatever the compiler makes of types, in
// the form in which the rows store: lane by lane, with values that only the run knows.
TEST(Unions, StoresThroughOneMemberShowThroughTheOther) {
  volatile int draws[4][2] = {
      {0x11223344, 1234567}, {0x0A0B0C0D, 1000}, {0x1A2B3C4D, 5}, {0x31323334, 7}};
  auto* unions = new Arrays<cl_short>::InputA[2];
  for (int i = 0; i < 2; ++i) {
    for (int j = 0; j < 4; ++j) {
      unions[i].a[j] = static_cast<cl_short>(draws[j][0]);
      unions[i].h[j] = static_cast<float>(draws[j][1]);
    }
  }
  const unsigned char expected[16] = {0x38, 0xB4, 0x0D, 0x0C, 0x4D, 0x3C, 0x34, 0x33,
                                      0x00, 0x00, 0xA0, 0x40, 0x00, 0x00, 0xE0, 0x40};
  for (int i = 0; i < 2; ++i) EXPECT_EQ(std::memcmp(&unions[i], expected, sizeof expected), 0);
  EXPECT_EQ(unions[1].a[0], -19400);
  EXPECT_EQ(unions[1].a[1], 3085);
  delete[] unions;
}

}  // namespace
