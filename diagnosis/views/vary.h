#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "diagnosis/record/record.h"

namespace diagnosis {

/// A way to run a row with one thing otherwise than the suite has it.
struct Variation {
  std::string name;
  std::string buildOptions{};
  std::uint64_t localSize = 0;
  int passes = 1;
  std::string environment{};  // "NAME=VALUE" for the driver; empty for the caller's own
};

/// Those that `triage vary` runs a row in, each in a worker of its own; the first is the suite's
/// way, and the caller's build options and environments are behind the built-in ones.
std::vector<Variation> Variations(const std::vector<std::string>& buildOptions,
                                  const std::vector<std::string>& environments);

/// The records of these, row by row and all variations of a row in their order, as a table: what
/// was otherwise, and what became of the row. Line ends included.
std::string TableOfVariations(const std::vector<Variation>& variations, const Run& run);

}  // namespace diagnosis
