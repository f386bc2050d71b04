#include "exploration/program/check.h"

#include <cstddef>
#include <vector>

namespace exploration {
namespace {

class Checker {
 public:
  explicit Checker(const Program& ofProgram)
      : program(ofProgram), declared(ofProgram.variables.size()) {}

  void CheckAll() {
    Require(program.localSize > 0 && program.groups > 0, "there is no work-item");
    Require(program.inputs.size() == static_cast<std::size_t>(program.Items()),
            "each work-item has inputs of its own");
    for (TypeId id = Types::FirstOwn(); id < program.types.End(); ++id) CheckType(id);
    for (const Variable& variable : program.variables) CheckVariable(variable);
    for (const ConstantData& data : program.constants) {
      CheckTree(data.initializer, Construct::Where::anywhere);
      Require(data.initializer.type == Find(data.variable).type, "an initializer of another type");
      Declare(data.variable);
    }
    const std::vector<bool> global = declared;
    for (function = 0; function < program.functions.size(); ++function) {
      for (const int parameter : program.functions[function].parameters) Declare(parameter);
      CheckTree(program.functions[function].body, Construct::Where::anywhere);
      Require(program.functions[function].result.size() <= 1, "a function has one result");
      for (const Node& result : program.functions[function].result)
        CheckTree(result, Construct::Where::anywhere);
      declared = global;
    }
    for (const Buffer& buffer : program.buffers) Declare(buffer.variable);
    CheckTree(program.body, Construct::Where::kernelOutermost);
  }

 private:
  const Variable& Find(std::int64_t variable) const {
    Require(variable >= 0 && variable < static_cast<std::int64_t>(program.variables.size()),
            "no such variable");
    return program.variables[static_cast<std::size_t>(variable)];
  }

  void Declare(std::int64_t variable) {
    Find(variable);
    Require(!declared[static_cast<std::size_t>(variable)], "declared twice");
    declared[static_cast<std::size_t>(variable)] = true;
  }

  bool IsArray(TypeId id) const { return program.types[id].kind == Type::Kind::array; }

  void CheckType(TypeId id) const {
    const Type& type = program.types[id];
    if (type.kind == Type::Kind::array || type.kind == Type::Kind::pointer) {
      Require(type.element >= 0 && type.element < id, "a type is made of those before it");
      Require(type.count > 0, "an array has elements");
      Require(type.kind == Type::Kind::array || !IsArray(type.element), "a pointer to an array");
      return;
    }
    Require(type.IsRecord() && !type.members.empty(), "a structure or union has members");
    for (const Member& member : type.members) {
      Require(member.type >= 0 && member.type < id, "a type is made of those before it");
      const Type& of = program.types[member.type];
      Require(of.kind != Type::Kind::pointer, "a pointer is no member");
      Require(!member.name.empty() || (of.IsRecord() && of.name.empty()),
              "only a structure or union without a tag is anonymous");
    }
  }

  void CheckVariable(const Variable& variable) const {
    Require(variable.type >= 0 && variable.type < program.types.End(), "no such type");
    const Type& type = program.types[variable.type];
    Require(!type.IsRecord() || !type.name.empty(), "what has no tag has no variable");
    // The kernel has a pointer to the elements, and what is printed there is no pointer to arrays.
    if (variable.role == Variable::Role::buffer)
      Require(type.kind == Type::Kind::array && !IsArray(type.element), "a buffer of arrays");
    if (variable.role == Variable::Role::parameter)
      Require(type.kind != Type::Kind::array, "an array is no parameter");
  }

  void CheckTree(const Node& node, Construct::Where where) {
    Require(node.construct != nullptr, "a node that is nothing");
    const Construct& construct = *node.construct;
    Require(construct.where <= where, "not here");
    Require(node.type >= noType && node.type < program.types.End(), "no such type");
    if (construct.names != Construct::Names::nothing)
      Require(!node.numbers.empty() && node.numbers[0] >= 0, "a node that names nothing");
    if (construct.names == Construct::Names::declaration) {
      Declare(node.numbers[0]);
      Require(Find(node.numbers[0]).space != Space::localSpace ||
                  where == Construct::Where::kernelOutermost,
              "local memory belongs to the kernel");
    }
    if (construct.names == Construct::Names::variable) {
      Find(node.numbers[0]);
      Require(declared[static_cast<std::size_t>(node.numbers[0])], "not declared");
    }
    if (construct.names == Construct::Names::function)
      Require(static_cast<std::size_t>(node.numbers[0]) < function, "not defined yet");
    const bool isBlock = construct.kind == Construct::Kind::block;
    const std::vector<bool> outside = declared;
    // The statements of the kernel's own block stand outermost, and whatever they are made of does
    // not.
    const bool isOutermost = isBlock && &node == &program.body;
    const auto within =
        isOutermost || where == Construct::Where::anywhere ? where : Construct::Where::kernel;
    for (const Node& part : node.parts) {
      const bool isStatement =
          part.construct != nullptr && part.construct->kind == Construct::Kind::statement;
      Require(isStatement == isBlock, "statements stand in blocks");
      CheckTree(part, within);
    }
    if (construct.check != nullptr) construct.check(node, program);
    // What a function returns can still see its variables.
    const bool isFunction =
        function < program.functions.size() && &node == &program.functions[function].body;
    if (isBlock && !isFunction) declared = outside;
  }

  const Program& program;
  std::vector<bool> declared;
  std::size_t function = 0;  ///< Which is being checked; the kernel comes last.
};

}  // namespace

void Check(const Program& program) { Checker(program).CheckAll(); }

}  // namespace exploration
