#include "diagnosis/views/report.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <system_error>

#include "diagnosis/views/draws_of_run.h"
#include "diagnosis/views/report_parts.h"

namespace diagnosis {

namespace fs = std::filesystem;

namespace {

#define TAKE(name) &sections::name,
constexpr const Section* allSections[] = {SECTIONS(TAKE)};
#undef TAKE

std::string TitleOf(const std::vector<NamedRun>& runs) {
  if (runs.size() > 1) return Counted(runs.size(), "run") + " side by side";
  const std::string name = text::PrintableLine(runs.front().run.info.device.name);
  return name.empty() ? "A device without a name" : name;
}

void AddRun(page::Page& page, const Run& run) {
  const Analysis analysis = AnalysisOf(run, ExpectationsOf(run.info));
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
      section->add(page.AddSection(section->id, section->title), analysis);
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

std::string ReportOf(const std::vector<NamedRun>& runs) {
  page::Page page("Union conformance suite", TitleOf(runs), "union conformance");
  if (runs.size() == 1) {
    AddRun(page, runs.front().run);
  } else {
    AddComparison(page, runs);
  }
  return page.Html();
}

std::string WriteReportOf(const Analysis& analysis, const std::string& folder) {
  if (folder.empty()) return "";
  // One copy of all the records, where a list in braces would take two.
  std::vector<NamedRun> runs(1);
  runs.front().name = folder;
  runs.front().run = *analysis.run;
  WriteReport(folder + "/report.html", ReportOf(runs));
  return "";
}

void WriteReport(const std::string& file, const std::string& page) {
  // A device or a pipe is written to; a file is replaced in one step.
  std::error_code ignored;
  const bool isOther = fs::exists(file, ignored) && !fs::is_regular_file(file, ignored);
  const std::string part = isOther ? file : file + ".part";
  std::ofstream out(part, std::ios::binary | std::ios::trunc);
  out << page << std::flush;
  out.close();
  if (out && (isOther || std::rename(part.c_str(), file.c_str()) == 0)) return;
  if (!isOther) fs::remove(part, ignored);
  throw std::runtime_error(fmt::format("cannot write '{}'", file));
}

}  // namespace diagnosis
