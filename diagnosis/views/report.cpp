#include "diagnosis/views/report.h"

#include <fmt/format.h>

#include <algorithm>

#include "diagnosis/views/draws_of_run.h"
#include "diagnosis/views/report_parts.h"

namespace diagnosis {

namespace {

#define TAKE(name) &sections::name,
constexpr const Section* allSections[] = {SECTIONS(TAKE)};
#undef TAKE

constexpr char suite[] = "Union conformance suite";
constexpr char footer[] = "union conformance";

std::string TitleOf(const Run& run) {
  const std::string name = text::PrintableLine(run.info.device.name);
  return name.empty() ? "A device without a name" : name;
}

void AddRun(page::Page& page, const Analysis& analysis) {
  const Run& run = *analysis.run;
  const pugi::xml_node header = page.Header();
  AddClassed(header, "p", "verdict", VerdictOn(analysis));
  if (const std::string draws = DrawsOfRun(run); !draws.empty())
    AddClassed(header, "p", "lead", draws);
  std::vector<std::pair<page::Mark, std::size_t>> counts;
  for (const CategoryTraits& one : categories) {
    const auto count = std::ranges::count(analysis.rows, one.category, &RowResult::category);
    counts.emplace_back(MarkOf(one.category), static_cast<std::size_t>(count));
  }
  page::AddLegend(header, counts);
  std::vector<std::pair<std::string_view, std::string>> facts;
  for (RunFact& fact : FactsOf(run.info)) {
    if (fact.isAlone) facts.emplace_back(fact.name, std::move(fact.value));
  }
  page::AddFacts(header, facts);

  const bool allRight = std::ranges::none_of(analysis.rows, HasArticle);
  for (const Section* section : allSections) {
    if (!section->isOfFaults || !allRight)
      section->add(page, page.AddSection(section->id, section->title), analysis);
  }
}

}  // namespace

page::Mark MarkOf(Category category) {
  const CategoryTraits& traits = TraitsOf(category);
  return {traits.style, traits.sign, traits.name, traits.meaning};
}

bool HasArticle(const RowResult& row) {
  return row.category != Category::passedRight && row.category != Category::skip &&
         row.category != Category::missing;
}

std::string IdOfRow(std::string_view row) { return fmt::format("row-{}", row); }

std::string IdOfSuspect(std::string_view suspect) { return fmt::format("suspect-{}", suspect); }

std::string ReportOf(const Analysis& analysis) {
  page::Page page(suite, TitleOf(*analysis.run), footer);
  AddRun(page, analysis);
  return page.Html();
}

std::string ReportOf(const std::vector<NamedRun>& runs) {
  if (runs.size() == 1) {
    const Run& run = runs.front().run;
    return ReportOf(AnalysisOf(run, ExpectationsOf(run.info)));
  }
  page::Page page(suite, Counted(runs.size(), "run") + " side by side", footer);
  AddComparison(page, runs);
  return page.Html();
}

}  // namespace diagnosis
