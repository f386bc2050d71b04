#pragma once

#include <string>
#include <string_view>

#include "exploration/program/program.h"

namespace exploration {

/// What a construct prints with.
class Printer {
 public:
  explicit Printer(const Program& ofProgram) : program(ofProgram) {}

  const Program& program;

  std::string Text(const Node& node) const { return node.construct->print(node, *this); }
  /// With parentheses unless it is a name, a literal, a call or in parentheses already: something
  /// that `.`, `->` or `[` can follow.
  std::string Operand(const Node& node) const;
  /// The statements of a block, indented, each with a line feed.
  std::string Block(const Node& block) const;
  /// "union U1", "int4", "__global int *"; not for arrays.
  std::string TypeName(TypeId type) const;
  /// "union U1 u2[3][2]".
  std::string Declared(TypeId type, const std::string& name) const;
  /// "union U1 { ... };", on several lines, of a structure or union with a tag.
  std::string Definition(TypeId record) const;
  const std::string& VariableName(std::int64_t variable) const;
};

/// The text that a device is given.
std::string Print(const Program& program);

}  // namespace exploration
