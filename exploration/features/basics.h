#pragma once

#include <cstdint>
#include <vector>

#include "exploration/model/machine.h"
#include "exploration/printer/printer.h"
#include "exploration/program/check.h"
#include "exploration/program/program.h"

// What every program needs, whatever its features are.

namespace exploration {

extern const Construct blockConstruct;
/// numbers[0] is the variable.
extern const Construct variableConstruct;
/// A scalar or vector: the bits of each component.
extern const Construct literalConstruct;
/// Of a scalar or vector type; numbers[0] is its first slot.
extern const Construct inputConstruct;
/// Declares numbers[0] without an initializer.
extern const Construct declarationConstruct;
/// A place and a value of one scalar or vector type.
extern const Construct assignmentConstruct;
/// numbers[0] is the first slot; the part a scalar or vector.
extern const Construct answerConstruct;

Node Block(std::vector<Node> statements);
Node NameOf(const Program& program, std::int64_t variable);
Node Assignment(Node place, Node value);
/// "4L", "(uchar)4", "0x1.8p+3f" for a component with these bits.
std::string LiteralText(Scalar scalar, std::uint64_t bits);

/// For `check`: there are so many parts, and each has a type.
void RequireParts(const Node& node, std::size_t count);
/// "(int4)(a, b, c, d)", and without parentheses for a scalar.
std::string VectorText(const std::string& type, const std::vector<std::string>& components);

}  // namespace exploration
