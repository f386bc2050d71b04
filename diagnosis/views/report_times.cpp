#include <fmt/format.h>

#include <algorithm>

#include "diagnosis/views/report_parts.h"

namespace diagnosis {

namespace {

constexpr std::size_t slowestShown = 20;

void AddTable(pugi::xml_node parent, std::string_view caption,
              const std::vector<const Record*>& records, double longest) {
  const pugi::xml_node table = AddClassed(parent, "table", "times");
  AddClassed(table, "caption", "hidden", caption);
  const pugi::xml_node head = Add(Add(table, "thead"), "tr");
  for (const char* title : {"Row", "Build and run", "Build, s", "Total, s"})
    Set(Add(head, "th", title), "scope", "col");
  const pugi::xml_node body = Add(table, "tbody");
  for (const Record* record : records) {
    const double build = std::clamp(record->buildSeconds, 0.0, record->seconds);
    const pugi::xml_node line = Add(body, "tr");
    Set(Add(line, "th", record->row), "scope", "row");
    const pugi::xml_node picture = Set(Add(Add(line, "td"), "svg"), "viewBox", "0 0 1000 10");
    Set(Set(picture, "preserveAspectRatio", "none"), "aria-hidden", "true");
    const auto bar = [&](const char* style, double from, double seconds) {
      const pugi::xml_node rectangle = Set(Add(picture, "rect"), "class", style);
      Set(rectangle, "x", fmt::format("{:.1f}", 1000 * from / longest));
      Set(rectangle, "width", fmt::format("{:.1f}", 1000 * seconds / longest));
      Set(rectangle, "height", "10");
    };
    bar("build", 0, build);
    bar("run", build, record->seconds - build);
    Add(line, "td", fmt::format("{:.3f}", build));
    Add(line, "td", fmt::format("{:.3f}", record->seconds));
  }
}

}  // namespace

void AddTimes(pugi::xml_node section, const Run& run) {
  std::vector<const Record*> slowest;
  double total = 0;
  double build = 0;
  for (const Record& record : run.records) {
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
  const auto shown = static_cast<std::ptrdiff_t>(std::min(slowest.size(), slowestShown));
  AddTable(section, "The slowest rows", {slowest.begin(), slowest.begin() + shown}, longest);
  if (slowest.size() > slowestShown) {
    const pugi::xml_node folded =
        AddFolded(section, "The other " + Counted(slowest.size() - slowestShown, "row"));
    AddTable(folded, "The other rows", {slowest.begin() + shown, slowest.end()}, longest);
  }
}

}  // namespace diagnosis
