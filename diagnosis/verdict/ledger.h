#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "diagnosis/record/record.h"

namespace diagnosis {

/// What became of a selected row. The first eight are what a record alone tells; the last three
/// need expected results, or a second run.
enum class Status {
  pass,
  fail,        // a mismatch
  buildError,  // clBuildProgram
  error,       // any other OpenCL call
  crash,       // the process ended in mid-row
  timeout,
  skip,
  missing,  // never reached
  expectedFail,
  unexpectedPass,
  flake,  // ended otherwise when run once more on the same data
};
inline constexpr std::size_t statuses = static_cast<std::size_t>(Status::flake) + 1;

/// "Pass", "Fail", "BuildError", ...
std::string_view NameOf(Status status);

/// What it says of the row: the end of a sentence that begins with "The row".
std::string_view MeaningOf(Status status);

/// The status of that name, or nothing.
std::optional<Status> StatusNamed(std::string_view name);

/// Whether the row says in this repetition which value it rejected.
bool FoundMismatch(const Repetition& repetition);

/// The status of a record by itself: one of the first eight.
Status StatusOf(const Record& record);

/// What stands behind the status in one line, for instance "clEnqueueNDRangeKernel(-5) in
/// repetition 5" or "SIGSEGV in repetition 2"; the mismatch line of a Fail; empty for a Pass.
std::string DetailOf(const Record& record);

}  // namespace diagnosis
