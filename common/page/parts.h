#pragma once

#include <cstddef>
#include <pugixml.hpp>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// What pages are put together from. Each part is added at the end of the element that it is given.

namespace page {

/// How one of several things looks wherever it is on a page.
struct Mark {
  std::string_view style;  // class
  std::string_view sign;   // so that the colour need not be seen: signs, or a word
  std::string_view name;
  std::string_view meaning;  // half a sentence
};

/// A sign for the eye; what it means is said beside it.
void AddSign(pugi::xml_node parent, const Mark& mark);

/// The sign in its colour.
pugi::xml_node AddChip(pugi::xml_node parent, const Mark& mark);

/// The sign beside its name, or the name alone where the sign is a word.
void AddBadge(pugi::xml_node parent, const Mark& mark);

/// The marks that there are, each with its number.
void AddLegend(pugi::xml_node parent, const std::vector<std::pair<Mark, std::size_t>>& counts);

/// A way to another place of the page.
pugi::xml_node AddLink(pugi::xml_node parent, std::string_view id, std::string_view text = {});

/// A place in which what is too wide is scrolled, by keyboard too.
pugi::xml_node AddScrolled(pugi::xml_node parent, std::string_view label);

/// A part that is folded until someone opens it.
pugi::xml_node AddFolded(pugi::xml_node parent, std::string_view summary);

/// Text as it was written, its first part if it is longer than a page has room for; `rest` then
/// says where the rest is.
void AddVerbatim(pugi::xml_node parent, std::string_view label, std::string_view text,
                 std::string_view rest);

/// Names and values side by side, but for those without a value.
void AddFacts(pugi::xml_node parent,
              const std::vector<std::pair<std::string_view, std::string>>& facts);

}  // namespace page
