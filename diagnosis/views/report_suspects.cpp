#include "diagnosis/views/report_parts.h"

namespace diagnosis {

namespace {

constexpr std::size_t mostNames = 24;

void AddSuspects(pugi::xml_node section, const Analysis& analysis) {
  const Suspects& suspects = analysis.suspects;
  if (suspects.fewest.empty()) {
    AddClassed(section, "p", "lead", "No lane is wrong, so there is nothing to suspect.");
    return;
  }
  AddClassed(
      section, "p", "lead",
      "The fewest that explain these rows: each predicts every lane of its rows, the wrong ones "
      "and the right ones.");
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
            ? page::AddFolded(article, "Its " + Counted(suspect.rows.size(), "row"))
            : article;
    const pugi::xml_node list = AddClassed(place, "ul", "names");
    for (const std::string& row : suspect.rows) page::AddLink(Add(list, "li"), IdOfRow(row), row);
  }
}

}  // namespace

const Section sections::suspects = {"suspects", "Suspects", true, AddSuspects};

}  // namespace diagnosis
