#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "diagnosis/record/row.h"

namespace diagnosis {

/// A row's own constants: what its name does not tell.
struct RowFacts {
  Row row;
  std::string_view kernel;
  int fills = 1;  // of each lane in a repetition, each over the one before
  std::size_t drawsPerRepetition = 0;
  int repetitions = 0;          // launches
  int runLines = 0;             // RUN lines, of which one repetition can have several
  std::uint32_t tolerance = 0;  // in units in the last place; 0 is exact

  // The place in the matrix's order.
  std::size_t drawsBefore = 0;  // numbers drawn by all rows before it
  bool scheduled = false;
};

/// All rows, in the order of the matrix.
const std::vector<RowFacts>& FactsOfRows();

/// The row of that name, or null.
const RowFacts* FactsOf(std::string_view name);

/// The kernel text of a row, as the device gets it.
std::string KernelTextOf(const Row& row);

/// What the suite holds the answer of a power row against, in the host's rounding mode.
float SuitesPower(float base, int exponent);

}  // namespace diagnosis
