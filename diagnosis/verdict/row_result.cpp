#include "diagnosis/verdict/row_result.h"

#include <fmt/format.h>

#include <algorithm>
#include <functional>
#include <set>
#include <string_view>

#include "common/text/text.h"

namespace diagnosis {

namespace {

Status ExpectedOf(const std::string& row, const Baseline& baseline) {
  const auto entry = baseline.find(row);
  return entry == baseline.end() ? Status::pass : entry->second;
}

bool Overrules(Status status, Opinion::Verdict opinion) {
  return (status == Status::pass && opinion == Opinion::Verdict::wrong) ||
         (status == Status::fail && opinion == Opinion::Verdict::right);
}

// The lanes' bytes: what else is in a union nobody wrote.
std::uint64_t AnswerOf(const Record& record, Status status) {
  std::string answer(1, static_cast<char>(status));
  const std::optional<Row> row = RowNamed(record.row);
  for (const Repetition& repetition : record.repetitions) {
    const Bytes& result = repetition.result;
    answer += result.empty() ? '-' : '+';
    if (!row) continue;
    const std::size_t size = static_cast<std::size_t>(row->lanes) * sizeof(float);
    for (std::size_t at = 0; at + size <= result.size() && at < row->stride * elementsOfRow;
         at += row->stride)
      answer.append(reinterpret_cast<const char*>(&result[at]), size);
  }
  return std::hash<std::string>()(answer);
}

std::string WrongIn(const Opinion& opinion) {
  return fmt::format("wrong by OpenCL's rules in {} of {} lanes", opinion.wrong.size(),
                     opinion.lanes);
}

Judged JudgedOf(const Record& record, const Opinion& opinion, bool strict) {
  const Status status = StatusOf(record);
  Judged run{status, status, DetailOf(record), AnswerOf(record, status)};
  if (strict && Overrules(status, opinion.verdict)) {
    run.verdict = status == Status::pass ? Status::fail : Status::pass;
    run.detail =
        status == Status::pass ? WrongIn(opinion) + ", though the suite passed it" : std::string();
  }
  return run;
}

// How who does not judge sees the first run.
std::string RemarkOn(const RowResult& row) {
  if (!Overrules(row.status, row.opinion.verdict)) return "";
  if (row.runs.front().verdict != Status::pass) return "";
  if (row.status == Status::pass) return WrongIn(row.opinion) + ", though the suite passed it";
  return fmt::format("right by OpenCL's rules, though the suite failed it: {}",
                     DetailOf(*row.record));
}

bool Differ(const std::vector<Judged>& runs, Status Judged::*by) {
  const Status first = runs.front().*by;
  const auto isOther = [&](const Judged& run) { return run.*by != first; };
  const auto answersOther = [&](const Judged& run) { return run.answer != runs.front().answer; };
  return std::ranges::any_of(runs, isOther) ||
         (first == Status::pass && std::ranges::any_of(runs, answersOther));
}

// "3 of 20 wrong, two different answers"; nothing of runs that all came to the same.
std::string CountsOf(const std::vector<Judged>& runs) {
  std::set<std::uint64_t> answers;
  for (const Judged& run : runs) answers.insert(run.answer);
  if (answers.size() < 2) return "";
  const auto isWrong = [](const Judged& run) { return run.verdict != Status::pass; };
  constexpr std::string_view words[] = {"two", "three", "four",  "five",
                                        "six", "seven", "eight", "nine"};
  const std::size_t count = answers.size();
  return fmt::format("{} of {} wrong, {} different answers", std::ranges::count_if(runs, isWrong),
                     runs.size(),
                     count < 10 ? std::string(words[count - 2]) : std::to_string(count));
}

// Where a run in a shared context came to something else than one in a context of its own, what.
std::string ContextsOf(const Record& record) {
  if (!record.inShared.empty())
    return fmt::format("{} in a shared context, {} in one of its own",
                       NameOf(StatusOf(record.inShared.front())), NameOf(StatusOf(record)));
  const auto other = std::ranges::find_if(
      record.again, [](const Record& again) { return !again.inShared.empty(); });
  return other == record.again.end() ? "" : ContextsOf(*other);
}

// Takes a run, and with it the one in a shared context that it stands for.
void Take(RowResult& row, const Record& record, const Opinion& opinion, const Device& device,
          bool strict) {
  row.runs.push_back(JudgedOf(record, opinion, strict));
  for (const Record& shared : record.inShared)
    row.runs.push_back(JudgedOf(shared, OpinionOf(shared, device), strict));
}

// Says what the runs come to, against what was expected.
void Settle(RowResult& row, const Expectations& expectations) {
  const Judged& first = row.runs.front();
  const Status ended = first.verdict;
  const bool isFlake = Differ(row.runs, &Judged::verdict);
  row.category = Differ(row.runs, &Judged::status) ? Category::flake
                                                   : CategoryOf(row.status, row.opinion.verdict);

  const auto bad =
      std::ranges::find_if(row.runs, [](const Judged& run) { return run.verdict != Status::pass; });
  row.detail = (bad == row.runs.end() ? first : *bad).detail;
  if (const std::string counts = CountsOf(row.runs); !counts.empty())
    row.detail = counts + (row.detail.empty() ? "" : ": " + row.detail);

  if (const std::string contexts = ContextsOf(*row.record); !contexts.empty())
    row.detail = contexts + (row.detail.empty() ? "" : ": " + row.detail);

  row.verdict = ended;
  row.asExpected = ended == row.expected || ended == Status::skip;
  const bool isResult = row.expected != Status::skip && row.expected != Status::missing;
  if (row.expected == Status::flake) {
    row.asExpected = ended != Status::missing;
    const bool isBad = ended != Status::pass && row.asExpected && ended != Status::skip;
    if (isFlake || isBad) row.verdict = Status::flake;
  } else if (isFlake) {
    row.verdict = Status::flake;
    row.asExpected = !expectations.flakesFail;
  } else if (ended == Status::fail && row.asExpected) {
    row.verdict = Status::expectedFail;
  } else if (ended == Status::pass && !isResult) {
    row.asExpected = true;
  } else if (ended == Status::pass && !row.asExpected) {
    row.verdict = Status::unexpectedPass;
    row.detail = fmt::format("expected {}", NameOf(row.expected));
  } else if (!row.asExpected && row.expected != Status::pass && isResult) {
    row.detail += fmt::format(" (expected {})", NameOf(row.expected));
  }
  row.remark = row.verdict == Status::flake ? "" : RemarkOn(row);
  row.isNews = !row.asExpected || !row.remark.empty() ||
               (row.verdict == Status::flake && row.expected != Status::flake);
}

}  // namespace

RowResult ResultOf(const Record& record, const Device& device, const Expectations& expectations) {
  RowResult row;
  row.record = &record;
  row.status = StatusOf(record);
  row.opinion = OpinionOf(record, device);
  row.expected = ExpectedOf(record.row, expectations.baseline);
  Take(row, record, row.opinion, device, expectations.strict);
  for (const Record& again : record.again) {
    // A run that was not reached tells nothing.
    if (StatusOf(again) != Status::missing)
      Take(row, again, OpinionOf(again, device), device, expectations.strict);
  }
  Settle(row, expectations);
  return row;
}

void TakeLastRun(RowResult& row, const Device& device, const Expectations& expectations) {
  const Record& last = row.record->again.back();
  if (StatusOf(last) == Status::missing) return;
  Take(row, last, OpinionOf(last, device), device, expectations.strict);
  Settle(row, expectations);
}

Status ToExpect(Status verdict) {
  if (verdict == Status::expectedFail) return Status::fail;
  if (verdict == Status::unexpectedPass) return Status::pass;
  return verdict;
}

std::size_t RunsOf(const Record& record) {
  const auto isRun = [](const Record& run) {
    return run.ending.kind != Ending::Kind::notRun && run.ending.kind != Ending::Kind::skipped;
  };
  return (isRun(record) ? 1U : 0U) +
         static_cast<std::size_t>(std::ranges::count_if(record.again, isRun));
}

bool IsCutShort(const Record& record, std::size_t runsOfEach) {
  const std::size_t runs = RunsOf(record);
  return runs > 0 && runs < runsOfEach;
}

Totals TotalsOf(const std::vector<RowResult>& rows, std::size_t runsOfEach) {
  Totals totals;
  for (const RowResult& row : rows) {
    ++totals.rows;
    if (row.record->ending.kind != Ending::Kind::notRun) ++totals.reached;
    if (IsCutShort(*row.record, runsOfEach)) ++totals.cutShort;
    if (row.record->ending.kind != Ending::Kind::skipped) {
      totals.runs += RunsOf(*row.record);
      totals.runsWanted += runsOfEach;
    }
    if (row.asExpected) ++totals.asExpected;
    ++totals.byVerdict.at(static_cast<std::size_t>(row.verdict));
    ++totals.byCategory.at(static_cast<std::size_t>(row.category));
  }
  return totals;
}

}  // namespace diagnosis
