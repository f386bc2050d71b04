#include "diagnosis/localization/analysis.h"

#include <algorithm>
#include <charconv>
#include <utility>

namespace diagnosis {

const RowResult* Analysis::Find(std::string_view row) const {
  const auto found =
      std::ranges::find(rows, row, [](const RowResult& result) { return result.record->row; });
  return found == rows.end() ? nullptr : &*found;
}

Analysis AnalysisOf(const Run& run, const Expectations& expectations) {
  std::vector<RowResult> rows;
  rows.reserve(run.records.size());
  for (const Record& record : run.records)
    rows.push_back(ResultOf(record, run.info.device, expectations));
  return AnalysisOf(run, std::move(rows), expectations.strict);
}

Analysis AnalysisOf(const Run& run, std::vector<RowResult> rows, bool isStrict) {
  Analysis analysis{&run, std::move(rows), {}, {}, isStrict, RunsOfEach(run.info)};
  analysis.totals = TotalsOf(analysis.rows, analysis.runsOfEach);
  analysis.suspects = SuspectsOf(analysis.rows, run.info.device);
  return analysis;
}

std::size_t RunsOfEach(const RunInfo& info) {
  const auto found = info.options.find("repeat");
  int runs = 1;
  if (found != info.options.end())
    std::from_chars(found->second.data(), found->second.data() + found->second.size(), runs);
  return static_cast<std::size_t>(std::max(1, runs));
}

Expectations ExpectationsOf(const RunInfo& info) {
  Expectations expectations;
  for (const auto& [row, status] : info.expected)
    expectations.baseline[row] = StatusNamed(status).value_or(Status::pass);
  const auto is = [&info](const char* option, const char* value) {
    const auto found = info.options.find(option);
    return found != info.options.end() && found->second == value;
  };
  // Where a row is run once, a failure is one, also if it went away with a context of the row's
  // own.
  expectations.flakesFail = is("strict flakes", "yes") || (is("baseline", "") && is("repeat", "1"));
  expectations.strict = is("strict", "yes");
  return expectations;
}

}  // namespace diagnosis
