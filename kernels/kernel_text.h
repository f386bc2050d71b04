#pragma once

#include <array>
#include <cstddef>
#include <string_view>

#include "kernels/matrix.h"

// The OpenCL C texts of all rows. A text is one template with a few places filled in, expanded when
// the row is compiled. The blanks behind each line are part of it: they reach the device compiler,
// their count belongs to the line of the template and does not depend on what is filled in.

namespace kernel_text {

/// What a text depends on.
struct Row {
  Operation operation;
  Shape shape;
  ElementType elementType;
};

constexpr std::size_t Index(auto enumerator) { return static_cast<std::size_t>(enumerator); }

// Which rows a line of the template belongs to.
using Where = bool (*)(Row);
constexpr bool Always(Row) { return true; }
constexpr bool InArrays(Row row) { return row.shape == Shape::arrays; }
constexpr bool InScalar(Row row) { return row.shape == Shape::scalar; }
constexpr bool InVectors(Row row) { return !InArrays(row) && !InScalar(row); }
constexpr bool TwoInputs(Row row) {
  return row.operation == Operation::add || row.operation == Operation::multiply;
}
constexpr bool InScalarUint(Row row) {
  return InScalar(row) && row.elementType == ElementType::uint_;
}
constexpr bool InScalarTwoInputs(Row row) { return InScalar(row) && TwoInputs(row); }
constexpr bool InScalarOneInput(Row row) { return InScalar(row) && !TwoInputs(row); }
constexpr bool InScalarCopy(Row row) { return InScalar(row) && row.operation == Operation::copy; }
constexpr bool InScalarFloor(Row row) { return InScalar(row) && row.operation == Operation::floor; }
constexpr bool InScalarPower(Row row) { return InScalar(row) && row.operation == Operation::power; }
constexpr bool NotInScalarCopy(Row row) { return !InScalarCopy(row); }

struct Line {
  Where where;
  std::string_view text;
  int blanks;
};

// $G is the guard, $T the element member's type, $F the float member's type, $D the array suffix,
// $S the kernel's signature and $B its statement.
inline constexpr Line lines[] = {
    {Always, "#ifndef $G", 113},
    {Always, "#define $G", 115},
    {NotInScalarCopy, "", 131},
    {InScalarCopy, "#", 131},
    {Always, "#ifdef __OPENCL_VERSION__", 107},
    {Always,
     "#define ALIGNED_STRUCT(structureType, alignBytes) structureType __attribute__ "
     "((aligned(alignBytes)))",
     31},
    {Always, "#else // __OPENCL_VERSION__", 103},
    {Always,
     "#define ALIGNED_STRUCT(structureType, alignBytes) __declspec(align(alignBytes)) "
     "structureType",
     39},
    {Always, "#endif // __OPENCL_VERSION__", 103},
    {NotInScalarCopy, "", 131},
    {InScalarCopy, "#", 123},
    {Always, "ALIGNED_STRUCT(union, 32) InputA {", 99},
    {Always, "    $T a$D;", 119},
    {Always, "    $F h$D;", 115},
    {InScalarUint, "     int z;", 74},
    {InScalarUint, "     short q;", 74},
    {Always, "};", 128},
    {Always, "", 130},
    {Always, "ALIGNED_STRUCT(union, 32) InputB {", 96},
    {Always, "    $T k$D;", 117},
    {Always, "    $F b$D;", 115},
    {InScalarUint, "     int w;", 74},
    {InScalarUint, "     short p;", 74},
    {Always, "};", 128},
    {Always, "", 130},
    {Always, "ALIGNED_STRUCT(union, 32) Result {", 96},
    {Always, "    $T z$D;", 117},
    {Always, "    $F r$D;", 115},
    {InScalarUint, "     int x;", 74},
    {InScalarUint, "     short l;", 74},
    {Always, "};", 128},
    {Always, "", 130},
    {Always, "#endif // _TYPES_H_", 111},
    {Always, "$S", 0},
    {Always, "{", 129},
    {Always, "    // get index into global data array", 91},
    {Always, "    int tid = get_global_id(0);", 99},
    {Always, "", 130},
    {Always,
     "    // bound check (equivalent to the limit on a 'for' loop for standard/serial C code", 44},
    {Always, "", 130},
    {InArrays, "    for (int i = 0; i < sizeof(c[tid].r) / sizeof(c[tid].r[0]); ++i) {", 60},
    {InScalarTwoInputs, "", 131},
    {InScalarCopy, "", 99},
    {InScalarFloor, "", 63},
    {InScalarPower, "", 78},
    {InVectors, "", 131},
    {InArrays, "        $B", 83},
    {InScalarTwoInputs, "        $B", 92},
    {InScalarOneInput, "        $B", 83},
    {InVectors, "        $B", 92},
    {InArrays, "    }", 125},
    {InScalarTwoInputs, "", 130},
    {InScalarCopy, "", 130},
    {InScalarFloor, "", 128},
    {InScalarPower, "", 128},
    {InVectors, "", 130},
    {Always, "}", 129},
};

// By shape.
inline constexpr std::string_view guards[] = {
    "_TYPES_H_",   // arrays
    "_TYPES2_H_",  // scalar
    "_TYPES3_H_",  // vector2
    "_TYPES5_H_",  // vector3
    "_TYPES6_H_",  // vector4
    "_TYPES7_H_",  // vector8
    "_TYPES8_H_",  // vector16
};
inline constexpr std::string_view scalarUintGuard = "_TYPES4_H_";
inline constexpr std::string_view widths[] = {"", "", "2", "3", "4", "8", "16"};

// By element type.
inline constexpr std::string_view elementTypes[] = {"int",    "uint", "short",
                                                    "ushort", "char", "uchar"};

// By operation: over arrays and scalars, over vectors.
inline constexpr std::string_view signatures[][2] = {
    {"__kernel void sum(__global const union InputA* a, __global const union InputB* b, "
     "__global union Result* c, int iNumElements)",
     "__kernel void sum(__global const union InputA* a, __global const union InputB* b, "
     "__global union Result* c, int iNumElements)"},
    {"__kernel void copy(__global const union InputA* a, __global union Result* c, "
     "int iNumElements)",
     "__kernel void copy(__global const union InputA* a,__global union Result* c, "
     "int iNumElements)"},
    {"__kernel void _floor(__global const union InputA* a, __global union Result* c, "
     "int iNumElements)",
     "__kernel void _floor(__global const union InputA* a,__global union Result* c, "
     "int iNumElements)"},
    {"__kernel void multiply(__global const union InputA* a, __global const union InputB* b, "
     "__global union Result* c, int iNumElements)",
     "__kernel void multiply(__global const union InputA* a, __global const union InputB* b, "
     "__global union Result* c, int iNumElements)"},
    {"__kernel void power(__global const union InputA* a, __global union Result* c, "
     "int iNumElements)",
     "__kernel void power(__global const union InputA* a,__global union Result* c, "
     "int iNumElements)"},
};

// By operation: over arrays, over scalars, over vectors. $N is the vector width.
inline constexpr std::string_view statements[][3] = {
    {"c[tid].r[i] = a[tid].a[i] + b[tid].b[i];",  //
     "c[tid].r = a[tid].a + b[tid].b;",           //
     "c[tid].r = convert_float$N(a[tid].a) + b[tid].b;"},
    {"c[tid].r[i] = convert_float(a[tid].a[i]);",  //
     "c[tid].r = convert_float(a[tid].a);",        //
     "c[tid].r = convert_float$N(a[tid].a);"},
    {"c[tid].r[i] = floor(convert_float(a[tid].a[i]));",
     "c[tid].r = floor(convert_float(a[tid].a));", "c[tid].r = floor(convert_float$N(a[tid].a));"},
    {"c[tid].r[i] = a[tid].a[i] * b[tid].b[i];",  //
     "c[tid].r = a[tid].a * b[tid].b;",           //
     "c[tid].r = convert_float$N(a[tid].a) * b[tid].b;"},
    {"c[tid].r[i] = pow(convert_float(a[tid].a[i]),convert_float(i));",
     "c[tid].r = pow(convert_float(a[tid].a),convert_float(tid));",
     "c[tid].r = pow(convert_float$N(a[tid].a),convert_float$N((float$N)tid));"},
};

// For the longest text and its NUL. A text that needs more does not compile.
using Room = std::array<char, 5400>;
inline constexpr Room blanks = [] {
  Room room{};
  room.fill(' ');
  return room;
}();

/// Writes text at the front of a room that already holds blanks.
class Writer {
 public:
  constexpr Writer(Row row, Room& out) : row_(row), out_(out) {}

  constexpr void Write(const Line& line) {
    if (!line.where(row_)) return;
    WriteFilledIn(line.text);
    written_ += static_cast<std::size_t>(line.blanks);
    Put('\n');
  }

  constexpr void End() { Put('\0'); }

 private:
  constexpr void Put(char c) { out_[written_++] = c; }

  constexpr void Write(std::string_view text) {
    for (const char c : text) Put(c);
  }

  constexpr void WriteFilledIn(std::string_view text) {
    bool behindDollar = false;
    for (const char c : text) {
      if (behindDollar) {
        WriteSubstitution(c);
      } else if (c != '$') {
        Put(c);
      }
      behindDollar = c == '$';
    }
  }

  constexpr void WriteSubstitution(char key) {
    switch (key) {
      case 'G':
        return Write(InScalarUint(row_) ? scalarUintGuard : guards[Index(row_.shape)]);
      case 'T':
        Write(elementTypes[Index(row_.elementType)]);
        return Write(widths[Index(row_.shape)]);
      case 'F':
        Write("float");
        return Write(widths[Index(row_.shape)]);
      case 'D':
        return Write(InArrays(row_) ? "[4]" : "");
      case 'N':
        return Write(widths[Index(row_.shape)]);
      case 'S':
        return Write(signatures[Index(row_.operation)][InVectors(row_) ? 1 : 0]);
      case 'B':
        return WriteFilledIn(
            statements[Index(row_.operation)][InArrays(row_) ? 0 : (InScalar(row_) ? 1 : 2)]);
      default:
        throw "the template names a substitution that does not exist";
    }
  }

  Row row_;
  Room& out_;
  std::size_t written_ = 0;
};

template <Row row>
consteval Room Expand() {
  Room text = blanks;
  Writer writer(row, text);
  for (const Line& line : lines) writer.Write(line);
  writer.End();
  return text;
}

template <Row row>
inline constexpr Room text = Expand<row>();

}  // namespace kernel_text

/// The complete text of a row, NUL-terminated, in static storage. `Layout` is the row's Unions.
template <Operation operation, class Layout>
inline constexpr const char* KernelText =
    kernel_text::text<kernel_text::Row{operation, Layout::shape, Layout::elementType}>.data();
