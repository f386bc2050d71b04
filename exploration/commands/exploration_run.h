#pragma once

#include <cstdint>
#include <limits>
#include <string>

#include "exploration/commands/command.h"

namespace exploration {

struct RunOptions {
  /// How many programs are run; the time counts where this is not said.
  std::uint64_t programs = std::numeric_limits<std::uint64_t>::max();
  double seconds = 60;
  std::uint64_t seed = 1;
  std::uint64_t shard = 1;
  std::uint64_t shards = 1;
  std::uint64_t faults = std::numeric_limits<std::uint64_t>::max();
  Options drawing;
  WorkOptions work;
  bool customary = false;
  std::string folder;
  bool replace = false;
};

/// Returns the program's status.
int Run(const RunOptions& options, const command_line::Call& call);

}  // namespace exploration
