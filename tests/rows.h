#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "tests/scripted_opencl.h"

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

enum class Denormals { kept, flushed };

/// A device that computes what the row's kernel says, in the host's rounding mode. It reads the
/// buffers as bytes.
Device DeviceFor(const Row& row, Denormals denormals = Denormals::flushed);

/// The same, and then `wrong` may spoil the results: it is called for each of the first ten
/// elements and each lane of the result with the number of the launch, from 1.
Device DeviceFor(const Row& row,
                 const std::function<float(int launch, int element, int lane, float right)>& wrong);
