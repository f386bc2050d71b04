#include "exploration/shrinking/edits.h"

#include <algorithm>
#include <utility>

#include "exploration/features/basics.h"
#include "exploration/features/places.h"
#include "exploration/types/layout.h"

namespace exploration {
namespace {

std::size_t Index(std::int64_t number) { return static_cast<std::size_t>(number); }

void AddStatements(Node& node, std::vector<StatementAt>& found) {
  const bool isBlock = node.construct->kind == Construct::Kind::block;
  for (std::size_t i = 0; i < node.parts.size(); ++i) {
    if (isBlock) found.push_back({&node, i});
    AddStatements(node.parts[i], found);
  }
}

// Of its own: not what stands in the blocks of it.
bool HoldsItself(const Node& statement, const std::function<bool(const Node&)>& which) {
  if (which(statement)) return true;
  return std::any_of(statement.parts.begin(), statement.parts.end(), [&](const Node& part) {
    return part.construct->kind != Construct::Kind::block && HoldsItself(part, which);
  });
}

/// Adds to `which` what uses a variable that a statement in it declares.
void AddUsers(const std::vector<StatementAt>& statements, std::vector<bool>& which,
              std::vector<bool>& isGone) {
  for (bool changes = true; std::exchange(changes, false);) {
    for (std::size_t i = 0; i < statements.size(); ++i) {
      const Node& statement = statements[i].Statement();
      if (which[i] && statement.construct->names == Construct::Names::declaration) {
        changes = changes || !isGone[Index(statement.numbers[0])];
        isGone[Index(statement.numbers[0])] = true;
      }
      if (which[i]) continue;
      which[i] = HoldsItself(statement, [&isGone](const Node& node) {
        return node.construct->names == Construct::Names::variable &&
               isGone[Index(node.numbers[0])];
      });
      changes = changes || which[i];
    }
  }
}

void EraseThese(const std::vector<StatementAt>& statements, const std::vector<bool>& which) {
  for (std::size_t i = statements.size(); i-- > 0;) {
    std::vector<Node>& parts = statements[i].block->parts;
    if (which[i]) parts.erase(parts.begin() + static_cast<std::ptrdiff_t>(statements[i].index));
  }
}

void TidyNode(const Program& program, Node& node) {
  if (node.type == noType) return;
  const Type& type = program.types[node.type];
  if (Is(node, "literal") && type.IsLeaf())
    node.numbers.resize(Index(type.count), node.numbers.empty() ? 0 : node.numbers.back());
  if (node.parts.empty() || node.parts[0].type == noType) return;
  const Type& of = program.types[node.parts[0].type];
  if (Is(node, "component")) node.numbers[0] %= of.count;
  // Braces for a structure may begin with an array and go on with a literal that is no index.
  if (of.kind != Type::Kind::array || node.type != of.element || node.parts.size() != 2 ||
      !Is(node.parts[1], "literal"))
    return;
  for (std::int64_t& index : node.parts[1].numbers) index %= of.count;
}

// Of arrays and pointers; structures and unions are told apart by their tags.
void MergeTypes(Program& program) {
  std::vector<TypeId> to = NoChange(program);
  bool changes = false;
  for (TypeId id = Types::FirstOwn(); id < program.types.End(); ++id) {
    const Type& type = program.types[id];
    if (type.IsRecord()) continue;
    for (TypeId other = Types::FirstOwn(); other < id && to[Index(id)] == noType; ++other) {
      const Type& before = program.types[other];
      if (before.kind != type.kind || before.element != type.element ||
          before.count != type.count || before.space != type.space)
        continue;
      to[Index(id)] = other;
      changes = true;
    }
  }
  if (changes) Retype(program, to);
}

}  // namespace

std::vector<StatementAt> StatementsOf(Program& program) {
  std::vector<StatementAt> found;
  for (Function& function : program.functions) AddStatements(function.body, found);
  AddStatements(program.body, found);
  return found;
}

std::vector<Node*> NodesOf(Program& program) {
  std::vector<Node*> nodes;
  Visit(program, [&nodes](Node& node) { nodes.push_back(&node); });
  return nodes;
}

bool Is(const Node& node, std::string_view construct) { return node.construct->name == construct; }

bool Holds(const Node& node, const std::function<bool(const Node&)>& which) {
  return which(node) || std::any_of(node.parts.begin(), node.parts.end(),
                                    [&which](const Node& part) { return Holds(part, which); });
}

void Erase(Program& program, const std::vector<bool>& which) {
  const std::vector<StatementAt> statements = StatementsOf(program);
  std::vector<bool> all = which;
  all.resize(statements.size());
  // Statements in those that are erased go with them, and what they declare is used nowhere else.
  std::vector<bool> isGone(program.variables.size());
  AddUsers(statements, all, isGone);
  EraseThese(statements, all);
}

bool EraseUsersOf(Program& program, const std::function<bool(const Node&)>& which) {
  for (const Function& function : program.functions)
    for (const Node& result : function.result)
      if (Holds(result, which)) return false;
  std::vector<bool> users;
  for (const StatementAt& at : StatementsOf(program))
    users.push_back(HoldsItself(at.Statement(), which));
  Erase(program, users);
  return true;
}

std::vector<TypeId> NoChange(const Program& program) {
  return std::vector<TypeId>(Index(program.types.End()), noType);
}

void Retype(Program& program, const std::vector<TypeId>& to) {
  const auto change = [&to](TypeId& id) {
    // A type may become one that changes too, but those are ever earlier ones.
    for (int i = 0; i < 8 && id != noType && Index(id) < to.size() && to[Index(id)] != noType; ++i)
      id = to[Index(id)];
  };
  for (TypeId id = Types::FirstOwn(); id < program.types.End(); ++id) {
    change(program.types.Own(id).element);
    for (Member& member : program.types.Own(id).members) change(member.type);
  }
  for (Variable& variable : program.variables) change(variable.type);
  Visit(program, [&change](Node& node) { change(node.type); });
}

Node AssignmentOf(const Program& program, Node place, Node value) {
  if (program.types[place.type].IsRecord())
    return WholeAssignment(program, std::move(place), std::move(value));
  return Assignment(std::move(place), std::move(value));
}

Program Tidied(Program program) {
  MergeTypes(program);
  Visit(program, [&program](Node& node) { TidyNode(program, node); });
  program = WithoutUnused(program);
  for (Buffer& buffer : program.buffers)
    buffer.bytes.resize(
        SizeOf(program.types, program.variables[static_cast<std::size_t>(buffer.variable)].type));
  const std::vector<std::int64_t> own =
      program.inputs.empty() ? std::vector<std::int64_t>() : program.inputs.front();
  program.inputs.resize(static_cast<std::size_t>(program.Items()), own);
  return program;
}

std::optional<std::vector<bool>> Chunk(std::size_t parts, std::size_t number) {
  for (std::size_t size = std::max<std::size_t>(parts / 2, 1); parts > 0; size /= 2) {
    const std::size_t chunks = (parts + size - 1) / size;
    if (number < chunks) {
      const std::size_t end = parts - number * size;
      std::vector<bool> which(parts);
      for (std::size_t i = end > size ? end - size : 0; i < end; ++i) which[i] = true;
      return which;
    }
    if (size == 1) break;
    number -= chunks;
  }
  return std::nullopt;
}

}  // namespace exploration
