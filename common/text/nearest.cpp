#include "common/text/nearest.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <numeric>
#include <vector>

namespace text {
namespace {

bool IsSame(char one, char other) {
  return std::tolower(static_cast<unsigned char>(one)) ==
         std::tolower(static_cast<unsigned char>(other));
}

// How many letters must be put in, taken out or changed, or neighbours exchanged.
std::size_t Distance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> before(b.size() + 1);
  std::vector<std::size_t> row(b.size() + 1);
  std::vector<std::size_t> next(b.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 1; i <= a.size(); ++i) {
    next[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t changed = row[j - 1] + (IsSame(a[i - 1], b[j - 1]) ? 0 : 1);
      next[j] = std::min({row[j] + 1, next[j - 1] + 1, changed});
      if (i > 1 && j > 1 && IsSame(a[i - 1], b[j - 2]) && IsSame(a[i - 2], b[j - 1]))
        next[j] = std::min(next[j], before[j - 2] + 1);
    }
    before.swap(row);
    row.swap(next);
  }
  return row[b.size()];
}

}  // namespace

std::optional<std::string_view> Nearest(std::string_view written,
                                        std::span<const std::string_view> words) {
  // What is much longer than any word is none that was misspelt.
  constexpr std::size_t longest = 100;
  if (written.size() > longest) return std::nullopt;
  std::optional<std::string_view> nearest;
  std::size_t least = std::min<std::size_t>(3, (written.size() + 1) / 3 + 1);
  for (const std::string_view word : words) {
    if (word == written) return std::nullopt;
    const std::size_t distance = Distance(written, word);
    if (distance >= least) continue;
    least = distance;
    nearest = word;
  }
  return nearest;
}

}  // namespace text
