#pragma once

#include <string>
#include <string_view>

namespace text {

/// Adds an entry to a list, "one, other", unless it is empty or in it.
inline void AddToList(std::string& list, std::string_view entry) {
  const std::string known = ", " + list + ", ";
  if (entry.empty() || known.find(", " + std::string(entry) + ", ") != std::string::npos) return;
  if (!list.empty()) list += ", ";
  list += entry;
}

}  // namespace text
