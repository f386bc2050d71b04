#include <fmt/format.h>

#include "diagnosis/localization/glossary.h"
#include "diagnosis/views/experiments_of_run.h"
#include "diagnosis/views/report_parts.h"

namespace diagnosis {

namespace {

constexpr std::size_t mostNames = 24;

// What the name means, for those who meet it for the first time.
void AddTerms(pugi::xml_node article, const std::vector<Term>& terms) {
  const pugi::xml_node folded = page::AddFolded(article, "What it may be, and where to look");
  for (const Term& term : terms) {
    Add(folded, "p", term.cause);
    Add(folded, "pre", term.example);
    Add(folded, "p", fmt::format("Where to look: {}.", term.place));
  }
}

void AddSuspects(page::Page&, pugi::xml_node section, const Analysis& analysis) {
  const Suspects& suspects = analysis.suspects;
  if (suspects.fewest.empty()) {
    AddClassed(section, "p", "lead", "No lane is wrong, so there is nothing to suspect.");
    return;
  }
  AddClassed(
      section, "p", "lead",
      "The fewest that explain these rows: each predicts every lane of its rows, the wrong ones "
      "and the right ones.");
  for (const Decision& decision : suspects.decisions)
    AddClassed(section, "p", "note", "The device was " + TextOf(decision) + ".");
  for (const Suspect& suspect : suspects.fewest) {
    const pugi::xml_node article =
        Set(AddClassed(section, "article", "suspect"), "id", IdOfSuspect(suspect.name));
    const pugi::xml_node line = AddClassed(article, "div", "headline");
    const std::vector<Term> terms = TermsOf(suspect.name);
    const pugi::xml_node name = Add(Add(line, "h3"), "code", suspect.name);
    if (!terms.empty()) Set(name, "title", terms.front().cause);
    AddClassed(line, "span", "note", Counted(suspect.counted, "row"));
    Add(article, "p", suspect.meaning);
    if (!terms.empty()) AddTerms(article, terms);
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
            ? page::AddFolded(article, "Its " + Counted(suspect.rows.size(), "row"))
            : article;
    const pugi::xml_node list = AddClassed(place, "ul", "names");
    for (const std::string& row : suspect.rows) page::AddLink(Add(list, "li"), IdOfRow(row), row);
  }
}

}  // namespace

const Section sections::suspects = {"suspects", "Suspects", true, AddSuspects};

}  // namespace diagnosis
