#include <algorithm>
#include <cstdint>
#include <utility>

#include "exploration/features/basics.h"
#include "exploration/shrinking/edits.h"
#include "exploration/shrinking/steps.h"

namespace exploration {
namespace {

bool Calls(const Node& node) { return node.construct->names == Construct::Names::function; }

/// The node with the arguments in place of the parameters' names.
void Substitute(Node& tree, const Function& function, const std::vector<Node>& arguments) {
  if (tree.construct->names == Construct::Names::variable) {
    const auto parameter =
        std::find(function.parameters.begin(), function.parameters.end(), tree.numbers[0]);
    if (parameter != function.parameters.end() && Is(tree, "variable")) {
      tree = arguments.at(static_cast<std::size_t>(parameter - function.parameters.begin()));
      return;
    }
  }
  for (Node& part : tree.parts) Substitute(part, function, arguments);
}

/// "*&place" is the place.
void RemoveDetours(Node& tree) {
  for (Node& part : tree.parts) RemoveDetours(part);
  if (!Is(tree, "pointee") || !Is(tree.parts[0], "address")) return;
  Node place = std::move(tree.parts[0].parts[0]);
  tree = std::move(place);
}

/// A copy of the body, which may be there once already, has variables of its own.
void Rename(Program& program, Node& body, std::vector<Node*> also) {
  std::vector<std::int64_t> to(program.variables.size(), -1);
  Visit(body, [&](Node& node) {
    if (node.construct->names != Construct::Names::declaration) return;
    const auto old = static_cast<std::size_t>(node.numbers[0]);
    to[old] = static_cast<std::int64_t>(program.variables.size());
    Variable variable = program.variables[old];
    variable.name += "a";
    program.variables.push_back(variable);
  });
  const auto change = [&to](Node& node) {
    const bool names = node.construct->names == Construct::Names::variable ||
                       node.construct->names == Construct::Names::declaration;
    if (names && static_cast<std::size_t>(node.numbers[0]) < to.size() &&
        to[static_cast<std::size_t>(node.numbers[0])] >= 0)
      node.numbers[0] = to[static_cast<std::size_t>(node.numbers[0])];
  };
  Visit(body, change);
  for (Node* const node : also) Visit(*node, change);
}

}  // namespace

namespace {

/// A variable in place of each parameter, with the argument as its value or, as there may be none
/// that can be copied, without.
std::vector<Node> Variables(Program& program, const Function& function,
                            std::vector<Node>& arguments, bool areAssigned) {
  std::vector<Node> statements;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    Variable variable = program.variables[static_cast<std::size_t>(function.parameters.at(i))];
    if (program.types[variable.type].kind == Type::Kind::pointer) continue;
    const auto number = static_cast<std::int64_t>(program.variables.size());
    variable.role = Variable::Role::object;
    variable.name += "b";
    program.variables.push_back(variable);
    const Node name = NameOf(program, number);
    statements.push_back({&declarationConstruct, noType, {}, {number}});
    if (areAssigned) statements.push_back(AssignmentOf(program, name, arguments[i]));
    arguments[i] = name;
  }
  return statements;
}

}  // namespace

/// What a function does, in place of one call of it: its statements before the statement that
/// calls, its result in place of the call. The parameters are what was passed, or variables.
std::optional<Program> WithoutFunction(const Program& program, std::size_t number) {
  Program left = program;
  std::size_t call = number / 3;
  for (const StatementAt& at : StatementsOf(left)) {
    Node* found = nullptr;
    Visit(at.Statement(), [&](Node& node) {
      if (Calls(node) && call-- == 0) found = &node;
    });
    if (found == nullptr) continue;
    const Function function = left.functions.at(static_cast<std::size_t>(found->numbers[0]));
    std::vector<Node> arguments = found->parts;
    std::vector<Node> before;
    if (number % 3 != 0) before = Variables(left, function, arguments, number % 3 == 1);
    Node body = function.body;
    Substitute(body, function, arguments);
    std::vector<Node*> results;
    if (!function.result.empty()) {
      *found = function.result[0];
      Substitute(*found, function, arguments);
      results.push_back(found);
    }
    Rename(left, body, results);
    RemoveDetours(body);
    RemoveDetours(at.Statement());
    std::vector<Node>& parts = at.block->parts;
    auto begin = parts.begin() + static_cast<std::ptrdiff_t>(at.index);
    if (function.result.empty()) {
      begin = parts.erase(begin);
    } else if (at.Statement().parts.size() == 2 && Is(at.Statement(), "call statement")) {
      at.Statement() = AssignmentOf(left, at.Statement().parts[0], at.Statement().parts[1]);
    }
    begin = parts.insert(begin, body.parts.begin(), body.parts.end());
    parts.insert(begin, before.begin(), before.end());
    return left;
  }
  return std::nullopt;
}

/// Without one parameter, or without what a function returns.
std::optional<Program> WithoutParameter(const Program& program, std::size_t number) {
  Program left = program;
  for (std::size_t f = 0; f < left.functions.size(); ++f) {
    const std::size_t count = left.functions[f].parameters.size();
    const auto isCall = [f](const Node& node) {
      return Calls(node) && node.numbers[0] == static_cast<std::int64_t>(f);
    };
    if (number > count) {
      number -= count + 1;
      continue;
    }
    if (number == count) {
      left.functions[f].result.clear();
      Visit(left, [&](Node& node) {
        if (isCall(node)) node.type = noType;
        if (Is(node, "call statement") && isCall(node.parts.back()))
          node.parts.erase(node.parts.begin(), node.parts.end() - 1);
      });
      return left;
    }
    const std::int64_t parameter = left.functions[f].parameters[number];
    const auto names = [parameter](const Node& node) {
      return node.construct->names == Construct::Names::variable && node.numbers[0] == parameter;
    };
    const Type type = left.types[left.variables[static_cast<std::size_t>(parameter)].type];
    if (type.IsLeaf()) {
      Visit(left, [&](Node& node) {
        if (names(node)) node = {&literalConstruct, node.type, {}, {1}};
      });
    } else if (!EraseUsersOf(left, names)) {
      left.functions[f].result.clear();
      EraseUsersOf(left, names);
      EraseUsersOf(left, isCall);
    }
    const auto erased = static_cast<std::ptrdiff_t>(number);
    left.functions[f].parameters.erase(left.functions[f].parameters.begin() + erased);
    Visit(left, [&](Node& node) {
      if (isCall(node)) node.parts.erase(node.parts.begin() + erased);
    });
    return left;
  }
  return std::nullopt;
}

}  // namespace exploration
