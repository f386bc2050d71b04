#include <fmt/format.h>

#include <algorithm>
#include <string>
#include <vector>

#include "common/text/text.h"
#include "diagnosis/record/row.h"
#include "diagnosis/views/report.h"
#include "diagnosis/views/report_parts.h"
#include "diagnosis/views/reproduce.h"

namespace diagnosis {

namespace {

// Half a megabyte is enough for all that is on the page beside the rows.
constexpr std::size_t mostBytesOfRows = mostBytesOfPage - (std::size_t{1} << 19);
constexpr char inRecords[] = "the records hold them";
constexpr std::size_t mostBytesOfReproducer = 64 << 10;

// The blanks behind a kernel's lines fill the page with nothing.
std::string WithoutBlanksAtEnds(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    const std::string_view line = text.substr(0, text.find('\n'));
    result.append(line.substr(0, line.find_last_not_of(' ') + 1)).append("\n");
    text.remove_prefix(std::min(line.size() + 1, text.size()));
  }
  return result;
}

void AddSuspectsOf(pugi::xml_node article, const Record& record, const Suspects& suspects) {
  const std::vector<NamedSuspect>& named = suspects.Of(record.row);
  if (named.empty()) return;
  if (named.front().name == unexplained) {
    Add(article, "p", "No suspect explains it.");
    return;
  }
  if (named.size() > 1)
    Add(article, "p",
        "Explained by each of these, which the row\u2019s data can\u2019t tell apart:");
  const pugi::xml_node list =
      named.size() > 1 ? AddClassed(article, "ul", "suspected") : pugi::xml_node();
  for (const NamedSuspect& suspect : named) {
    const pugi::xml_node line =
        named.size() > 1 ? Add(list, "li") : Add(article, "p", "Explained by ");
    const bool listed =
        std::ranges::find(suspects.fewest, suspect.name, &Suspect::name) != suspects.fewest.end();
    Add(listed ? page::AddLink(line, IdOfSuspect(suspect.name)) : line, "code", suspect.name);
    AddText(line, fmt::format(": {}", suspect.meaning));
  }
}

// What runs the row alone, as it was run here.
std::string CommandOf(const Record& record, const RunInfo& info) {
  std::vector<std::string> words = info.invocation;
  if (words.empty()) words.emplace_back("./triage");
  words.push_back(record.row);
  const auto add = [&words](const char* option, const std::string& value) {
    if (!value.empty()) words.insert(words.end(), {option, value});
  };
  const auto optionOf = [&info](const char* name) {
    const auto found = info.options.find(name);
    return found == info.options.end() ? std::string() : found->second;
  };
  add("--seed", record.seed == 1 ? "" : std::to_string(record.seed));
  add("--build-options", record.buildOptions);
  add("--local-size", record.localSize == 0 ? "" : std::to_string(record.localSize));
  add("--launcher", optionOf("launcher"));
  add("--program", optionOf("program"));
  return text::PrintableLine(text::ShellWords(words), mostBytesOfCommand);
}

// What is only looked at when the rest was not enough, folded, the shortest first.
void AddFoldedParts(pugi::xml_node article, const Record& record, const Device& device,
                    const Suspects& suspects) {
  const std::pair<const char*, const std::string*> written[] = {
      {"Build log", &record.buildLog},
      {"What the row wrote", &record.out},
      {"What the row wrote on standard error", &record.err},
      {"What the driver wrote", &record.driver},
  };
  for (const auto& [title, text] : written) {
    if (!text->empty()) page::AddVerbatim(page::AddFolded(article, title), title, *text, inRecords);
  }
  if (!record.source.empty())
    page::AddVerbatim(page::AddFolded(article, "Kernel text"), "Kernel text",
                      WithoutBlanksAtEnds(record.source), inRecords);
  if (!RowNamed(record.row)) {
    AddClassed(article, "p", "note",
               "No row of this version is called so: there is no explanation and no reproducer.");
    return;
  }
  const std::string reproducer = ReproducerOf(record, device, suspects);
  const pugi::xml_node folded = page::AddFolded(article, "Reproducer, in C");
  if (reproducer.size() > mostBytesOfReproducer) {
    AddClassed(folded, "p", "note",
               fmt::format("Too long for this page; triage reproduce {} writes it.", record.row));
  } else {
    Add(page::AddScrolled(folded, "Reproducer"), "pre", reproducer);
  }
}

void AddHeadline(pugi::xml_node article, const RowResult& outcome) {
  const Record& record = *outcome.record;
  const std::string heading = fmt::format("{}-heading", record.row);
  Set(article, "id", IdOfRow(record.row));
  Set(article, "aria-labelledby", heading);
  const pugi::xml_node line = AddClassed(article, "div", "headline");
  Set(Add(line, "h3", record.row), "id", heading);
  page::AddBadge(line, MarkOf(outcome.category));
  Set(AddClassed(line, "a", "back", "to the matrix"), "href", "#matrix");
  Add(article, "p", SummaryOf(outcome) + ".");
}

pugi::xml_node AddRow(pugi::xml_node section, const RowResult& outcome, const RunInfo& info,
                      const Suspects& suspects) {
  const Device& device = info.device;
  const Record& record = *outcome.record;
  const pugi::xml_node article = AddClassed(section, "article", TraitsOf(outcome.category).style);
  AddHeadline(article, outcome);
  if (outcome.category != Category::flake && outcome.status == Status::fail) {
    if (const std::string detail = DetailOf(record); !detail.empty())
      Add(Add(article, "p", "The suite says "), "code", detail);
  }
  AddSuspectsOf(article, record, suspects);
  AddExplanation(article, record, device, suspects);
  Add(Add(article, "p", "Alone: "), "code", CommandOf(record, info));
  AddFoldedParts(article, record, device, suspects);
  return article;
}

void AddRows(page::Page& page, pugi::xml_node section, const Analysis& analysis) {
  // A row's headline has room in any case: its size is bounded, and so is the number of rows.
  constexpr std::size_t mostBytesOfHeadline = 2 << 10;
  const auto count = static_cast<std::size_t>(std::ranges::count_if(analysis.rows, HasArticle));
  std::size_t left = mostBytesOfRows - std::min(mostBytesOfRows, count * mostBytesOfHeadline);
  for (const RowResult& outcome : analysis.rows) {
    if (!HasArticle(outcome)) continue;
    pugi::xml_node article = AddRow(section, outcome, analysis.run->info, analysis.suspects);
    std::size_t size = page::SizeOf(article);
    if (size > left) {
      while (const pugi::xml_node folded = article.child("details")) article.remove_child(folded);
      AddClassed(article, "p", "note",
                 "The page is full, so texts, logs and the reproducer are left out here; triage "
                 "explain and triage reproduce print them.");
      size = page::SizeOf(article);
    }
    if (size > left) {
      section.remove_child(article);
      article = AddClassed(section, "article", TraitsOf(outcome.category).style);
      AddHeadline(article, outcome);
      AddClassed(article, "p", "note", "The page is full; triage explain prints the rest.");
      size = 0;
    }
    left -= size;
    // The trees of all rows would take five times what the page does.
    page.Finish(article);
  }
}

}  // namespace

const Section sections::rows = {"rows", "Row by row", true, AddRows};

}  // namespace diagnosis
