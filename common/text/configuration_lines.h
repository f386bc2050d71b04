#pragma once

#include <string>
#include <vector>

namespace text {

/// A line of a file that a person writes, and where it stands: "FILE:LINE".
struct Line {
  std::string place;
  std::string text;
};

/// The lines that say something: without comments, which begin with a `#`, without blanks around
/// them, and without those of which nothing is left. Throws BadUse if the file cannot be read.
std::vector<Line> LinesOf(const std::string& path);

}  // namespace text
