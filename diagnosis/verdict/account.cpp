#include "diagnosis/verdict/account.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <map>
#include <string_view>

namespace diagnosis {

namespace {

using Counts = std::array<std::size_t, statuses>;

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

AccountedRow AccountOf(const RowResult& row) {
  return {.name = row.record->row,
          .status = row.verdict,
          .asExpected = row.asExpected,
          .detail = row.detail,
          .seconds = row.record->seconds,
          .buildSeconds = row.record->buildSeconds};
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
