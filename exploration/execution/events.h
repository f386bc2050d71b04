#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "common/workers/runner.h"

// What a runner tells while it does a task, in memory that outlives it.

namespace exploration {

struct Event {
  enum class Kind : std::uint8_t {
    call,    ///< About to be made: its name.
    failed,  ///< The call did: its code, four bytes.
    log,     ///< Of the build, or what is to be said of a task that cannot be done.
    answer,  ///< What a buffer holds after a run; in the order of buffers, and then of runs.
    status,  ///< Of a compiler's process, as from waitpid: four bytes.
    cannot,  ///< The task can't be done, and the bytes say why.
    done
  };
  Kind kind = Kind::done;
  std::string_view bytes;

  /// Of four bytes.
  std::int32_t Number() const;
};

void Tell(workers::SharedBytes& answer, Event::Kind kind, std::string_view bytes = {});
void Tell(workers::SharedBytes& answer, Event::Kind kind, std::int32_t number);

/// As far as they go; they refer to `bytes`.
std::vector<Event> EventsIn(std::string_view bytes);

}  // namespace exploration
