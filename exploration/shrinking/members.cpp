#include <algorithm>
#include <utility>

#include "exploration/features/basics.h"
#include "exploration/shrinking/edits.h"
#include "exploration/shrinking/steps.h"

namespace exploration {
namespace {

bool IsMemberOf(const Node& node, TypeId record) {
  return Is(node, "member") && node.parts[0].type == record;
}

bool IsBracesOf(const Node& node, TypeId type) { return Is(node, "braces") && node.type == type; }

/// One step up, where it is the only way: what lies in the type takes its place.
void Collapse(Program& program, TypeId outer, TypeId inner,
              const std::function<bool(const Node&)>& isStep) {
  const auto collapse = [&](auto& self, Node& tree) -> void {
    for (Node& part : tree.parts) self(self, part);
    const bool isBraces = IsBracesOf(tree, outer) && tree.parts.size() == 1;
    if (!isBraces && !isStep(tree)) return;
    Node within = std::move(tree.parts[0]);
    tree = std::move(within);
  };
  for (ConstantData& data : program.constants) collapse(collapse, data.initializer);
  for (Function& function : program.functions) {
    collapse(collapse, function.body);
    for (Node& result : function.result) collapse(collapse, result);
  }
  collapse(collapse, program.body);
  std::vector<TypeId> to = NoChange(program);
  to[static_cast<std::size_t>(outer)] = inner;
  Retype(program, to);
}

/// Takes it out of the type, with the initializers in braces of which it is one of several.
Program WithoutMember(const Program& program, TypeId id, std::int64_t member) {
  Program left = program;
  std::vector<Member>& members = left.types.Own(id).members;
  members.erase(members.begin() + static_cast<std::ptrdiff_t>(member));
  Visit(left, [&](Node& node) {
    if (IsMemberOf(node, id) && node.numbers[0] > member) --node.numbers[0];
    if (!IsBracesOf(node, id)) return;
    for (std::size_t i = node.numbers.size(); i-- > 0;) {
      if (node.numbers[i] == member) {
        node.numbers.erase(node.numbers.begin() + static_cast<std::ptrdiff_t>(i));
        node.parts.erase(node.parts.begin() + static_cast<std::ptrdiff_t>(i));
      } else if (node.numbers[i] > member) {
        --node.numbers[i];
      }
    }
  });
  return left;
}

/// With whatever uses it.
Program WithoutUsedMember(const Program& program, TypeId id, std::int64_t member) {
  Program left = program;
  EraseUsersOf(left, [&](const Node& node) {
    return (IsMemberOf(node, id) || (IsBracesOf(node, id) && node.parts.size() == 1)) &&
           node.numbers[0] == member;
  });
  return WithoutMember(left, id, member);
}

}  // namespace

std::optional<Program> WithoutMember(const Program& program, std::size_t number) {
  for (TypeId id = Types::FirstOwn(); id < program.types.End(); ++id) {
    const std::size_t count = program.types[id].members.size();
    if (number < count) return WithoutUsedMember(program, id, static_cast<std::int64_t>(number));
    number -= count;
  }
  return std::nullopt;
}

/// Two of one structure or union, without one of which others may lie as if nothing were wrong.
std::optional<Program> WithoutTwoMembers(const Program& program, std::size_t number) {
  for (TypeId id = Types::FirstOwn(); id < program.types.End(); ++id) {
    const auto count = static_cast<std::int64_t>(program.types[id].members.size());
    for (std::int64_t later = 1; later < count; ++later)
      for (std::int64_t earlier = 0; earlier < later; ++earlier)
        if (number-- == 0)
          return WithoutUsedMember(WithoutUsedMember(program, id, later), id, earlier);
  }
  return std::nullopt;
}

/// An earlier one of the same type in its place.
std::optional<Program> WithOneMember(const Program& program, std::size_t number) {
  for (TypeId id = Types::FirstOwn(); id < program.types.End(); ++id) {
    const std::vector<Member>& members = program.types[id].members;
    for (std::size_t member = 1; member < members.size(); ++member) {
      for (std::size_t other = 0; other < member; ++other) {
        if (members[other].type != members[member].type || number-- != 0) continue;
        Program left = program;
        Visit(left, [&](Node& node) {
          const bool isOne =
              IsMemberOf(node, id) || (IsBracesOf(node, id) && node.parts.size() == 1);
          if (isOne && node.numbers[0] == static_cast<std::int64_t>(member))
            node.numbers[0] = static_cast<std::int64_t>(other);
        });
        return WithoutMember(left, id, static_cast<std::int64_t>(member));
      }
    }
  }
  return std::nullopt;
}

namespace {

/// Variables with initializers that are no structures or unions any more.
void InitializeByAssignment(Program& program) {
  const std::vector<StatementAt> statements = StatementsOf(program);
  for (std::size_t i = statements.size(); i-- > 0;) {
    const Node statement = statements[i].Statement();
    if (!Is(statement, "initialized") || program.types[statement.parts[0].type].IsRecord())
      continue;
    std::vector<Node>& parts = statements[i].block->parts;
    const std::int64_t variable = statement.numbers[0];
    parts[statements[i].index] =
        AssignmentOf(program, NameOf(program, variable), statement.parts[0]);
    parts.insert(parts.begin() + static_cast<std::ptrdiff_t>(statements[i].index),
                 {&declarationConstruct, noType, {}, {variable}});
  }
}

}  // namespace

/// A structure or union with one member is that member.
std::optional<Program> WithoutRecord(const Program& program, std::size_t number) {
  for (TypeId id = Types::FirstOwn(); id < program.types.End(); ++id) {
    if (program.types[id].members.size() != 1 || number-- != 0) continue;
    Program left = program;
    Collapse(left, id, program.types[id].members[0].type,
             [id](const Node& node) { return IsMemberOf(node, id); });
    Visit(left, [&left](Node& node) {
      if (Is(node, "whole union") || Is(node, "whole struct"))
        node = AssignmentOf(left, node.parts[0], node.parts[1]);
    });
    InitializeByAssignment(left);
    return left;
  }
  return std::nullopt;
}

/// An array of one element is that element.
std::optional<Program> WithoutArray(const Program& program, std::size_t number) {
  for (TypeId id = Types::FirstOwn(); id < program.types.End(); ++id) {
    const Type& type = program.types[id];
    if (type.kind != Type::Kind::array || type.count != 1 || number-- != 0) continue;
    Program left = program;
    Collapse(left, id, type.element, [id](const Node& node) {
      return (Is(node, "element") || Is(node, "run-time element")) && node.parts[0].type == id;
    });
    return left;
  }
  return std::nullopt;
}

/// Of one element, of half as many, of one less.
std::optional<Program> WithShorterArray(const Program& program, std::size_t number) {
  for (TypeId id = Types::FirstOwn(); id < program.types.End(); ++id) {
    const int count = program.types[id].count;
    if (program.types[id].kind != Type::Kind::array || number >= 3) {
      if (program.types[id].kind == Type::Kind::array) number -= 3;
      continue;
    }
    Program left = program;
    left.types.Own(id).count = number == 0   ? 1
                               : number == 1 ? (count + 1) / 2
                                             : std::max(count - 1, 1);
    return left;
  }
  return std::nullopt;
}

}  // namespace exploration
