#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "diagnosis/record/record.h"

namespace diagnosis {

/// A way to run a row with one thing otherwise than the suite has it.
struct Variation {
  const char* name;
  const char* buildOptions = "";
  std::uint64_t localSize = 0;
  int passes = 1;
};

/// Those that `triage vary` runs a row in, each in a worker of its own; the first is the suite's
/// way.
std::span<const Variation> Variations();

/// The records of these, row by row and all variations of a row in their order, as a table: what
/// was otherwise, and what became of the row. Line ends included.
std::string TableOfVariations(const Run& run);

}  // namespace diagnosis
