#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "harness/rows.h"

namespace diagnosis {

/// A row's own constants, learnt from the row itself.
struct Profile {
  std::string source;  // the kernel text, as the device gets it
  std::string kernel;
  std::size_t stride = 0;  // bytes of a union
  std::size_t drawsPerRepetition = 0;
  int repetitions = 0;          // launches
  int runLines = 0;             // RUN lines, of which one repetition can have several
  std::uint32_t tolerance = 0;  // in units in the last place; 0 is exact
};

/// Runs a row in this process on no device at all: the calls of OpenCL are answered here, and what
/// the row writes goes nowhere. What the row throws goes through. Not for a process that runs rows
/// at the same time.
Profile DryRun(const NamedRunner& runner);

}  // namespace diagnosis
