#include "diagnosis/record/select.h"

#include <fmt/format.h>
#include <fnmatch.h>

#include <algorithm>
#include <optional>
#include <set>

#include "common/text/bad_use.h"
#include "common/text/configuration_lines.h"
#include "common/text/nearest.h"
#include "common/text/text.h"
#include "harness/rows.h"

namespace diagnosis {

namespace {

std::vector<std::size_t> Matching(const std::string& pattern) {
  std::vector<std::size_t> matching;
  for (std::size_t i = 0; i < std::size(rows); ++i) {
    if (fnmatch(pattern.c_str(), rows[i].name.data(), 0) == 0) matching.push_back(i);
  }
  return matching;
}

std::string AdviceOnName(std::string_view name) {
  std::vector<std::string_view> names;
  for (const NamedRunner& row : rows) names.push_back(row.name);
  const std::optional<std::string_view> nearest = text::Nearest(name, names);
  return nearest ? fmt::format(": did you mean '{}'?", *nearest) : " ('triage list' names them)";
}

// What the caller may have meant: the rows whose names begin with it, or have it in them.
std::string AdviceOn(const std::string& pattern) {
  for (const std::string& meant : {pattern + "_*", pattern + "*", "*" + pattern + "*"})
    if (!pattern.empty() && !Matching(meant).empty())
      return fmt::format(": did you mean '{}'?", text::PrintableLine(meant));
  return AdviceOnName(pattern);
}

}  // namespace

std::vector<std::size_t> Select(const std::vector<std::string>& patterns) {
  std::set<std::size_t> selected;
  if (patterns.empty() || patterns.front().starts_with('!')) {
    for (std::size_t row = 0; row < std::size(rows); ++row) selected.insert(row);
  }
  for (const std::string& pattern : patterns) {
    const bool takesOut = pattern.starts_with('!');
    const std::string glob = pattern.substr(takesOut ? 1 : 0);
    const std::vector<std::size_t> matching = Matching(glob);
    if (matching.empty())
      throw text::BadUse(
          fmt::format("no row matches '{}'{}", text::PrintableLine(glob), AdviceOn(glob)));
    for (const std::size_t row : matching) {
      if (takesOut) {
        selected.erase(row);
      } else {
        selected.insert(row);
      }
    }
  }
  if (selected.empty()) throw text::BadUse("no row is left to be selected");
  return {selected.begin(), selected.end()};
}

std::size_t RowCalled(std::string_view name) {
  const auto* const row = std::ranges::find(rows, name, &NamedRunner::name);
  if (row == std::end(rows))
    throw text::BadUse(
        fmt::format("no row is called '{}'{}", text::PrintableLine(name), AdviceOnName(name)));
  return static_cast<std::size_t>(row - std::begin(rows));
}

Skips ReadSkips(const std::string& path) {
  Skips skips;
  for (const auto& [place, text] : text::LinesOf(path)) {
    const bool takesOut = text.starts_with('!');
    const std::string glob = text.substr(takesOut ? 1 : 0);
    const std::vector<std::size_t> matching = Matching(glob);
    if (matching.empty())
      throw text::BadUse(fmt::format("{}: no row matches '{}'", place, text::PrintableLine(glob)));
    for (const std::size_t row : matching) {
      if (takesOut) {
        skips.erase(std::string(rows[row].name));
      } else {
        skips.emplace(rows[row].name, place);
      }
    }
  }
  return skips;
}

}  // namespace diagnosis
