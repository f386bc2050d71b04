#include "diagnosis/verdict/category.h"

#include <algorithm>
#include <stdexcept>

namespace diagnosis {

static_assert(std::ranges::all_of(categories, [](const CategoryTraits& traits) {
  return &TraitsOf(traits.category) == &traits;
}));

Category CategoryOf(Status status, Opinion::Verdict opinion) {
  const auto found = std::ranges::find_if(categories, [&](const CategoryTraits& traits) {
    return traits.status == status && traits.opinion.value_or(opinion) == opinion;
  });
  if (found == categories.end()) throw std::logic_error("no category has that status");
  return found->category;
}

Category CategoryOf(const Record& record, const Opinion& opinion) {
  return CategoryOf(StatusOf(record), opinion.verdict);
}

}  // namespace diagnosis
