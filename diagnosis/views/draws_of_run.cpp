#include "diagnosis/views/draws_of_run.h"

#include <fmt/format.h>

#include <algorithm>

namespace diagnosis {

std::string DrawsOfRun(const Run& run) {
  const auto rows = std::ranges::count_if(run.records, &Record::randDrawn);
  if (rows == 0) return "";
  return fmt::format(
      "The driver draws from rand in {} row{}. The suite shares that stream with it: there its "
      "data are "
      "others than these, and may change from run to run.\n",
      rows, rows == 1 ? "" : "s");
}

}  // namespace diagnosis
