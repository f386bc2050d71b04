#include "exploration/shrinking/without_features.h"

#include <algorithm>
#include <string_view>

#include "exploration/features/features.h"
#include "exploration/shrinking/edits.h"

namespace exploration {

std::optional<Program> WithoutFeatures(const Program& program,
                                       const std::vector<std::string>& features) {
  const auto isOne = [&features](std::string_view feature) {
    return std::ranges::find(features, feature) != features.end();
  };
  Program left = program;
  for (TypeId id = Types::FirstOwn(); id < left.types.End(); ++id) {
    Type& type = left.types.Own(id);
    if (isOne("packed")) type.packed = false;
    if (!isOne("aligned")) continue;
    type.aligned = 0;
    for (Member& member : type.members) member.aligned = 0;
  }
  const std::size_t before = StatementsOf(left).size();
  if (!EraseUsersOf(left, [&isOne](const Node& node) { return isOne(node.construct->feature); }))
    return std::nullopt;
  left = Tidied(std::move(left));
  if (2 * StatementsOf(left).size() < before) return std::nullopt;
  for (const Feature* const feature : FeaturesOf(left))
    if (isOne(feature->name)) return std::nullopt;
  return left;
}

}  // namespace exploration
