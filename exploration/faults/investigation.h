#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "exploration/execution/device.h"
#include "exploration/faults/fault.h"

namespace exploration {

/// The outcome of every task, in their order.
using TryAll = std::function<std::vector<Outcome>(const std::vector<Task>&)>;

struct InvestigationOptions {
  std::string buildOptions;
  std::string compiler;  ///< In place of a device, as in Task.
  double seconds = 60;   ///< That a program may take.
  Device device;         ///< Decides which settings are tried.
  ShrinkLimits limits;
};

/// What an investigation has come to.
struct Conclusion {
  enum class Kind {
    newFault,
    knownFault,  ///< `known` is its number.
    vanished     ///< It went right when it was run again.
  };
  Kind kind = Kind::vanished;
  std::size_t known = 0;
  std::optional<Fault> fault;  ///< A new one, or what a known one looks like in this finding.
};

/// Runs the finding again, shrinks it unless a known fault explains it, and tries the settings.
Conclusion Investigated(const Finding& finding, const std::vector<Fault>& known,
                        const InvestigationOptions& options, const TryAll& tryAll);

}  // namespace exploration
