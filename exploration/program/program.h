#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "exploration/types/types.h"

// A program as data: small enough that any piece can be deleted or replaced. Whether what is left
// is a valid program says its model, by executing it.

namespace exploration {

class Machine;
class Printer;
struct Place;
struct Program;
struct Value;
struct Construct;

/// A piece of a program: an expression, something that can be stored to, a statement, a block.
struct Node {
  const Construct* construct = nullptr;
  TypeId type = noType;  ///< Of the expression or place; noType of a statement.
  std::vector<Node> parts;
  /// What the construct needs beside its parts: a member's number, a literal's value, a variable.
  std::vector<std::int64_t> numbers;

  bool operator==(const Node&) const = default;
};

/// What a node can be. There is one of each, for all programs and as long as the process runs, so
/// that a node's construct is compared by its address.
struct Construct {
  enum class Kind : std::uint8_t {
    value,  ///< An expression that only has a value.
    place,  ///< An lvalue; as an expression, what stands there.
    statement,
    block  ///< Its parts are statements, any of which can be left out.
  };
  std::string_view name = {};
  /// The language's feature that this belongs to; empty for what every program needs.
  std::string_view feature = {};
  Kind kind = Kind::value;
  /// What numbers[0] is the number of. With `declaration` it is a variable that the node declares,
  /// for what follows in its block and for its own parts. With `input` and `answer` it is the first
  /// slot of as many as the node, or its first part, has components.
  enum class Names : std::uint8_t { nothing, variable, declaration, function, input, answer };
  Names names = Names::nothing;
  /// A helper function has neither inputs nor answers, and what waits for all work-items may stand
  /// in no condition and no loop.
  enum class Where : std::uint8_t { anywhere, kernel, kernelOutermost };
  Where where = Where::anywhere;

  /// Throws Invalid if parts and numbers do not fit each other. Of the parts themselves nothing
  /// needs to be checked but their types and kinds.
  void (*check)(const Node& node, const Program& program) = nullptr;
  /// A statement ends without a line feed, and its lines are not indented.
  std::string (*print)(const Node& node, const Printer& printer) = nullptr;
  /// The one that fits the kind. These throw Invalid where the program's behaviour would be
  /// undefined, or where what a device may do is in doubt.
  Value (*value)(const Node& node, Machine& machine) = nullptr;
  Place (*place)(const Node& node, Machine& machine) = nullptr;
  void (*execute)(const Node& node, Machine& machine) = nullptr;
  /// What the node may be replaced by to be plainer, the plainest first. May be null. That a part
  /// of the same type can stand for the whole goes without saying.
  std::vector<Node> (*simpler)(const Node& node, const Program& program) = nullptr;
};

struct Variable {
  enum class Role : std::uint8_t {
    object,     ///< Declared by a statement.
    parameter,  ///< Of a helper function.
    counter,    ///< An int that a loop declares and counts.
    buffer,     ///< A parameter of the kernel: an array of which the program sees a pointer.
    constant    ///< Data in the program's own text.
  };
  std::string name;
  /// Of a buffer the array of all elements.
  TypeId type = noType;
  Space space = Space::privateSpace;
  Role role = Role::object;
};

/// What is global, and what the host fills before the kernel runs.
struct Buffer {
  int variable = 0;
  std::vector<std::uint8_t> bytes;
};

/// `__constant` data in the text, with an initializer.
struct ConstantData {
  int variable = 0;
  Node initializer;
};

/// A helper function.
struct Function {
  std::string name;
  std::vector<int> parameters;  ///< Variables.
  Node body;                    ///< A block.
  std::vector<Node> result;     ///< What it returns at its end; empty for a void function.
};

struct Program {
  std::uint64_t seed = 0;
  std::uint64_t number = 0;
  Types types;
  std::vector<Variable> variables;  ///< Of all functions. Names are unique, but nothing else is.
  std::vector<ConstantData> constants;
  std::vector<Function> functions;  ///< One may only call those before it.
  std::vector<Buffer> buffers;
  Node body;  ///< The kernel's, a block.

  int localSize = 1;
  int groups = 1;
  /// Of each work-item the values that it finds in `in`.
  std::vector<std::vector<std::int64_t>> inputs;
  /// How many elements of `out` belong to each work-item.
  int answers = 0;

  int Items() const { return localSize * groups; }
};

/// Calls `visit` for the node and everything below it, from the outside inwards.
void Visit(const Node& node, const std::function<void(const Node&)>& visit);
void Visit(Node& node, const std::function<void(Node&)>& visit);
/// The same for every node of a program.
void Visit(const Program& program, const std::function<void(const Node&)>& visit);
void Visit(Program& program, const std::function<void(Node&)>& visit);

/// Whether the program computes or keeps values of this type, alone or as components.
bool UsesScalar(const Program& program, Scalar scalar);

/// How many nodes, types' members and work-items there are: what shrinking makes small.
std::size_t WeightOf(const Program& program);

/// Takes out the functions, types, constants, buffers and inputs that nothing uses any more, so
/// that those that stay have new numbers.
Program WithoutUnused(const Program& program);

}  // namespace exploration
