#include "common/page/charts.h"

#include <fmt/format.h>

#include <cmath>

#include "common/page/html.h"

namespace page {

void AddGrid(pugi::xml_node parent, const Grid& grid,
             const std::function<void(pugi::xml_node, std::size_t, std::size_t)>& fill) {
  const pugi::xml_node table = AddClassed(parent, "table", "matrix");
  const pugi::xml_node caption = Add(table, "caption");
  Add(caption, "strong", grid.name);
  AddClassed(caption, "span", "hidden", fmt::format(": {}", grid.what));
  if (!grid.note.empty()) AddClassed(caption, "span", "note", fmt::format(" {}", grid.note));
  const pugi::xml_node head = Add(Add(table, "thead"), "tr");
  AddClassed(Set(Add(head, "th"), "scope", "col"), "span", "hidden", grid.corner);
  for (const std::string_view name : grid.columns) Set(Add(head, "th", name), "scope", "col");
  const pugi::xml_node body = Add(table, "tbody");
  for (std::size_t line = 0; line < grid.lines.size(); ++line) {
    const pugi::xml_node cells = Add(body, "tr");
    const pugi::xml_node heading = Set(Add(cells, "th"), "scope", "row");
    Set(Add(heading, "span", grid.lines[line].text), "title", grid.lines[line].title);
    for (std::size_t column = 0; column < grid.columns.size(); ++column)
      fill(Add(cells, "td"), line, column);
  }
}

void MakeBlank(pugi::xml_node cell, std::string_view why) {
  Set(cell, "class", "blank");
  AddClassed(cell, "span", "hidden", why);
}

void AddShades(pugi::xml_node parent, std::span<const Shade> shades) {
  const pugi::xml_node legend = AddClassed(parent, "ul", "legend");
  for (const Shade& shade : shades) {
    const pugi::xml_node item = Add(legend, "li");
    Set(AddClassed(item, "span", fmt::format("chip {}", shade.style),
                   fmt::format("{} {}", shade.sign, shade.example)),
        "aria-hidden", "true");
    AddClassed(item, "span", "note", shade.meaning);
  }
}

std::string ShortNumber(std::uint64_t number) {
  if (number < 100'000) return fmt::format("{}", number);
  const auto value = static_cast<double>(number);
  const int exponent = static_cast<int>(std::log10(value));
  return fmt::format("{:.1f}e{}", value / std::pow(10.0, exponent), exponent);
}

void AddBars(pugi::xml_node parent, std::string_view caption,
             std::span<const std::string_view> titles, const std::vector<Bar>& bars,
             double longest) {
  constexpr double width = 1000;
  const pugi::xml_node table = AddClassed(parent, "table", "times");
  AddClassed(table, "caption", "hidden", caption);
  const pugi::xml_node head = Add(Add(table, "thead"), "tr");
  for (const std::string_view title : titles) Set(Add(head, "th", title), "scope", "col");
  const pugi::xml_node body = Add(table, "tbody");
  for (const Bar& bar : bars) {
    const pugi::xml_node line = Add(body, "tr");
    Set(Add(line, "th", bar.name), "scope", "row");
    const pugi::xml_node picture = Set(Add(Add(line, "td"), "svg"), "viewBox", "0 0 1000 10");
    Set(Set(picture, "preserveAspectRatio", "none"), "aria-hidden", "true");
    double from = 0;
    for (const Bar::Part& part : bar.parts) {
      const pugi::xml_node rectangle = Set(Add(picture, "rect"), "class", part.style);
      Set(rectangle, "x", fmt::format("{:.1f}", width * from / longest));
      Set(rectangle, "width", fmt::format("{:.1f}", width * part.size / longest));
      Set(rectangle, "height", "10");
      from += part.size;
    }
    for (const std::string& number : bar.numbers) Add(line, "td", number);
  }
}

}  // namespace page
