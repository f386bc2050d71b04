#include "diagnosis/verdict/baseline.h"

#include <fmt/format.h>
#include <fnmatch.h>

#include <algorithm>
#include <optional>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

#include "common/text/bad_use.h"
#include "common/text/configuration_lines.h"
#include "common/text/text.h"
#include "diagnosis/verdict/baseline_update.h"
#include "harness/rows.h"

namespace diagnosis {

namespace {

// The status that a line expects, which is none of those that need a baseline themselves.
Status ExpectedBy(std::string_view name) {
  const std::optional<Status> status = StatusNamed(name);
  if (!status || status == Status::unexpectedPass)
    throw text::BadUse(fmt::format("'{}' is no status to expect", text::PrintableLine(name)));
  return status == Status::expectedFail ? Status::fail : *status;
}

std::vector<std::string> Matching(std::string_view pattern) {
  const std::string glob(pattern);
  const bool isGlob = glob.find_first_of("*?[") != std::string::npos;
  std::vector<std::string> matching;
  for (const NamedRunner& row : rows) {
    const std::string name(row.name);
    if (isGlob ? fnmatch(glob.c_str(), name.c_str(), 0) == 0 : glob == name)
      matching.push_back(name);
  }
  if (matching.empty())
    throw text::BadUse(
        fmt::format("no row {} '{}'", isGlob ? "matches" : "is called", text::PrintableLine(glob)));
  return matching;
}

}  // namespace

BaselineEntry EntryOf(std::string_view text) {
  if (text.starts_with('!')) {
    text.remove_prefix(1);
    return {Matching(text), false, Status::pass};
  }
  const std::size_t comma = text.find(',');
  if (comma == std::string_view::npos || text.find(',', comma + 1) != std::string_view::npos)
    throw text::BadUse(
        fmt::format("'{}' is not of the form test,status", text::PrintableLine(text)));
  std::string_view name = text.substr(0, comma);
  name = name.substr(0, name.find_last_not_of(" \t") + 1);
  std::string_view status = text.substr(comma + 1);
  status.remove_prefix(std::min(status.find_first_not_of(" \t"), status.size()));
  BaselineEntry entry{Matching(name), false, ExpectedBy(status)};
  entry.isName = entry.rows.front() == name;
  return entry;
}

Baseline ReadBaseline(const std::string& path) {
  Baseline baseline;
  std::set<std::string> named;
  bool mayBeHead = true;
  for (const auto& [place, text] : text::LinesOf(path)) {
    if (std::exchange(mayBeHead, false) && text == "test,status") continue;
    try {
      const BaselineEntry entry = EntryOf(text);
      if (entry.isName && !named.insert(entry.rows.front()).second)
        throw text::BadUse(entry.rows.front() + " is named twice");
      for (const std::string& row : entry.rows) baseline[row] = entry.status;
    } catch (const text::BadUse& refusal) {
      throw text::BadUse(place + ": " + refusal.what());
    }
  }
  // What is expected of all others need not be told.
  std::erase_if(baseline, [](const auto& row) { return row.second == Status::pass; });
  return baseline;
}

}  // namespace diagnosis
