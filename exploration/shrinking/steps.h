#pragma once

#include <cstddef>
#include <optional>

#include "exploration/program/program.h"

namespace exploration {

// The steps of all passes, as Pass::step says.
#define PASS(name, step) std::optional<Program> step(const Program& program, std::size_t number);
#include "exploration/shrinking/list.h"
#undef PASS

}  // namespace exploration
