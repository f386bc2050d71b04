#include "diagnosis/verdict/account.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <map>
#include <string_view>

namespace diagnosis {

namespace {

constexpr std::size_t statuses = static_cast<std::size_t>(Status::flake) + 1;
using Counts = std::array<std::size_t, statuses>;

Status ExpectedOf(const std::string& row, const Baseline& baseline) {
  const auto entry = baseline.find(row);
  return entry == baseline.end() ? Status::pass : entry->second;
}

// Whether a row's last run differs from its first. One that was not reached tells nothing.
bool IsFlake(const Record& record) {
  if (record.again.empty()) return false;
  const Status last = StatusOf(record.again.back());
  return last != Status::missing && last != StatusOf(record);
}

std::string_view OperationOf(std::string_view row) { return row.substr(0, row.find('_')); }

std::string SlowestOf(std::vector<AccountedRow> account) {
  constexpr std::size_t shown = 5;
  std::erase_if(account, [](const AccountedRow& row) { return row.seconds <= 0; });
  std::ranges::stable_sort(account, std::greater{}, &AccountedRow::seconds);
  std::string text;
  for (std::size_t i = 0; i < std::min(shown, account.size()); ++i)
    fmt::format_to(std::back_inserter(text), "{:>9.3f} s  {}, of it {:.3f} s in clBuildProgram\n",
                   account[i].seconds, account[i].name, account[i].buildSeconds);
  return text.empty() ? text : "\nThe slowest:\n" + text;
}

std::string SentenceOf(const Counts& total, std::size_t asExpected, std::size_t rows) {
  const auto count = [&total](Status status) { return total[static_cast<std::size_t>(status)]; };
  const std::string all = rows == 1 ? "The row" : fmt::format("All {} rows", rows);
  if (count(Status::pass) == rows) return all + " passed.\n";
  if (asExpected == rows) {
    const std::size_t flakes = count(Status::flake);
    if (flakes == 0) return all + " ended as expected.\n";
    return fmt::format("{} ended as expected, but for {} flake{}.\n", all, flakes,
                       flakes == 1 ? "" : "s");
  }
  // Without other expectations than that rows pass.
  const bool plain = asExpected == count(Status::pass) + count(Status::skip);
  return fmt::format("{} of {} row{} did not {}.\n", rows - asExpected, rows, rows == 1 ? "" : "s",
                     plain ? "pass" : "end as expected");
}

}  // namespace

AccountedRow AccountOf(const Record& record, const Baseline& baseline, bool flakesFail) {
  const Status ended = StatusOf(record);
  const Status expected = ExpectedOf(record.row, baseline);
  AccountedRow row{.name = record.row,
                   .status = ended,
                   .asExpected = ended == expected || ended == Status::skip,
                   .detail = DetailOf(record),
                   .seconds = record.seconds,
                   .buildSeconds = record.buildSeconds};
  const bool isResult = expected != Status::skip && expected != Status::missing;
  if (expected == Status::flake) {
    row.asExpected = ended != Status::missing;
    if (ended != Status::pass && row.asExpected && ended != Status::skip)
      row.status = Status::flake;
  } else if (IsFlake(record)) {
    row.status = Status::flake;
    row.asExpected = !flakesFail;
    const std::string detail = row.detail.empty() ? DetailOf(record.again.back()) : row.detail;
    row.detail = fmt::format("{}, then {}: {}", NameOf(ended),
                             NameOf(StatusOf(record.again.back())), detail);
  } else if (ended == Status::fail && row.asExpected) {
    row.status = Status::expectedFail;
  } else if (ended == Status::pass && !isResult) {
    row.asExpected = true;
  } else if (ended == Status::pass && !row.asExpected) {
    row.status = Status::unexpectedPass;
    row.detail = fmt::format("expected {}", NameOf(expected));
  } else if (!row.asExpected && expected != Status::pass && isResult) {
    row.detail += fmt::format(" (expected {})", NameOf(expected));
  }
  return row;
}

Status ToExpect(const AccountedRow& row) {
  if (row.status == Status::expectedFail) return Status::fail;
  if (row.status == Status::unexpectedPass) return Status::pass;
  return row.status;
}

std::string TextOf(const std::vector<AccountedRow>& account, std::size_t selected) {
  // The operations in the order of the rows.
  std::vector<std::string_view> operations;
  std::map<std::string_view, Counts> byOperation;
  Counts total{};
  std::size_t asExpected = 0;
  for (const AccountedRow& row : account) {
    const std::string_view operation = OperationOf(row.name);
    if (!byOperation.contains(operation)) operations.push_back(operation);
    const auto status = static_cast<std::size_t>(row.status);
    ++byOperation[operation][status];
    ++total[status];
    if (row.asExpected) ++asExpected;
  }

  const auto line = [&total](std::string_view head, const Counts& counts, std::size_t rows) {
    std::string text = fmt::format("{:<10}{:>6}", head, rows);
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
  for (const std::string_view operation : operations) {
    const Counts& counts = byOperation[operation];
    std::size_t rows = 0;
    for (const std::size_t count : counts) rows += count;
    text += line(operation, counts, rows);
  }
  if (operations.size() != 1) text += line("all", total, account.size());
  return text + SlowestOf(account) + "\n" + SentenceOf(total, asExpected, selected);
}

bool AddsUp(const std::vector<AccountedRow>& account, const std::vector<std::string>& selected) {
  std::vector<std::string> names;
  names.reserve(account.size());
  for (const AccountedRow& row : account) names.push_back(row.name);
  return std::ranges::is_permutation(names, selected);
}

}  // namespace diagnosis
