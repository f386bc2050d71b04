#include "common/outputs/baseline.h"

#include <fmt/format.h>
#include <fnmatch.h>

#include <algorithm>
#include <optional>
#include <set>
#include <utility>

#include "common/text/bad_use.h"
#include "common/text/configuration_lines.h"
#include "common/text/nearest.h"
#include "common/text/text.h"

namespace outputs {
namespace {

// The status that a line expects, which is none of those that need a baseline themselves.
Status ExpectedBy(std::string_view name) {
  const std::optional<Status> status = StatusNamed(name);
  if (!status || status == Status::unexpectedPass)
    throw text::BadUse(fmt::format("'{}' is no status to expect", text::PrintableLine(name)));
  return status == Status::expectedFail ? Status::fail : *status;
}

}  // namespace

std::vector<std::string> Matching(std::string_view pattern, const Cases& cases) {
  const std::string glob(pattern);
  const bool isGlob = glob.find_first_of("*?[") != std::string::npos;
  std::vector<std::string> matching;
  for (const std::string& name : cases.names)
    if (isGlob ? fnmatch(glob.c_str(), name.c_str(), 0) == 0 : glob == name)
      matching.push_back(name);
  if (!matching.empty()) return matching;
  const std::vector<std::string_view> names(cases.names.begin(), cases.names.end());
  const auto nearest = isGlob ? std::nullopt : text::Nearest(glob, names);
  throw text::BadUse(fmt::format("no {} {} '{}'{}", cases.noun, isGlob ? "matches" : "is called",
                                 text::PrintableLine(glob),
                                 nearest ? fmt::format(": did you mean '{}'?", *nearest) : ""));
}

BaselineEntry EntryOf(std::string_view text, const Cases& cases) {
  if (text.starts_with('!')) {
    text.remove_prefix(1);
    return {Matching(text, cases), false, Status::pass};
  }
  const std::size_t comma = text.find(',');
  if (comma == std::string_view::npos || text.find(',', comma + 1) != std::string_view::npos)
    throw text::BadUse(
        fmt::format("'{}' is not of the form {},status", text::PrintableLine(text), cases.head));
  std::string_view name = text.substr(0, comma);
  name = name.substr(0, name.find_last_not_of(" \t") + 1);
  std::string_view status = text.substr(comma + 1);
  status.remove_prefix(std::min(status.find_first_not_of(" \t"), status.size()));
  BaselineEntry entry{Matching(name, cases), false, ExpectedBy(status)};
  entry.isName = entry.names.front() == name;
  return entry;
}

Baseline ReadBaseline(const std::string& path, const Cases& cases) {
  Baseline baseline;
  std::set<std::string> named;
  bool mayBeHead = true;
  for (const auto& [place, text] : text::LinesOf(path)) {
    if (std::exchange(mayBeHead, false) && text == cases.head + ",status") continue;
    try {
      const BaselineEntry entry = EntryOf(text, cases);
      if (entry.isName && !named.insert(entry.names.front()).second)
        throw text::BadUse(entry.names.front() + " is named twice");
      for (const std::string& name : entry.names) baseline[name] = entry.status;
    } catch (const text::BadUse& refusal) {
      throw text::BadUse(place + ": " + refusal.what());
    }
  }
  // What is expected of all others need not be told.
  std::erase_if(baseline, [](const auto& entry) { return entry.second == Status::pass; });
  return baseline;
}

}  // namespace outputs
