#include "exploration/views/replayed.h"

#include <fmt/format.h>

#include <algorithm>

#include "common/text/text.h"

namespace exploration {

using outputs::Status;

Status StatusOf(const Outcome& outcome) {
  // In the order of Outcome::Kind.
  constexpr Status statuses[] = {Status::pass,  Status::fail,  Status::fail,    Status::buildError,
                                 Status::error, Status::crash, Status::timeout, Status::missing};
  return statuses[static_cast<std::size_t>(outcome.kind)];
}

Replayed ReplayedAs(const std::string& name, const std::vector<Outcome>& runs, Status expected) {
  Replayed program{name, Status::missing, false, "not reached"};
  if (runs.empty()) return program;
  const auto bad =
      std::ranges::find_if(runs, [](const Outcome& run) { return StatusOf(run) != Status::pass; });
  const Status ended = StatusOf(runs.front());
  if (bad != runs.end())
    program.detail =
        bad->kind == Outcome::Kind::notRun ? text::PrintableLine(bad->text) : Told(*bad);
  else
    program.detail.clear();
  const bool isFlake =
      std::ranges::any_of(runs, [ended](const Outcome& run) { return StatusOf(run) != ended; });
  program.verdict = ended;
  program.asExpected = ended == expected;
  const bool isResult = expected != Status::skip && expected != Status::missing;
  if (isFlake || expected == Status::flake) {
    program.asExpected = ended != Status::missing;
    if (isFlake || (program.asExpected && ended != Status::pass)) program.verdict = Status::flake;
  } else if (ended == Status::pass && !isResult) {
    program.asExpected = true;
  } else if (program.asExpected && ended != Status::pass) {
    program.verdict = Status::expectedFail;
  } else if (ended == Status::pass && !program.asExpected) {
    program.verdict = Status::unexpectedPass;
    program.detail = fmt::format("expected {}", NameOf(expected));
  } else if (!program.asExpected && expected != Status::pass && isResult) {
    program.detail += fmt::format(" (expected {})", NameOf(expected));
  }
  return program;
}

std::string TotalsOf(const std::vector<Replayed>& programs) {
  std::string totals = text::Counted(programs.size(), "program");
  std::string_view before = ": ";
  for (std::size_t i = 0; i < outputs::statuses; ++i) {
    const auto status = static_cast<Status>(i);
    const auto count = std::ranges::count(programs, status, &Replayed::verdict);
    if (count == 0) continue;
    totals += fmt::format("{}{} {}", before, count, NameOf(status));
    before = ", ";
  }
  const auto others = std::ranges::count(programs, false, &Replayed::asExpected);
  return totals + (others == 0 ? "; all as expected" : fmt::format("; {} not as expected", others));
}

}  // namespace exploration
