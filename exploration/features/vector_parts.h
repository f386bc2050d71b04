#pragma once

#include <string>
#include <vector>

#include "exploration/features/basics.h"

namespace exploration {

// Parts of vectors, of which each feature has its own way of naming the components.

/// The components that `numbers` of the node say.
using ComponentsOf = std::vector<int> (*)(const Node& node, const Program& program);

/// For `check`: the part is a whole vector, and these are components of it, none of them twice.
void CheckPart(const Node& node, const Program& program, const std::vector<int>& components);
Place LocatePart(const Node& node, Machine& machine, std::vector<int> components);

/// ".x", ".s3", ".zx": with letters where the vector has up to four components.
std::string ComponentNames(int width, const std::vector<std::int64_t>& components);

/// Whether the node is a vector of which a part can be taken.
bool HasParts(const Node& node, const Program& program);

}  // namespace exploration
