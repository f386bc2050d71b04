#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "exploration/program/program.h"
#include "exploration/program/runnable.h"

namespace exploration {

struct Options {
  std::optional<Space> space;        ///< Where all unions lie.
  std::vector<std::string> only;     ///< Features that may be used; empty for all.
  std::vector<std::string> without;  ///< Features that may not.
  bool hasDouble = false;            ///< What the device has.
  bool hasHalf = false;              ///< cl_khr_fp16.
  bool hasAnonymousMembers = false;  ///< The compiler takes them, though the language has none.
};

/// The program of that number, the same on every machine. Throws text::BadUse if a name in the
/// options is no feature's, or if they leave nothing to draw.
Program Draw(std::uint64_t seed, std::uint64_t number, const Options& options);

/// With its model's answers and its features. Throws Invalid if the program is not valid, which one
/// that was drawn never is.
RunnableProgram MakeRunnable(const Program& program);

}  // namespace exploration
