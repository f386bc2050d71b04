#pragma once

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
  std::string_view says;  ///< Which programs use it, in a few words.

  /// Draws a statement. Nothing if there is no place for it.
  std::optional<Node> (*statement)(Drawing& drawing) = nullptr;
  /// An expression of this type.
  std::optional<Node> (*value)(Drawing& drawing, TypeId type) = nullptr;
  /// A place that is reached from this one: a member, an element, a component.
  std::optional<Node> (*place)(Drawing& drawing, const Node& from) = nullptr;
  /// Changes a structure or union that was just drawn and is not used yet.
  void (*type)(Drawing& drawing, Type& record) = nullptr;
  /// Whether a program uses it that does so in no construct of it.
  bool (*isUsed)(const Program& program) = nullptr;
};

}  // namespace exploration
