#include "exploration/features/features.h"

#include <algorithm>
#include <set>

namespace exploration {

const std::vector<const Feature*>& Features() {
  static const std::vector<const Feature*> features = {
#define FEATURE(name) &name##Feature,
#include "exploration/features/list.h"
#undef FEATURE
  };
  return features;
}

const Feature* FeatureNamed(std::string_view name) {
  const auto found = std::find_if(Features().begin(), Features().end(),
                                  [&](const Feature* feature) { return feature->name == name; });
  return found == Features().end() ? nullptr : *found;
}

std::vector<const Feature*> FeaturesOf(const Program& program) {
  std::set<std::string_view> names;
  Visit(program, [&names](const Node& node) { names.insert(node.construct->feature); });
  std::vector<const Feature*> features;
  for (const Feature* feature : Features())
    if (names.contains(feature->name) || (feature->isUsed != nullptr && feature->isUsed(program)))
      features.push_back(feature);
  return features;
}

}  // namespace exploration
