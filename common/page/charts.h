#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <pugixml.hpp>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// Pictures that are tables, and so can be read without being seen.

namespace page {

/// What stands in front of a line: in few characters, and in full.
struct Heading {
  std::string_view text;
  std::string_view title;
};

/// A heat map's table, but for its cells.
struct Grid {
  std::string_view name;
  std::string_view what;    // for those who cannot see it: "verdicts by shape and element type"
  std::string_view note;    // behind the name, or empty
  std::string_view corner;  // what the lines are
  std::span<const std::string_view> columns;
  std::span<const Heading> lines;
};

/// A heat map. `fill(cell, line, column)` gives a cell its class, which is its colour, and text.
void AddGrid(pugi::xml_node parent, const Grid& grid,
             const std::function<void(pugi::xml_node, std::size_t, std::size_t)>& fill);

/// Makes it a cell with nothing to see, and says why.
void MakeBlank(pugi::xml_node cell, std::string_view why);

/// A colour of a heat map of numbers.
struct Shade {
  std::string_view style;  // class
  std::string_view sign;   // so that the colour need not be seen, or empty
  std::string_view example;
  std::string_view meaning;
};

/// What the colours mean, in their order.
void AddShades(pugi::xml_node parent, std::span<const Shade> shades);

/// A number in few characters: "12", "2.1e9".
std::string ShortNumber(std::uint64_t number);

/// A line of a chart of bars.
struct Bar {
  struct Part {
    const char* style;  // class
    double size;
  };
  std::string_view name;
  std::vector<Part> parts;           // one behind another
  std::vector<std::string> numbers;  // a cell each
};

/// Bars whose whole width is `longest`. `titles` are of name, bar and numbers.
void AddBars(pugi::xml_node parent, std::string_view caption,
             std::span<const std::string_view> titles, const std::vector<Bar>& bars,
             double longest);

}  // namespace page
