#include "common/outputs/status.h"

#include <algorithm>
#include <iterator>

namespace outputs {
namespace {

// In the order of the enumeration.
constexpr std::string_view names[] = {"Pass",         "Fail",           "BuildError", "Error",
                                      "Crash",        "Timeout",        "Skip",       "Missing",
                                      "ExpectedFail", "UnexpectedPass", "Flake"};
static_assert(std::size(names) == statuses);

}  // namespace

std::string_view NameOf(Status status) { return names[static_cast<std::size_t>(status)]; }

std::optional<Status> StatusNamed(std::string_view name) {
  const auto* const found = std::ranges::find(names, name);
  if (found == std::end(names)) return std::nullopt;
  return static_cast<Status>(found - std::begin(names));
}

}  // namespace outputs
