#include "diagnosis/views/cases.h"

#include <fmt/format.h>

#include <array>

namespace diagnosis {

namespace {

// In the order of the enumeration.
constexpr std::array<outputs::Kind, statuses> kinds = {
    outputs::Kind::passed,        // Pass
    outputs::Kind::failed,        // Fail
    outputs::Kind::error,         // BuildError
    outputs::Kind::error,         // Error
    outputs::Kind::error,         // Crash
    outputs::Kind::timedOut,      // Timeout
    outputs::Kind::skipped,       // Skip
    outputs::Kind::notReached,    // Missing
    outputs::Kind::knownFailure,  // ExpectedFail
    outputs::Kind::noted,         // UnexpectedPass
    outputs::Kind::noted,         // Flake
};

// What OpenCL says to what the suite has found.
std::string OpenClOn(const Opinion& opinion) {
  switch (opinion.verdict) {
    case Opinion::Verdict::right:
      return "Every lane is right by OpenCL's rules.\n";
    case Opinion::Verdict::wrong:
      return fmt::format("By OpenCL's rules {} of {} lanes are wrong.\n", opinion.wrong.size(),
                         opinion.lanes);
    case Opinion::Verdict::unseen:
      break;
  }
  return "";
}

}  // namespace

outputs::Case CaseOf(const RowResult& row) {
  const std::string& name = row.record->row;
  return {.name = name,
          .group = name.substr(0, name.find('_')),
          .status = std::string(NameOf(row.verdict)),
          .kind = kinds.at(static_cast<std::size_t>(row.verdict)),
          .asExpected = row.asExpected,
          .isNews = row.isNews,
          .line = row.detail,
          .remark = row.remark,
          .seconds = row.record->seconds};
}

outputs::Case FullCaseOf(const RowResult& row) {
  const Record& record = *row.record;
  outputs::Case one = CaseOf(row);
  one.properties = {{"suite", std::string(NameOf(row.status))},
                    {"opinion", std::string(NameOf(row.opinion.verdict))}};
  if (!row.remark.empty()) one.properties.emplace_back("remark", row.remark);
  if (row.status == Status::buildError) one.cause = row.detail + "\n" + record.buildLog;
  if (row.status == Status::fail) one.cause = row.detail + "\n" + OpenClOn(row.opinion);
  one.out = record.out;
  one.err = record.err;
  if (!record.driver.empty()) one.err += "What the driver wrote:\n" + record.driver;
  return one;
}

void TakeAsCutShort(outputs::Case& one, const RowResult& row, std::size_t runsOfEach) {
  if (!one.asExpected || !IsCutShort(*row.record, runsOfEach)) return;
  const std::string before = one.line.empty() ? "" : "; " + one.status + ": " + one.line;
  one.line = fmt::format("incomplete: {} of {} runs{}", RunsOf(*row.record), runsOfEach, before);
  one.status = NameOf(Status::missing);
  one.kind = outputs::Kind::error;
  one.asExpected = false;
}

}  // namespace diagnosis
