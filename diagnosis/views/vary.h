#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "common/workers/pool.h"
#include "diagnosis/record/record.h"

namespace diagnosis {

/// The jobs that `triage vary` runs for a row, each in a worker of its own: as the suite does it
/// first, and then with one thing otherwise.
std::vector<Job> VariationsOf(std::size_t row);

/// The records of these jobs, row by row in their order, as a table: what was otherwise, and what
/// became of the row. Line ends included.
std::string TableOfVariations(const std::vector<Job>& jobs, const Run& run);

}  // namespace diagnosis
