#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "diagnosis/localization/suspects.h"
#include "diagnosis/record/record.h"
#include "diagnosis/verdict/row_result.h"

namespace diagnosis {

/// What a whole run comes to, computed once and handed to every view and output. The run outlives
/// it, and stays where it is.
struct Analysis {
  const Run* run;
  std::vector<RowResult> rows;  // one for each record, in the order of the run
  Totals totals;
  Suspects suspects;
  bool isStrict = false;       // whether the second opinion judged
  std::size_t runsOfEach = 1;  // of the rows, as the run was to make them

  /// The row of that name, or null.
  const RowResult* Find(std::string_view row) const;
};

Analysis AnalysisOf(const Run& run, const Expectations& expectations);

/// The same where `rows` are known already, one for each record in their order.
Analysis AnalysisOf(const Run& run, std::vector<RowResult> rows, bool isStrict);

/// How often the run was to run each row, as it says itself.
std::size_t RunsOfEach(const RunInfo& info);

/// What the run itself says was expected of it.
Expectations ExpectationsOf(const RunInfo& info);

}  // namespace diagnosis
