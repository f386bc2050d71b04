#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace outputs {

/// What became of a case that was selected. The first eight are what its run alone tells; the last
/// three need expected results, or a second run.
enum class Status {
  pass,
  fail,        // an answer is wrong
  buildError,  // it could not be built
  error,       // any other call failed
  crash,       // the process ended in mid-case
  timeout,
  skip,
  missing,  // never reached
  expectedFail,
  unexpectedPass,
  flake,  // ended otherwise when run once more
};
inline constexpr std::size_t statuses = static_cast<std::size_t>(Status::flake) + 1;

/// "Pass", "Fail", "BuildError", ...
std::string_view NameOf(Status status);

/// The status of that name, or nothing.
std::optional<Status> StatusNamed(std::string_view name);

}  // namespace outputs
