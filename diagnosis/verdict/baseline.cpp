#include "diagnosis/verdict/baseline.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>

#include "common/text/bad_use.h"
#include "common/text/configuration_lines.h"
#include "common/text/text.h"
#include "harness/rows.h"

namespace diagnosis {

namespace {

std::pair<std::string, Status> EntryOf(std::string_view text) {
  const std::size_t comma = text.find(',');
  if (comma == std::string_view::npos || text.find(',', comma + 1) != std::string_view::npos)
    throw text::BadUse(
        fmt::format("'{}' is not of the form test,status", text::PrintableLine(text)));
  std::string_view name = text.substr(0, comma);
  name = name.substr(0, name.find_last_not_of(" \t") + 1);
  std::string_view statusName = text.substr(comma + 1);
  statusName.remove_prefix(std::min(statusName.find_first_not_of(" \t"), statusName.size()));

  if (std::ranges::find(rows, name, &NamedRunner::name) == std::end(rows))
    throw text::BadUse(fmt::format("no row is called '{}'", text::PrintableLine(name)));
  const std::optional<Status> status = StatusNamed(statusName);
  if (!status || status == Status::unexpectedPass)
    throw text::BadUse(fmt::format("'{}' is no status to expect", text::PrintableLine(statusName)));
  return {std::string(name), status == Status::expectedFail ? Status::fail : *status};
}

}  // namespace

Baseline ReadBaseline(const std::string& path) {
  Baseline baseline;
  bool mayBeHead = true;
  for (const auto& [place, text] : text::LinesOf(path)) {
    if (std::exchange(mayBeHead, false) && text == "test,status") continue;
    try {
      const auto [name, status] = EntryOf(text);
      if (!baseline.emplace(name, status).second) throw text::BadUse(name + " is named twice");
    } catch (const text::BadUse& refusal) {
      throw text::BadUse(place + ": " + refusal.what());
    }
  }
  return baseline;
}

}  // namespace diagnosis
