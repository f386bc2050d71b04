#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace diagnosis {

/// The names of rows, given as indices in `rows`, one a line.
std::string NamesOf(const std::vector<std::size_t>& selected);

/// A table with a head, and a line for each row: what its name says, and its own constants.
std::string TableOf(const std::vector<std::size_t>& selected);

}  // namespace diagnosis
