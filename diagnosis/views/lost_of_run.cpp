#include "diagnosis/views/lost_of_run.h"

#include <fmt/format.h>

#include <algorithm>

namespace diagnosis {

std::string LostOfRun(const Run& run) {
  const auto rows = std::ranges::count_if(
      run.records, [](const Record& record) { return !record.ending.lostFirst.empty(); });
  if (rows == 0) return "";
  return fmt::format("{} row{} run once more, because the first worker was lost.\n", rows,
                     rows == 1 ? " was" : "s were");
}

}  // namespace diagnosis
