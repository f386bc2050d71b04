#include "exploration/program/program.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace exploration {
namespace {

/// New numbers for what stays.
class Renumbering {
 public:
  explicit Renumbering(std::size_t count) : used(count) {}
  void Use(std::int64_t number) { used.at(static_cast<std::size_t>(number)) = true; }
  void Use(std::int64_t first, int count) {
    for (int i = 0; i < count; ++i) Use(first + i);
  }
  bool IsUsed(std::size_t number) const { return used.at(number); }
  std::int64_t operator[](std::int64_t number) const {
    return std::count(used.begin(), used.begin() + number, true);
  }
  int Count() const { return static_cast<int>(std::count(used.begin(), used.end(), true)); }

  template <typename T>
  std::vector<T> Left(const std::vector<T>& all) const {
    std::vector<T> left;
    for (std::size_t i = 0; i < all.size(); ++i)
      if (used.at(i)) left.push_back(all[i]);
    return left;
  }

 private:
  std::vector<bool> used;
};

struct Uses {
  explicit Uses(const Program& ofProgram)
      : program(ofProgram),
        types(static_cast<std::size_t>(ofProgram.types.End())),
        variables(ofProgram.variables.size()),
        functions(ofProgram.functions.size()),
        inputs(ofProgram.inputs.empty() ? 0 : ofProgram.inputs.front().size()),
        answers(static_cast<std::size_t>(ofProgram.answers)) {
    for (TypeId id = 0; id < Types::FirstOwn(); ++id) types.Use(id);
    Add(program.body);
    for (std::size_t f = program.functions.size(); f-- > 0;) {
      if (!functions.IsUsed(f)) continue;
      const Function& function = program.functions[f];
      for (const int parameter : function.parameters) variables.Use(parameter);
      Add(function.body);
      for (const Node& result : function.result) Add(result);
    }
    for (const ConstantData& data : program.constants)
      if (variables.IsUsed(static_cast<std::size_t>(data.variable))) Add(data.initializer);
    for (std::size_t v = 0; v < program.variables.size(); ++v)
      if (variables.IsUsed(v)) AddType(program.variables[v].type);
  }

  void AddType(TypeId id) {
    if (id == noType) return;
    types.Use(id);
    const Type& type = program.types[id];
    AddType(type.element);
    for (const Member& member : type.members) AddType(member.type);
  }

  void Add(const Node& tree) {
    Visit(tree, [this](const Node& node) {
      AddType(node.type);
      const auto width = [this](const Node& of) {
        return of.type == noType ? 0 : program.types[of.type].count;
      };
      switch (node.construct->names) {
        case Construct::Names::nothing:
          break;
        case Construct::Names::variable:
        case Construct::Names::declaration:
          variables.Use(node.numbers.at(0));
          break;
        case Construct::Names::function:
          functions.Use(node.numbers.at(0));
          break;
        case Construct::Names::input:
          inputs.Use(node.numbers.at(0), width(node));
          break;
        case Construct::Names::answer:
          answers.Use(node.numbers.at(0), width(node.parts.at(0)));
          break;
      }
    });
  }

  void Renumber(Node& node) const {
    if (node.type != noType) node.type = static_cast<TypeId>(types[node.type]);
    switch (node.construct->names) {
      case Construct::Names::nothing:
        break;
      case Construct::Names::variable:
      case Construct::Names::declaration:
        node.numbers[0] = variables[node.numbers[0]];
        break;
      case Construct::Names::function:
        node.numbers[0] = functions[node.numbers[0]];
        break;
      case Construct::Names::input:
        node.numbers[0] = inputs[node.numbers[0]];
        break;
      case Construct::Names::answer:
        node.numbers[0] = answers[node.numbers[0]];
        break;
    }
  }

  const Program& program;
  Renumbering types, variables, functions, inputs, answers;
};

template <typename SomeProgram, typename Function>
void VisitAll(SomeProgram& program, const Function& visit) {
  for (auto& data : program.constants) Visit(data.initializer, visit);
  for (auto& function : program.functions) {
    Visit(function.body, visit);
    for (auto& result : function.result) Visit(result, visit);
  }
  Visit(program.body, visit);
}

}  // namespace

void Visit(const Node& node, const std::function<void(const Node&)>& visit) {
  visit(node);
  for (const Node& part : node.parts) Visit(part, visit);
}

void Visit(Node& node, const std::function<void(Node&)>& visit) {
  visit(node);
  for (Node& part : node.parts) Visit(part, visit);
}

void Visit(const Program& program, const std::function<void(const Node&)>& visit) {
  VisitAll(program, visit);
}

void Visit(Program& program, const std::function<void(Node&)>& visit) { VisitAll(program, visit); }

bool UsesScalar(const Program& program, Scalar scalar) {
  bool uses = false;
  const auto look = [&](TypeId id) {
    if (id == noType) return;
    const Type& type = program.types[id];
    uses = uses || (type.IsLeaf() && type.scalar == scalar);
  };
  for (TypeId id = Types::FirstOwn(); id < program.types.End(); ++id) {
    look(program.types[id].element);
    for (const Member& member : program.types[id].members) look(member.type);
  }
  for (const Variable& variable : program.variables) look(variable.type);
  Visit(program, [&](const Node& node) { look(node.type); });
  return uses;
}

std::size_t WeightOf(const Program& program) {
  auto weight = static_cast<std::size_t>(program.Items());
  Visit(program, [&weight](const Node&) { ++weight; });
  for (TypeId id = Types::FirstOwn(); id < program.types.End(); ++id) {
    const Type& type = program.types[id];
    weight += 1 + type.members.size() + (type.packed ? 1 : 0) + (type.aligned != 0 ? 1 : 0);
    if (type.kind == Type::Kind::array) weight += static_cast<std::size_t>(type.count);
    for (const Member& member : type.members) {
      weight += member.aligned != 0 ? 1 : 0;
      if (member.type < Types::FirstOwn())
        weight += static_cast<std::size_t>(program.types[member.type].count);
    }
  }
  return weight;
}

Program WithoutUnused(const Program& program) {
  const Uses uses(program);
  Program left = program;
  left.types = Types();
  for (TypeId id = Types::FirstOwn(); id < program.types.End(); ++id) {
    if (!uses.types.IsUsed(static_cast<std::size_t>(id))) continue;
    Type type = program.types[id];
    if (type.element != noType) type.element = static_cast<TypeId>(uses.types[type.element]);
    for (Member& member : type.members) member.type = static_cast<TypeId>(uses.types[member.type]);
    left.types.Add(std::move(type));
  }
  left.functions = uses.functions.Left(program.functions);
  left.variables = uses.variables.Left(program.variables);
  for (Variable& variable : left.variables)
    variable.type = static_cast<TypeId>(uses.types[variable.type]);
  const auto isUnused = [&uses](const auto& data) {
    return !uses.variables.IsUsed(static_cast<std::size_t>(data.variable));
  };
  std::erase_if(left.buffers, isUnused);
  std::erase_if(left.constants, isUnused);
  const auto renumbered = [&uses](int variable) {
    return static_cast<int>(uses.variables[variable]);
  };
  for (Buffer& buffer : left.buffers) buffer.variable = renumbered(buffer.variable);
  for (ConstantData& data : left.constants) data.variable = renumbered(data.variable);
  for (Function& function : left.functions)
    for (int& parameter : function.parameters) parameter = renumbered(parameter);
  for (std::vector<std::int64_t>& inputs : left.inputs) inputs = uses.inputs.Left(inputs);
  left.answers = uses.answers.Count();
  Visit(left, [&uses](Node& node) { uses.Renumber(node); });
  return left;
}

}  // namespace exploration
