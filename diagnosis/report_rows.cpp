#include <fmt/format.h>

#include <algorithm>

#include "diagnosis/report_parts.h"
#include "diagnosis/reproduce.h"
#include "diagnosis/text.h"

namespace diagnosis {

namespace {

constexpr std::size_t mostNames = 24;
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
  const auto found = suspects.byRow.find(record.row);
  if (found == suspects.byRow.end() || found->second.empty()) return;
  const std::vector<std::string>& names = found->second;
  if (names.front() == unexplained) {
    Add(article, "p", "No suspect explains it.");
    return;
  }
  Add(article, "p",
      names.size() == 1 ? "Explained by"
                        : "Explained by any of these, which its data can\u2019t tell apart:");
  const auto meanings = suspects.meaningsByRow.find(record.row);
  const pugi::xml_node list = AddClassed(article, "dl", "suspected");
  for (std::size_t i = 0; i < names.size(); ++i) {
    const bool listed =
        std::ranges::find(suspects.fewest, names[i], &Suspect::name) != suspects.fewest.end();
    const pugi::xml_node term = Add(list, "dt");
    Add(listed ? AddLink(term, IdOfSuspect(names[i])) : term, "code", names[i]);
    const bool hasMeaning = meanings != suspects.meaningsByRow.end() && i < meanings->second.size();
    Add(list, "dd", hasMeaning ? meanings->second[i] : "");
  }
}

std::string CommandOf(const Record& record) {
  std::string command = fmt::format("./triage {}", record.row);
  if (record.seed != 1) command += fmt::format(" --seed {}", record.seed);
  if (!record.buildOptions.empty())
    command += fmt::format(" --build-options '{}'", PrintableLine(record.buildOptions));
  if (record.localSize != 0) command += fmt::format(" --local-size {}", record.localSize);
  return command;
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
    if (!text->empty()) AddVerbatim(AddFolded(article, title), title, *text);
  }
  if (!record.source.empty())
    AddVerbatim(AddFolded(article, "Kernel text"), "Kernel text",
                WithoutBlanksAtEnds(record.source));
  const std::string reproducer = ReproducerOf(record, device, suspects);
  const pugi::xml_node folded = AddFolded(article, "Reproducer, in C");
  if (reproducer.size() > mostBytesOfReproducer) {
    AddClassed(folded, "p", "note",
               fmt::format("Too long for this page; triage reproduce {} writes it.", record.row));
  } else {
    Add(AddScrolled(folded, "Reproducer"), "pre", reproducer);
  }
}

void AddHeadline(pugi::xml_node article, const Outcome& outcome) {
  const Record& record = *outcome.record;
  const Look& look = LookOf(outcome);
  const std::string heading = fmt::format("{}-heading", record.row);
  Set(article, "id", IdOfRow(record.row));
  Set(article, "aria-labelledby", heading);
  const pugi::xml_node line = AddClassed(article, "div", "headline");
  Set(Add(line, "h3", record.row), "id", heading);
  AddBadge(line, look);
  Set(AddClassed(line, "a", "back", "to the matrix"), "href", "#matrix");
  Add(article, "p", SummaryOf(outcome) + ".");
}

pugi::xml_node AddRow(pugi::xml_node section, const Outcome& outcome, const Device& device,
                      const Suspects& suspects) {
  const Record& record = *outcome.record;
  const pugi::xml_node article = AddClassed(section, "article", LookOf(outcome).style);
  AddHeadline(article, outcome);
  if (outcome.status == Status::fail) {
    if (const std::string detail = DetailOf(record); !detail.empty())
      Add(Add(article, "p", "The suite says "), "code", detail);
  }
  AddSuspectsOf(article, record, suspects);
  Add(Add(article, "p", "Alone: "), "code", CommandOf(record));
  AddFoldedParts(article, record, device, suspects);
  return article;
}

}  // namespace

void AddSuspects(pugi::xml_node section, const Suspects& suspects) {
  if (suspects.fewest.empty()) {
    AddClassed(section, "p", "lead", "No lane is wrong, so there is nothing to suspect.");
    return;
  }
  AddClassed(
      section, "p", "lead",
      "The fewest that explain all wrong rows: each predicts every lane of its rows, the wrong "
      "ones and the right ones.");
  for (const Suspect& suspect : suspects.fewest) {
    const pugi::xml_node article =
        Set(AddClassed(section, "article", "suspect"), "id", IdOfSuspect(suspect.name));
    const pugi::xml_node line = AddClassed(article, "div", "headline");
    Add(Add(line, "h3"), "code", suspect.name);
    AddClassed(line, "span", "note", Counted(suspect.rows.size(), "row"));
    Add(article, "p", suspect.meaning);
    if (!suspect.alike.empty()) {
      const pugi::xml_node alike = Add(article, "p", "The data can\u2019t tell it from ");
      for (std::size_t i = 0; i < suspect.alike.size(); ++i) {
        if (i > 0) AddText(alike, i + 1 == suspect.alike.size() ? " or " : ", ");
        Add(alike, "code", suspect.alike[i]);
      }
      AddText(alike, ".");
    }
    const pugi::xml_node place =
        suspect.rows.size() > mostNames
            ? AddFolded(article, "Its " + Counted(suspect.rows.size(), "row"))
            : article;
    const pugi::xml_node list = AddClassed(place, "ul", "names");
    for (const std::string& row : suspect.rows) AddLink(Add(list, "li"), IdOfRow(row), row);
  }
}

void AddRows(pugi::xml_node section, const Run& run, const std::vector<Outcome>& outcomes,
             const Suspects& suspects, std::size_t mostBytes) {
  // A row's headline has room in any case: its size is bounded, and so is the number of rows.
  constexpr std::size_t mostBytesOfHeadline = 2 << 10;
  const auto count = static_cast<std::size_t>(std::ranges::count_if(outcomes, HasSection));
  std::size_t left = mostBytes - std::min(mostBytes, count * mostBytesOfHeadline);
  for (const Outcome& outcome : outcomes) {
    if (!HasSection(outcome)) continue;
    pugi::xml_node article = AddRow(section, outcome, run.info.device, suspects);
    std::size_t size = SizeOf(article);
    if (size > left) {
      while (const pugi::xml_node folded = article.child("details")) article.remove_child(folded);
      AddClassed(article, "p", "note",
                 "The page is full, so texts, logs and the reproducer are left out here; triage "
                 "explain and triage reproduce print them.");
      size = SizeOf(article);
    }
    if (size > left) {
      section.remove_child(article);
      article = AddClassed(section, "article", LookOf(outcome).style);
      AddHeadline(article, outcome);
      AddClassed(article, "p", "note", "The page is full; triage explain prints the rest.");
      size = 0;
    }
    left -= size;
  }
}

}  // namespace diagnosis
