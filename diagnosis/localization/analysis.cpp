#include "diagnosis/localization/analysis.h"

#include <algorithm>
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
  Analysis analysis{&run, std::move(rows), {}, {}, isStrict};
  analysis.totals = TotalsOf(analysis.rows);
  analysis.suspects = SuspectsOf(analysis.rows, run.info.device);
  return analysis;
}

Expectations ExpectationsOf(const RunInfo& info) {
  Expectations expectations;
  for (const auto& [row, status] : info.expected)
    expectations.baseline[row] = StatusNamed(status).value_or(Status::pass);
  const auto isOn = [&info](const char* option) {
    const auto found = info.options.find(option);
    return found != info.options.end() && found->second == "yes";
  };
  expectations.flakesFail = isOn("strict flakes");
  expectations.strict = isOn("strict");
  return expectations;
}

}  // namespace diagnosis
