#pragma once

#include <span>
#include <string_view>

// The list of the rows, in the order of the test matrix: the operations and, within them, the
// shapes by their names as strings, then the element types. ALL_ROWS(ROW) writes ROW(name) for
// each, with no separator.
#define ROWS_OF_LAYOUT(ROW, name) \
  ROW(name##_1) ROW(name##_2) ROW(name##_3) ROW(name##_4) ROW(name##_5) ROW(name##_6)
#define ROWS_OF_OPERATION(ROW, name)         \
  ROWS_OF_LAYOUT(ROW, name##_union_arrays)   \
  ROWS_OF_LAYOUT(ROW, name##_union_scalar)   \
  ROWS_OF_LAYOUT(ROW, name##_union_vector16) \
  ROWS_OF_LAYOUT(ROW, name##_union_vector2)  \
  ROWS_OF_LAYOUT(ROW, name##_union_vector3)  \
  ROWS_OF_LAYOUT(ROW, name##_union_vector4)  \
  ROWS_OF_LAYOUT(ROW, name##_union_vector8)
#define ALL_ROWS(ROW)              \
  ROWS_OF_OPERATION(ROW, add)      \
  ROWS_OF_OPERATION(ROW, copy)     \
  ROWS_OF_OPERATION(ROW, floor)    \
  ROWS_OF_OPERATION(ROW, multiply) \
  ROWS_OF_OPERATION(ROW, power)

// The runners, each in its row's file. A runner returns 1 if its test counts as passed and 0 if
// not, takes no arguments, and keeps nothing between calls but its place in the stream of
// std::rand.
#define DECLARE(name) int RunTest_##name();
ALL_ROWS(DECLARE)
#undef DECLARE

/// A row's name, for instance "add_union_arrays_1", and its runner.
struct NamedRunner {
  std::string_view name;
  int (*run)();
};

/// All rows, in the order of the matrix.
#define NAME(name) {#name, RunTest_##name},
inline constexpr NamedRunner rows[] = {ALL_ROWS(NAME)};
#undef NAME

/// The rows that a run takes, in their order: all but the power family, which comes last. All draw
/// from one stream, so the place of a row decides its data.
inline constexpr std::span schedule = std::span(rows).first<168>();

#undef ROWS_OF_LAYOUT
#undef ROWS_OF_OPERATION
#undef ALL_ROWS
