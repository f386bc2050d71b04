#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace diagnosis {

/// The rows of these names or globs, in the order of the matrix, as indices in `rows`; "!GLOB"
/// takes rows out again, of all where it is first. Throws BadUse where one matches none.
std::vector<std::size_t> Select(const std::vector<std::string>& patterns);

/// The index in `rows` of exactly this name. Throws BadUse if there is none.
std::size_t RowCalled(std::string_view name);

/// Rows that are not to be run, and for each the place in a file that says so.
using Skips = std::map<std::string, std::string, std::less<>>;

/// A name or glob a line, or "!GLOB", which takes rows out again; comments behind a `#`. Throws
/// BadUse, with file and line, for a pattern that matches no row.
Skips ReadSkips(const std::string& path);

}  // namespace diagnosis
