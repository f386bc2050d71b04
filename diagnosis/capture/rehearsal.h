#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace diagnosis {

/// A row's own constants, learnt from the row itself.
struct Rehearsed {
  std::string_view name;
  std::string source;  // the kernel text, as the device gets it
  std::string kernel;
  std::size_t stride = 0;  // bytes of a union
  std::size_t drawsPerRepetition = 0;
  int repetitions = 0;          // launches
  int runLines = 0;             // RUN lines, of which one repetition can have several
  std::uint32_t tolerance = 0;  // in units in the last place; 0 is exact

  // The place in the matrix's order.
  std::size_t drawsBefore = 0;  // numbers drawn by all rows before it
  bool scheduled = false;
};

/// All rows, in the order of the matrix, each run once in this process on no device at all: the
/// calls of OpenCL are answered here, and what the rows write goes nowhere. This takes some
/// milliseconds at the first call. Not for a process that runs rows at the same time.
const std::vector<Rehearsed>& Rehearsal();

}  // namespace diagnosis
