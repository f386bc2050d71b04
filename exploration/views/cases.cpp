#include "exploration/views/cases.h"

#include <fmt/format.h>

#include <vector>

#include "common/outputs/junit.h"
#include "exploration/views/report.h"

namespace exploration {
namespace {

outputs::Kind KindOf(const std::string& kind) {
  if (kind == NameOf(Outcome::Kind::hung)) return outputs::Kind::timedOut;
  if (kind == NameOf(Outcome::Kind::wrongAnswer) || kind == NameOf(Outcome::Kind::unsteady))
    return outputs::Kind::failed;
  return outputs::Kind::error;
}

outputs::Case CaseOf(const FaultRecord& fault) {
  outputs::Case one;
  one.name = fault.name;
  one.group = "faults";
  one.status = fault.kind;
  one.kind = KindOf(fault.kind);
  one.asExpected = false;
  one.line = fault.title;
  one.cause = fault.told;
  one.properties = {{"findings", fmt::format("{}", fmt::join(fault.findings, " "))},
                    {"features", fmt::format("{}", fmt::join(fault.features, " "))}};
  one.out = fault.text;
  one.err = fault.log;
  return one;
}

// That nothing else was found means nothing there.
outputs::Case CaseOfEnding(const RunRecord& run) {
  outputs::Case one;
  one.name = "run";
  one.group = "runs";
  one.status = "not finished";
  one.kind = outputs::Kind::error;
  one.asExpected = false;
  one.line = run.ending;
  one.cause = run.ending;
  return one;
}

}  // namespace

std::string JUnitOf(const RunRecord& run) {
  std::vector<outputs::Case> cases;
  for (const FaultRecord& fault : run.faults) cases.push_back(CaseOf(fault));
  if (!run.IsFinished()) cases.push_back(CaseOfEnding(run));
  if (cases.empty()) {
    outputs::Case none;
    none.name = "no_fault";
    none.group = "faults";
    none.status = "none";
    // Of what nobody has looked into it isn't known.
    if (run.open > 0 || run.notRun > 0) {
      none.kind = outputs::Kind::notReached;
      none.asExpected = false;
      none.line = TotalsOf(run);
    }
    cases.push_back(none);
  }
  outputs::SuiteInfo info;
  info.name = "union explore";
  info.classPrefix = "union_explore";
  info.start = run.start;
  info.properties = {{"version", run.version},
                     {"device", DeviceLine(run.device)},
                     {"host", run.host},
                     {"totals", TotalsOf(run)}};
  for (const auto& [name, value] : run.options) info.properties.emplace_back(name, value);
  return outputs::JUnitOf(info, cases);
}

}  // namespace exploration
