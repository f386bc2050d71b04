#pragma once

#include <array>
#include <optional>
#include <string_view>

#include "exploration/program/program.h"

namespace exploration {

class Drawing;

/// A feature of the language, as --only and --without name it. The functions that do not apply are
/// null. What they draw must be valid in the state that the drawing is in; what turns out not to be
/// is taken back.
struct Feature {
  std::string_view name;
  std::string_view says;  ///< What it is, in a few words.

  /// Without these it has nothing to work on.
  std::array<const Feature*, 3> needs = {};
  /// Draws an object of a structure or union, before anything else. False if it can't.
  bool (*object)(Drawing& drawing, TypeId record) = nullptr;
  /// Draws statements. False, or Invalid thrown, if there is no place for any.
  bool (*statement)(Drawing& drawing) = nullptr;
  /// An expression of this type.
  std::optional<Node> (*value)(Drawing& drawing, TypeId type) = nullptr;
  /// A place that is reached from this one: a member, an element, a component.
  std::optional<Node> (*place)(Drawing& drawing, const Node& from) = nullptr;
  /// Changes a structure or union that was just drawn and is not used yet.
  void (*type)(Drawing& drawing, Type& record) = nullptr;
  /// Whether a program uses it in its types and sizes rather than in a construct.
  bool (*isUsed)(const Program& program) = nullptr;
};

}  // namespace exploration
