#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "common/outputs/baseline.h"
#include "exploration/execution/outcome.h"

namespace exploration {

/// The status of a run by itself.
outputs::Status StatusOf(const Outcome& outcome);

/// What a program of the corpus came to.
struct Replayed {
  std::string name;
  outputs::Status verdict = outputs::Status::missing;
  bool asExpected = false;
  std::string detail;  ///< What stands behind the verdict, one line; empty for a pass.
};

/// Of its runs, of which there are two at most, against what was expected: a second one that ends
/// otherwise makes it a flake, which is as expected. Without any it was not reached.
Replayed ReplayedAs(const std::string& name, const std::vector<Outcome>& runs,
                    outputs::Status expected);

/// "12 programs: 10 Pass, 2 ExpectedFail; all as expected".
std::string TotalsOf(const std::vector<Replayed>& programs);

}  // namespace exploration
