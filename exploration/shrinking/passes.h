#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string_view>

#include "exploration/program/program.h"

namespace exploration {

/// One kind of thing that can be taken out of a program, or made plainer.
struct Pass {
  std::string_view name;
  /// The program after the step of that number, which need not be valid, nor different; nothing
  /// behind the last step.
  std::optional<Program> (*step)(const Program& program, std::size_t number);
};

/// In the order in which they are best tried: what takes most out comes first.
std::span<const Pass> Passes();
/// The first ones, which leave out whole statements.
inline constexpr std::size_t coarsePasses = 4;

}  // namespace exploration
