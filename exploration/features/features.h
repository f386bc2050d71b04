#pragma once

#include <string_view>
#include <vector>

#include "exploration/features/feature.h"
#include "exploration/program/program.h"

namespace exploration {

#define FEATURE(name) extern const Feature name##Feature;
#include "exploration/features/list.h"
#undef FEATURE

/// All features, in the order in which they are listed everywhere. A new one is a file and its line
/// in list.h.
const std::vector<const Feature*>& Features();

/// Nothing if there is none of the name.
const Feature* FeatureNamed(std::string_view name);

/// Those that a program uses.
std::vector<const Feature*> FeaturesOf(const Program& program);

}  // namespace exploration
