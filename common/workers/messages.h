#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>

#include "common/workers/jobs.h"

// What the pool and a worker say to each other. The pool alone has a clock: the worker reports in
// which phase it is, and gives up what it is told to.

namespace workers {

/// The pool's orders.
struct Task {
  std::string bytes;
  bool freshRunner = false;
};
struct GiveUp {
  std::uint32_t phase = 0;  // unless it is over
};
struct Finish {};  // let the runner come to an end of its own, and end

/// A phase of a worker's life that may take too long. A task is in the phase `running` from the
/// order on, without a report, if the worker reports none.
struct Phase {
  enum class Kind { starting, running, ending };  // of a runner
  Kind kind = Kind::starting;
  std::uint32_t number = 0;  // counts the reports
};

/// The other things that a worker says: the device, which comes first; why there is none as it is
/// wanted; that no runner can be had, in its place or a task's; what became of a task.
struct Up {
  std::string device;
};
struct NoDevice {
  std::string reason;
};
struct NoRunner {
  std::string reason;
};
struct Ended {
  Answer answer;
};

using Order = std::variant<Task, GiveUp, Finish>;
using Report = std::variant<Phase, Up, NoDevice, NoRunner, Ended>;

/// A message in CBOR.
std::string Packed(const Order& order);
std::string Packed(const Report& report);

/// And back. Throw std::runtime_error if it is nothing of the kind.
Order OrderFrom(std::string_view bytes);
Report ReportFrom(std::string_view bytes);

}  // namespace workers
