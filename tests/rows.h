#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

/// A row of the test matrix as the tests know it: by its name, from which its layout is worked out
/// here a second time, apart from the suite.
struct Row {
  std::string name;
  int (*run)();

  std::string operation;  // "add", "copy", ...
  std::string shape;      // "arrays", "scalar", "vector2", ...
  int variant;            // 1 to 6

  int lanes;
  std::size_t stride;  // bytes of a union
  std::size_t width;   // bytes of an element lane
  bool isSigned;       // the element
  bool twoInputs;
};

/// All rows, in the order of the matrix.
const std::vector<Row>& Rows();

/// The row of that name.
const Row& RowNamed(const std::string& name);

/// The RUN lines of the row.
int RunLines(const Row& row);

/// How often it really runs for them.
int Runs(const Row& row);

int DrawsPerRun(const Row& row);

/// The line that names the row.
std::string Announcement(const Row& row);

/// The row's tolerance in units in the last place; 0 where the check is exact.
std::uint32_t Tolerance(const Row& row);

/// Lane `lane` of the element member at `element`, of which these are the bytes, converted.
float IntegerLane(const Row& row, std::span<const std::byte> element, int lane);

/// Lane `lane` of a float member.
float FloatLane(std::span<const std::byte> element, int lane);
