#pragma once

#include <string_view>
#include <vector>

#include "exploration/features/feature.h"
#include "exploration/program/program.h"

namespace exploration {

/// All features, in the order in which they are listed everywhere. A new one is a file and its line
/// in the list behind this.
const std::vector<const Feature*>& Features();

/// Nothing if there is none of the name.
const Feature* FeatureNamed(std::string_view name);

/// Those that a program uses: by its constructs, and by its types and sizes.
std::vector<const Feature*> FeaturesOf(const Program& program);

}  // namespace exploration
