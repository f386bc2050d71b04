#include "diagnosis/verdict/account.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <functional>
#include <iterator>
#include <map>
#include <string_view>

#include "common/text/text.h"

namespace diagnosis {

namespace {

std::string_view OperationOf(std::string_view row) { return row.substr(0, row.find('_')); }

std::string SlowestOf(const std::vector<RowResult>& rows) {
  constexpr std::size_t shown = 5;
  std::vector<const Record*> slowest;
  for (const RowResult& row : rows)
    if (row.record->seconds > 0) slowest.push_back(row.record);
  std::ranges::stable_sort(slowest, std::greater{}, &Record::seconds);
  std::string text;
  for (std::size_t i = 0; i < std::min(shown, slowest.size()); ++i)
    fmt::format_to(std::back_inserter(text), "{:>9.3f} s  {}, of it {:.3f} s in clBuildProgram\n",
                   slowest[i]->seconds, slowest[i]->row, slowest[i]->buildSeconds);
  return text.empty() ? text : "\nThe slowest:\n" + text;
}

// "The row", "Both rows", "All 210 rows".
std::string All(std::size_t rows) {
  if (rows == 1) return "The row";
  return rows == 2 ? "Both rows" : fmt::format("All {} rows", rows);
}

std::string SentenceOfAll(const Totals& totals) {
  const std::size_t rows = totals.rows;
  if (totals.Of(Status::pass) == rows) return All(rows) + " passed";
  if (totals.Of(Status::skip) == rows && rows > 0)
    return All(rows) + (rows == 1 ? " was skipped" : " were skipped");
  if (totals.asExpected == rows) {
    const std::size_t flakes = totals.Of(Status::flake);
    if (flakes == 0) return All(rows) + " ended as expected";
    return fmt::format("{} ended as expected, but for {}", All(rows),
                       text::Counted(flakes, "flake"));
  }
  // Where nothing was expected of any row but that it pass.
  const bool isPlain = totals.Of(Status::unexpectedPass) == 0 &&
                       totals.asExpected == totals.Of(Status::pass) + totals.Of(Status::skip);
  const char* did = isPlain ? "pass" : "end as expected";
  std::string text =
      rows == 1 ? fmt::format("The row did not {}", did)
                : fmt::format("{} of {} rows did not {}", rows - totals.asExpected, rows, did);
  if (const std::size_t passed = totals.Of(Status::unexpectedPass); passed > 0)
    text += rows == 1 ? ": it passed" : fmt::format(" ({} passed)", passed);
  return text;
}

}  // namespace

std::string LedgerOf(const std::vector<RowResult>& rows) {
  // The operations in the order of the rows.
  std::vector<std::string_view> operations;
  using Counts = std::array<std::size_t, statuses>;
  std::map<std::string_view, Counts> byOperation;
  Counts total{};
  for (const RowResult& row : rows) {
    const std::string_view operation = OperationOf(row.record->row);
    if (!byOperation.contains(operation)) operations.push_back(operation);
    const auto verdict = static_cast<std::size_t>(row.verdict);
    ++byOperation[operation][verdict];
    ++total[verdict];
  }

  const auto line = [&total](std::string_view head, const Counts& counts) {
    std::size_t sum = 0;
    for (const std::size_t count : counts) sum += count;
    std::string text = fmt::format("{:<10}{:>6}", head, sum);
    for (std::size_t status = 0; status < statuses; ++status) {
      if (total[status] == 0) continue;
      const std::size_t width = NameOf(static_cast<Status>(status)).size() + 2;
      text += counts[status] == 0 ? fmt::format("{:>{}}", "-", width)
                                  : fmt::format("{:>{}}", counts[status], width);
    }
    return text + "\n";
  };
  std::string text = fmt::format("{:<10}{:>6}", "", "rows");
  for (std::size_t status = 0; status < statuses; ++status)
    if (total[status] > 0)
      fmt::format_to(std::back_inserter(text), "  {}", NameOf(static_cast<Status>(status)));
  text += "\n";
  for (const std::string_view operation : operations)
    text += line(operation, byOperation[operation]);
  if (operations.size() != 1) text += line("all", total);
  return text + SlowestOf(rows);
}

std::string SentenceOf(const Totals& totals) {
  std::string text = SentenceOfAll(totals);
  const std::string incomplete = Incomplete(totals);
  if (!incomplete.empty()) text += "; incomplete: " + incomplete;
  return text + ".";
}

std::string Incomplete(const Totals& totals) {
  std::string text;
  if (totals.reached < totals.rows)
    text = fmt::format("{} of {}", totals.reached, text::Counted(totals.rows, "row"));
  if (totals.cutShort > 0)
    text += fmt::format("{}{} of {}", text.empty() ? "" : " and ", totals.runs,
                        text::Counted(totals.runsWanted, "run"));
  return text;
}

}  // namespace diagnosis
