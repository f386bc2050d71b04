#include <fmt/format.h>

#include <algorithm>
#include <iterator>

#include "common/text/text.h"
#include "diagnosis/views/report_parts.h"

namespace diagnosis {

namespace {

struct Group {
  Comparison comparison;
  const char* id;
  const char* title;
  const char* meaning;
};
constexpr Group groups[] = {
    {Comparison::worse, "worse", "Worse", "In at least one run worse than in the first."},
    {Comparison::better, "better", "Better", "Better than in the first run, and nowhere worse."},
    {Comparison::otherwise, "otherwise", "Otherwise",
     "Neither better nor worse: other lanes, another distance, another detail."},
    {Comparison::otherData, "other-data", "Other data",
     "The device got other bytes, so that neither run tells of the other."},
    {Comparison::oneOnly, "one-only", "Not in all runs",
     "Skipped or not selected in one of the runs."},
};

// Of rows that a run has no result of.
constexpr std::size_t mostUnfolded = 10;

std::string NameOfRun(const std::vector<NamedRun>& runs, std::size_t i) {
  return fmt::format("{}. {}", i + 1, text::PrintableLine(runs[i].name, 80));
}

void AddHead(pugi::xml_node table, std::string_view caption, std::string_view first,
             const std::vector<NamedRun>& runs) {
  Set(table, "style", fmt::format("min-width: {}rem", 14 + 11 * runs.size()));
  AddClassed(table, "caption", "hidden", caption);
  const pugi::xml_node head = Add(Add(table, "thead"), "tr");
  Set(Add(head, "th", first), "scope", "col");
  for (std::size_t i = 0; i < runs.size(); ++i)
    Set(Add(head, "th", NameOfRun(runs, i)), "scope", "col");
}

// A line a row, a cell a run.
void AddTable(pugi::xml_node parent, std::string_view caption, const std::vector<NamedRun>& runs,
              const std::vector<const ComparedRow*>& rows) {
  const pugi::xml_node table = AddClassed(page::AddScrolled(parent, caption), "table", "runs");
  AddHead(table, caption, "Row", runs);
  const pugi::xml_node body = Add(table, "tbody");
  for (const ComparedRow* row : rows) {
    const pugi::xml_node line = Add(body, "tr");
    Set(Add(line, "th", row->name), "scope", "row");
    for (const auto& outcome : row->outcomes) {
      const pugi::xml_node cell = Add(line, "td");
      if (!outcome) {
        Set(cell, "class", "blank");
        AddText(cell, "not selected");
        continue;
      }
      page::AddChip(cell, MarkOf(outcome->category));
      AddText(cell, fmt::format(" {}", SummaryOf(*outcome)));
    }
  }
}

std::string SentenceOf(const std::vector<NamedRun>& runs, const std::vector<ComparedRow>& rows) {
  const auto count = [&rows](Comparison comparison) {
    return static_cast<std::size_t>(std::ranges::count(rows, comparison, &ComparedRow::comparison));
  };
  std::string text = fmt::format(
      "Against {}: {} worse, {} better, {} otherwise, {} the same.",
      text::PrintableLine(runs.front().name, 80), Counted(count(Comparison::worse), "row"),
      count(Comparison::better), count(Comparison::otherwise), count(Comparison::same));
  if (const std::size_t other = count(Comparison::otherData); other > 0)
    text += fmt::format(" {} on other data, and cannot be compared.",
                        other == 1 ? "1 row ran" : fmt::format("{} rows ran", other));
  return text;
}

// What is to be said of each run, side by side.
void AddRunsTable(pugi::xml_node section, const std::vector<NamedRun>& runs,
                  const std::vector<ComparedRow>& rows) {
  const pugi::xml_node table =
      AddClassed(page::AddScrolled(section, "The runs"), "table", "runs overview");
  AddHead(table, "The runs side by side", "Run", runs);
  const pugi::xml_node body = Add(table, "tbody");
  std::vector<std::vector<RunFact>> facts;
  facts.reserve(runs.size());
  for (const NamedRun& run : runs) facts.push_back(FactsOf(run.run.info));
  for (std::size_t fact = 0; fact < facts.front().size(); ++fact) {
    if (!facts.front()[fact].isBeside) continue;
    const pugi::xml_node line = Add(body, "tr");
    Set(Add(line, "th", facts.front()[fact].name), "scope", "row");
    for (const auto& of : facts) Add(line, "td", text::PrintableLine(of[fact].value));
  }
  for (const CategoryTraits& traits : categories) {
    std::vector<std::ptrdiff_t> counts;
    for (std::size_t i = 0; i < runs.size(); ++i) {
      counts.push_back(std::ranges::count_if(rows, [&](const ComparedRow& row) {
        return row.outcomes[i] && row.outcomes[i]->category == traits.category;
      }));
    }
    if (std::ranges::all_of(counts, [](auto count) { return count == 0; })) continue;
    const pugi::xml_node line = Add(body, "tr");
    const pugi::xml_node heading = Set(Add(line, "th"), "scope", "row");
    page::AddBadge(heading, MarkOf(traits.category));
    for (const auto count : counts) AddClassed(line, "td", "number", fmt::format("{}", count));
  }
}

}  // namespace

void AddComparison(page::Page& page, const std::vector<NamedRun>& runs) {
  const std::vector<ComparedRow> rows = Compare(runs);
  AddClassed(page.Header(), "p", "verdict", SentenceOf(runs, rows));
  AddRunsTable(page.AddSection("runs", "The runs"), runs, rows);

  for (const Group& group : groups) {
    std::vector<const ComparedRow*> members;
    for (const ComparedRow& row : rows) {
      if (row.comparison == group.comparison) members.push_back(&row);
    }
    if (members.empty()) continue;
    const pugi::xml_node section = page.AddSection(group.id, group.title);
    AddClassed(section, "p", "lead",
               fmt::format("{}. {}", Counted(members.size(), "row"), group.meaning));
    const auto differs = [](const ComparedRow* row) { return !CameToTheSame(*row); };
    const auto same = group.comparison == Comparison::otherData
                          ? std::stable_partition(members.begin(), members.end(), differs)
                          : members.end();
    if (same != members.begin()) {
      const bool isFolded =
          group.comparison == Comparison::oneOnly && members.size() > mostUnfolded;
      AddTable(isFolded ? page::AddFolded(section, "Which") : section, group.title, runs,
               {members.begin(), same});
    }
    if (same != members.end()) {
      const auto count = static_cast<std::size_t>(members.end() - same);
      AddTable(page::AddFolded(section, Counted(count, "row") + " that came to the same"),
               "Other data, the same end", runs, {same, members.end()});
    }
  }

  const pugi::xml_node section = page.AddSection("all", "All rows");
  for (const char* operation : {"add", "copy", "floor", "multiply", "power"}) {
    std::vector<const ComparedRow*> members;
    for (const ComparedRow& row : rows) {
      if (row.name.starts_with(operation)) members.push_back(&row);
    }
    if (!members.empty())
      AddTable(page::AddFolded(section,
                               fmt::format("{}: {}", operation, Counted(members.size(), "row"))),
               operation, runs, members);
  }
}

}  // namespace diagnosis
