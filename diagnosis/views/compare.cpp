#include "diagnosis/views/compare.h"

#include <fmt/format.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <iterator>
#include <map>
#include <set>
#include <tuple>

#include "common/text/text.h"
#include "diagnosis/record/row.h"
#include "diagnosis/record/run_folder.h"
#include "harness/rows.h"

namespace diagnosis {

namespace {

int RankOf(const RowResult& row) { return TraitsOf(row.category).rank; }

bool IsSkipped(const RowResult& row) { return row.category == Category::skip; }

bool IsWrong(const RowResult& row) {
  return row.category == Category::passedWrong || row.category == Category::failedWrong;
}

// The bytes that the row stores. What else is in a union was there before, and is another every
// time.
bool HaveOtherStores(const Bytes& first, const Bytes& second, const Row& row) {
  const std::size_t stored =
      static_cast<std::size_t>(row.lanes) * std::max(row.width, sizeof(float));
  const std::size_t size = std::min(first.size(), second.size());
  for (std::size_t at = 0; at + stored <= size; at += row.stride) {
    if (!std::equal(&first[at], &first[at] + stored, &second[at])) return true;
  }
  return false;
}

// As far as both came. Where the seeds differ and one came to no repetition, nothing says that the
// data would have been the same.
bool OnOtherData(const Record& before, const Record& after) {
  const std::optional<Row> row = RowNamed(before.row);
  const std::size_t common = std::min(before.repetitions.size(), after.repetitions.size());
  for (std::size_t i = 0; row && i < common; ++i) {
    const Repetition& first = before.repetitions[i];
    const Repetition& second = after.repetitions[i];
    if (HaveOtherStores(first.inputA, second.inputA, *row) ||
        HaveOtherStores(first.inputB, second.inputB, *row))
      return true;
  }
  return common == 0 && before.seed != after.seed;
}

bool SameLane(const WrongLane& a, const WrongLane& b) {
  return std::tie(a.repetition, a.element, a.lane) == std::tie(b.repetition, b.element, b.lane) &&
         std::bit_cast<std::uint32_t>(a.answer) == std::bit_cast<std::uint32_t>(b.answer);
}

Comparison ComparisonBetween(const std::optional<RowResult>& before,
                             const std::optional<RowResult>& after) {
  if (before && after) return ComparisonOf(*before, *after);
  const std::optional<RowResult>& there = before ? before : after;
  return there && !IsSkipped(*there) ? Comparison::oneOnly : Comparison::same;
}

char LetterOf(std::size_t run) { return static_cast<char>('A' + run); }

// Why a run tells nothing of a row, and which run: "not selected in A". Empty if each does.
std::string Untold(const ComparedRow& row) {
  for (std::size_t i = 0; i < row.outcomes.size(); ++i) {
    const std::optional<RowResult>& outcome = row.outcomes[i];
    const char* why = nullptr;
    if (!outcome) {
      why = "not selected";
    } else if (IsSkipped(*outcome)) {
      why = "skipped";
    } else if (outcome->category == Category::missing) {
      why = "not reached";
    }
    if (why != nullptr) return fmt::format("{} in {}", why, LetterOf(i));
  }
  return "";
}

std::string ShortSummaryOf(const std::optional<RowResult>& outcome) {
  return outcome ? SummaryOf(*outcome) : "not selected";
}

}  // namespace

std::string SummaryOf(const RowResult& outcome) {
  const Status status = TraitsOf(outcome.category).status;
  std::string text(NameOf(status));
  const Opinion& opinion = outcome.opinion;
  if (status == Status::pass || status == Status::fail) {
    switch (opinion.verdict) {
      case Opinion::Verdict::right:
        text += status == Status::pass ? " and right" : ", but right";
        break;
      case Opinion::Verdict::wrong:
        text += fmt::format(", wrong in {} of {} lanes", opinion.wrong.size(), opinion.lanes);
        break;
      case Opinion::Verdict::unseen:
        text += ", unseen";
        break;
    }
    if (opinion.greatestUlps > 0)
      text += fmt::format(", {} {}", opinion.greatestUlps,
                          opinion.greatestUlps == 1 ? "ulp" : "ulps at most");
  } else {
    const std::string detail = status == Status::flake ? outcome.detail : DetailOf(*outcome.record);
    if (!detail.empty()) text += ": " + detail;
  }
  return text;
}

Comparison ComparisonOf(const RowResult& before, const RowResult& after) {
  if (IsSkipped(before) || IsSkipped(after))
    return IsSkipped(before) && IsSkipped(after) ? Comparison::same : Comparison::oneOnly;
  const bool built =
      before.category != Category::buildError && after.category != Category::buildError;
  if (built && OnOtherData(*before.record, *after.record)) return Comparison::otherData;
  if (RankOf(before) != RankOf(after))
    return RankOf(after) < RankOf(before) ? Comparison::better : Comparison::worse;

  const Opinion& a = before.opinion;
  const Opinion& b = after.opinion;
  if (IsWrong(before)) {
    const auto ill = std::pair(a.wrong.size(), a.greatestUlps);
    const auto now = std::pair(b.wrong.size(), b.greatestUlps);
    if (now != ill) return now < ill ? Comparison::better : Comparison::worse;
    return std::ranges::equal(a.wrong, b.wrong, SameLane) ? Comparison::same
                                                          : Comparison::otherwise;
  }
  if (a.greatestUlps != b.greatestUlps) return Comparison::otherwise;
  return before.category == after.category && DetailOf(*before.record) == DetailOf(*after.record)
             ? Comparison::same
             : Comparison::otherwise;
}

std::vector<NamedRun> ReadRuns(const std::vector<std::string>& folders, InUse inUse) {
  std::vector<NamedRun> runs;
  runs.reserve(folders.size());
  for (const std::string& folder : folders) {
    runs.push_back({folder, OpenRun(folder, inUse)});
  }
  return runs;
}

std::vector<ComparedRow> Compare(const std::vector<NamedRun>& runs) {
  std::map<std::string_view, std::vector<std::optional<RowResult>>> byName;
  for (std::size_t i = 0; i < runs.size(); ++i) {
    for (const Record& record : runs[i].run.records) {
      auto& outcomes = byName[record.row];
      outcomes.resize(runs.size());
      outcomes[i] = ResultOf(record, runs[i].run.info.device, {});
    }
  }
  std::vector<ComparedRow> compared;
  for (const NamedRunner& row : rows) {
    const auto found = byName.find(row.name);
    if (found == byName.end()) continue;
    ComparedRow one{std::string(row.name), std::move(found->second), Comparison::same};
    for (const auto& outcome : one.outcomes)
      one.comparison = std::max(one.comparison, ComparisonBetween(one.outcomes.front(), outcome));
    compared.push_back(std::move(one));
  }
  return compared;
}

bool CameToTheSame(const ComparedRow& row) {
  return std::ranges::all_of(row.outcomes, [&row](const auto& outcome) {
    return outcome && row.outcomes.front() && RankOf(*outcome) == RankOf(*row.outcomes.front());
  });
}

std::vector<std::string> OtherProvenance(const std::vector<NamedRun>& runs) {
  std::vector<std::string> lines;
  for (std::size_t i = 1; i < runs.size(); ++i) {
    for (const ProvenanceDifference& difference :
         DifferencesBetween(runs.front().run.info.provenance, runs[i].run.info.provenance))
      lines.push_back(
          text::PrintableLine(fmt::format("{} is of {}: {} in place of {}", LetterOf(i),
                                          difference.what, difference.other, difference.one),
                              1000));
  }
  return lines;
}

std::string DifferencesOf(const std::vector<NamedRun>& runs,
                          const std::vector<ComparedRow>& compared) {
  std::string text;
  for (std::size_t i = 0; i < runs.size(); ++i) {
    const RunInfo& info = runs[i].run.info;
    text += fmt::format("{}  {}: {}, driver {}, {}\n", LetterOf(i),
                        text::PrintableLine(runs[i].name), text::PrintableLine(info.device.name),
                        text::PrintableLine(info.device.driverVersion),
                        text::PrintableLine(info.start));
  }
  for (const std::string& line : OtherProvenance(runs)) text += "   " + line + "\n";

  struct Section {
    Comparison comparison;
    std::string_view title;
    std::string_view count;
  };
  constexpr Section sections[] = {
      {Comparison::worse, "Worse", "worse"},
      {Comparison::better, "Better", "better"},
      {Comparison::otherwise, "Neither better nor worse", "otherwise"},
      {Comparison::otherData, "On other data", "on other data"},
      {Comparison::oneOnly, "In one run only", "in one run only"},
  };
  std::string counts;
  std::size_t same = compared.size();
  for (const Section& section : sections) {
    std::size_t count = 0;
    std::size_t untold = 0;
    std::string lines;
    std::map<std::string, std::size_t> alike;  // rows of which a run tells nothing, by why
    for (const ComparedRow& row : compared)
      if (row.comparison == section.comparison) ++alike[Untold(row)];
    alike.erase("");
    // Few are named.
    std::erase_if(alike, [](const auto& one) { return one.second <= 3; });
    for (const ComparedRow& row : compared) {
      if (row.comparison != section.comparison) continue;
      ++count;
      if (alike.contains(Untold(row))) continue;
      const std::string before = ShortSummaryOf(row.outcomes.front());
      const std::string after = ShortSummaryOf(row.outcomes.back());
      if (section.comparison == Comparison::otherData && CameToTheSame(row)) {
        ++untold;
      } else if (before == after) {
        lines += fmt::format("  {:<27} {}, but in other lanes or with other answers\n", row.name,
                             before);
      } else {
        lines += fmt::format("  {:<27} {} -> {}\n", row.name, before, after);
      }
    }
    if (count == 0) continue;
    same -= count;
    counts += fmt::format("{} {}, ", count, section.count);
    text += fmt::format("\n{}: {}\n{}", section.title, count, lines);
    for (const auto& [why, rowsAlike] : alike)
      text += fmt::format("  {:<27} {}\n", text::Counted(rowsAlike, "row"), why);
    if (untold > 0) text += fmt::format("  {} that came to the same, not shown\n", untold);
  }
  return text + fmt::format("\n{}{} the same\n", counts, same);
}

}  // namespace diagnosis
