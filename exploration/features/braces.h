#pragma once

#include <functional>
#include <optional>

#include "exploration/features/basics.h"

namespace exploration {

class Drawing;

/// An initializer in braces, of a structure, union or array: the parts belong to the members or
/// elements that `numbers` says, of a union to one.
extern const Construct bracesConstruct;

/// Braces for the type, with what `leaf` makes in them.
Node DrawBraces(Drawing& drawing, TypeId type, const std::function<Node(TypeId)>& leaf);

}  // namespace exploration
