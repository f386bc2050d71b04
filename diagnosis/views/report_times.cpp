#include <fmt/format.h>

#include <algorithm>
#include <functional>
#include <span>

#include "common/page/charts.h"
#include "diagnosis/views/report_parts.h"

namespace diagnosis {

namespace {

constexpr std::size_t slowestShown = 20;

void AddTable(pugi::xml_node parent, std::string_view caption,
              std::span<const Record* const> records, double longest) {
  constexpr std::string_view titles[] = {"Row", "Build and run", "Build, s", "Total, s"};
  std::vector<page::Bar> bars;
  for (const Record* record : records) {
    const double build = std::clamp(record->buildSeconds, 0.0, record->seconds);
    bars.push_back({record->row,
                    {{"build", build}, {"run", record->seconds - build}},
                    {fmt::format("{:.3f}", build), fmt::format("{:.3f}", record->seconds)}});
  }
  page::AddBars(parent, caption, titles, bars, longest);
}

void AddTimes(page::Page&, pugi::xml_node section, const Analysis& analysis) {
  std::vector<const Record*> slowest;
  double total = 0;
  double build = 0;
  for (const Record& record : analysis.run->records) {
    if (record.ending.kind == Ending::Kind::notRun || record.ending.kind == Ending::Kind::skipped ||
        !(record.seconds >= 0))
      continue;
    slowest.push_back(&record);
    total += record.seconds;
    build += record.buildSeconds;
  }
  std::ranges::stable_sort(slowest, std::greater<>(),
                           [](const Record* record) { return record->seconds; });
  if (slowest.empty()) {
    AddClassed(section, "p", "lead", "No row was run.");
    return;
  }
  const pugi::xml_node lead = AddClassed(section, "p", "lead");
  AddText(lead, fmt::format("{:.2f} s over {}: {:.2f} s in ", total, Counted(slowest.size(), "row"),
                            build));
  AddClassed(lead, "span", "key build", "building");
  AddText(lead, fmt::format(" and {:.2f} s in ", std::max(0.0, total - build)));
  AddClassed(lead, "span", "key run", "the rest of the row");
  AddText(lead, ".");

  const double longest = std::max(slowest.front()->seconds, 1e-9);
  const std::span all(slowest);
  const std::size_t shown = std::min(slowest.size(), slowestShown);
  AddTable(section, "The slowest rows", all.first(shown), longest);
  if (slowest.size() > slowestShown) {
    const pugi::xml_node folded =
        page::AddFolded(section, "The other " + Counted(slowest.size() - slowestShown, "row"));
    AddTable(folded, "The other rows", all.subspan(shown), longest);
  }
}

}  // namespace

const Section sections::times = {"times", "Where the time went", false, AddTimes};

}  // namespace diagnosis
