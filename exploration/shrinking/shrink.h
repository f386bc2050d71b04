#pragma once

#include <cstddef>
#include <functional>
#include <vector>

#include "exploration/program/program.h"
#include "exploration/program/runnable.h"

namespace exploration {

/// A program and what its model makes of it.
struct Candidate {
  Program program;
  RunnableProgram runnable;
};

/// Of each of them whether it goes wrong in the way in question.
using StillWrong = std::function<std::vector<bool>(const std::vector<Candidate>&)>;

struct ShrinkLimits {
  int tries = 2000;
  /// How many candidates are asked for at once. What comes out does not depend on it.
  int atOnce = 1;
  int confirmations = 3;  ///< So many runs of what comes out must go wrong.
  /// Only whole statements and variables are left out, which is quick.
  bool isCoarse = false;
};

struct Shrunk {
  Candidate smallest;
  int tries = 0;
  bool isComplete = false;  ///< No step makes it smaller; otherwise the tries were used up.
};

/// The smallest program that the passes lead to. `program` must be valid and go wrong itself.
Shrunk Shrink(const Program& program, const StillWrong& stillWrong, const ShrinkLimits& limits);

/// How large a program is: less is plainer, whatever it consists of.
struct Size {
  std::size_t weight = 0;  ///< Nodes, members, parameters, work-items, and so on.
  std::size_t text = 0;    ///< Letters.
  std::size_t bits = 0;    ///< That are set in inputs and buffers.

  auto operator<=>(const Size&) const = default;
};
Size SizeOf(const Candidate& candidate);

}  // namespace exploration
