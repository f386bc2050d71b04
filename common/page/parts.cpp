#include "common/page/parts.h"

#include <fmt/format.h>

#include "common/page/html.h"
#include "common/text/text.h"

namespace page {

namespace {

constexpr std::size_t mostBytesOfText = 8 << 10;

}  // namespace

void AddSign(pugi::xml_node parent, const Mark& mark) {
  Set(AddClassed(parent, "span", "sign", mark.sign), "aria-hidden", "true");
}

pugi::xml_node AddChip(pugi::xml_node parent, const Mark& mark) {
  const pugi::xml_node chip = AddClassed(parent, "span", fmt::format("chip {}", mark.style));
  AddSign(chip, mark);
  return chip;
}

void AddBadge(pugi::xml_node parent, const Mark& mark) {
  const pugi::xml_node badge = AddClassed(parent, "span", fmt::format("chip {}", mark.style));
  if (static_cast<unsigned char>(mark.sign.front()) >= 0x80) {
    AddSign(badge, mark);
    AddText(badge, " ");
  }
  AddText(badge, mark.name);
}

void AddLegend(pugi::xml_node parent, const std::vector<std::pair<Mark, std::size_t>>& counts) {
  const pugi::xml_node list = AddClassed(parent, "ul", "legend");
  for (const auto& [mark, count] : counts) {
    if (count == 0) continue;
    const pugi::xml_node item = Add(list, "li");
    AddChip(item, mark);
    const pugi::xml_node words = Add(item, "span");
    Add(words, "strong", fmt::format("{} {}", count, mark.name));
    AddClassed(words, "span", "note", fmt::format(" {}", mark.meaning));
  }
}

pugi::xml_node AddLink(pugi::xml_node parent, std::string_view id, std::string_view text) {
  return Set(Add(parent, "a", text), "href", fmt::format("#{}", id));
}

pugi::xml_node AddScrolled(pugi::xml_node parent, std::string_view label) {
  const pugi::xml_node region = AddClassed(parent, "div", "scrolled");
  Set(region, "role", "region");
  Set(region, "aria-label", label);
  return Set(region, "tabindex", "0");
}

pugi::xml_node AddFolded(pugi::xml_node parent, std::string_view summary) {
  const pugi::xml_node folded = Add(parent, "details");
  Add(folded, "summary", summary);
  return folded;
}

void AddVerbatim(pugi::xml_node parent, std::string_view label, std::string_view text,
                 std::string_view rest) {
  const std::string_view shown = text.substr(0, mostBytesOfText);
  Add(AddScrolled(parent, label), "pre", shown);
  if (shown.size() < text.size()) {
    AddClassed(parent, "p", "note",
               fmt::format("{} more left out here; {}.",
                           text::Counted(text.size() - shown.size(), "byte"), rest));
  }
}

void AddFacts(pugi::xml_node parent,
              const std::vector<std::pair<std::string_view, std::string>>& facts) {
  const pugi::xml_node list = AddClassed(parent, "dl", "facts");
  for (const auto& [name, value] : facts) {
    if (value.empty()) continue;
    Add(list, "dt", name);
    Add(list, "dd", value);
  }
}

}  // namespace page
