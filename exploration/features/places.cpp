#include "exploration/features/places.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace exploration {
namespace {

const Variable& VariableOf(const Program& program, std::int64_t variable) {
  return program.variables.at(static_cast<std::size_t>(variable));
}

void CheckMember(const Node& node, const Program& program) {
  RequireParts(node, 1);
  const Type& record = program.types[node.parts[0].type];
  Require(node.parts[0].construct->kind == Construct::Kind::place && record.IsRecord(),
          "a member of what has none");
  Require(node.numbers.at(0) >= 0 &&
              static_cast<std::size_t>(node.numbers[0]) < record.members.size() &&
              record.members[static_cast<std::size_t>(node.numbers[0])].type == node.type,
          "no such member");
}
std::string PrintMember(const Node& node, const Printer& printer) {
  const Node& record = node.parts[0];
  const std::string& name =
      printer.program.types[record.type].members.at(static_cast<std::size_t>(node.numbers[0])).name;
  if (name.empty()) return printer.Operand(record);
  // Of what a pointer points to, and of a member without a name in it.
  const Node* outer = &record;
  while (!outer->parts.empty() && printer.Text(*outer) == printer.Text(outer->parts[0]))
    outer = &outer->parts[0];
  if (outer->construct->name == "pointee")
    return fmt::format("{}->{}", printer.Operand(outer->parts[0]), name);
  return fmt::format("{}.{}", printer.Operand(record), name);
}
Place LocateMember(const Node& node, Machine& machine) {
  Place place = machine.Locate(node.parts[0]);
  const int member = static_cast<int>(node.numbers[0]);
  const Type& record = machine.types[place.type];
  place.path.push_back({place.type, place.offset, member});
  if (record.kind == Type::Kind::unionType) place.throughPointer = false;
  place.offset += OffsetOf(machine.types, place.type, member);
  place.type = node.type;
  return place;
}

void CheckPointee(const Node& node, const Program& program) {
  RequireParts(node, 1);
  const Type& pointer = program.types[node.parts[0].type];
  Require(pointer.kind == Type::Kind::pointer && pointer.element == node.type,
          "a pointer to another type");
}
std::string PrintPointee(const Node& node, const Printer& printer) {
  return fmt::format("(*{})", printer.Text(node.parts[0]));
}
Place LocatePointee(const Node& node, Machine& machine) {
  Place place = machine.Evaluate(node.parts[0]).target;
  place.throughPointer = true;
  return place;
}

bool HasUnion(const Types& types, TypeId id) {
  const Type& type = types[id];
  if (type.kind == Type::Kind::array) return HasUnion(types, type.element);
  return type.kind == Type::Kind::unionType ||
         std::any_of(type.members.begin(), type.members.end(),
                     [&types](const Member& member) { return HasUnion(types, member.type); });
}

void CheckAddress(const Node& node, const Program& program) {
  RequireParts(node, 1);
  const Type& pointer = program.types[node.type];
  Require(node.parts[0].construct->kind == Construct::Kind::place &&
              pointer.kind == Type::Kind::pointer && pointer.element == node.parts[0].type,
          "an address of another type");
  Require(pointer.space == SpaceOf(node.parts[0], program), "a pointer to another address space");
}
std::string PrintAddress(const Node& node, const Printer& printer) {
  if (node.parts[0].construct->name == "pointee") return printer.Text(node.parts[0].parts[0]);
  return fmt::format("&{}", printer.Text(node.parts[0]));
}
Value EvaluateAddress(const Node& node, Machine& machine) {
  Value value;
  value.type = node.type;
  value.target = machine.Locate(node.parts[0]);
  Require(value.target.components.empty(), "the address of a component");
  RequireAligned(machine, value.target);
  // Through a pointer to a union in a union, the inner one's members could be accessed and not seem
  // to be the outer one's.
  const auto isUnion = [&machine](const Step& step) {
    return machine.types[step.record].kind == Type::Kind::unionType;
  };
  Require(!HasUnion(machine.types, value.target.type) ||
              std::none_of(value.target.path.begin(), value.target.path.end(), isUnion),
          "the address of a union in a union");
  return value;
}

void CheckOwnElement(const Node& node, const Program& program) {
  const Variable& variable = VariableOf(program, node.numbers[0]);
  const Type& array = program.types[variable.type];
  Require(array.kind == Type::Kind::array && array.element == node.type,
          "an element of what has none");
  Require(variable.space == Space::localSpace || variable.role == Variable::Role::buffer,
          "the own element of what is not shared");
}
std::string PrintOwnElement(const Node& node, const Printer& printer) {
  const Program& program = printer.program;
  const Variable& variable = VariableOf(program, node.numbers[0]);
  const bool isAlone =
      variable.space == Space::localSpace ? program.localSize == 1 : program.Items() == 1;
  const bool isLocal = variable.space == Space::localSpace;
  return fmt::format("{}[{}]", variable.name,
                     isAlone   ? "0"
                     : isLocal ? "get_local_id(0)"
                               : "get_global_id(0)");
}
Place LocateOwnElement(const Node& node, Machine& machine) {
  const bool isLocal = VariableOf(machine.program, node.numbers[0]).space == Space::localSpace;
  return ElementAt(machine, machine.PlaceOf(node.numbers[0]),
                   isLocal ? machine.LocalId() : machine.Item());
}

void CheckCall(const Node& node, const Program& program) {
  const Function& function = program.functions.at(static_cast<std::size_t>(node.numbers[0]));
  RequireParts(node, function.parameters.size());
  for (std::size_t i = 0; i < node.parts.size(); ++i)
    Require(VariableOf(program, function.parameters[i]).type == node.parts[i].type,
            "an argument of another type");
  Require(node.type == (function.result.empty() ? noType : function.result[0].type),
          "a result of another type");
}
std::string PrintCall(const Node& node, const Printer& printer) {
  std::vector<std::string> arguments;
  for (const Node& part : node.parts) arguments.push_back(printer.Text(part));
  return fmt::format("{}({})",
                     printer.program.functions.at(static_cast<std::size_t>(node.numbers[0])).name,
                     fmt::join(arguments, ", "));
}
Value EvaluateCall(const Node& node, Machine& machine) {
  const Function& function =
      machine.program.functions.at(static_cast<std::size_t>(node.numbers[0]));
  std::vector<Node> parameters;
  for (const int parameter : function.parameters)
    parameters.push_back(NameOf(machine.program, parameter));
  PassArguments(machine, parameters, node.parts);
  machine.Execute(function.body);
  return function.result.empty() ? Value() : machine.Evaluate(function.result[0]);
}

const Construct memberConstruct = {.name = "member",
                                   .feature = "members",
                                   .kind = Construct::Kind::place,
                                   .check = CheckMember,
                                   .print = PrintMember,
                                   .place = LocateMember};
const Construct pointeeConstruct = {.name = "pointee",
                                    .kind = Construct::Kind::place,
                                    .check = CheckPointee,
                                    .print = PrintPointee,
                                    .place = LocatePointee};
const Construct addressConstruct = {
    .name = "address", .check = CheckAddress, .print = PrintAddress, .value = EvaluateAddress};
const Construct ownElementConstruct = {.name = "own element",
                                       .kind = Construct::Kind::place,
                                       .names = Construct::Names::variable,
                                       .check = CheckOwnElement,
                                       .print = PrintOwnElement,
                                       .place = LocateOwnElement};

}  // namespace

const Construct callConstruct = {.name = "call",
                                 .names = Construct::Names::function,
                                 .check = CheckCall,
                                 .print = PrintCall,
                                 .value = EvaluateCall};

Node MemberOf(const Program& program, Node record, int member) {
  const TypeId type = program.types[record.type].members.at(static_cast<std::size_t>(member)).type;
  return {&memberConstruct, type, {std::move(record)}, {member}};
}

Node Pointee(const Program& program, Node pointer) {
  const TypeId type = program.types[pointer.type].element;
  return {&pointeeConstruct, type, {std::move(pointer)}, {}};
}

Node AddressOf(Program& program, Node place) {
  const TypeId type = program.types.PointerTo(place.type, SpaceOf(place, program));
  return {&addressConstruct, type, {std::move(place)}, {}};
}

Node OwnElement(const Program& program, int variable) {
  const TypeId type = program.types[VariableOf(program, variable).type].element;
  return {&ownElementConstruct, type, {}, {variable}};
}

Space SpaceOf(const Node& place, const Program& program) {
  if (place.construct == &pointeeConstruct) return program.types[place.parts.at(0).type].space;
  if (place.construct->names == Construct::Names::variable)
    return VariableOf(program, place.numbers.at(0)).space;
  return place.parts.empty() ? Space::privateSpace : SpaceOf(place.parts[0], program);
}

void CheckElement(const Node& node, const Program& program) {
  RequireParts(node, 2);
  const Type& array = program.types[node.parts[0].type];
  const Type& index = program.types[node.parts[1].type];
  Require(node.parts[0].construct->kind == Construct::Kind::place &&
              array.kind == Type::Kind::array && array.element == node.type,
          "an element of what has none");
  Require(index.kind == Type::Kind::scalar && !TraitsOf(index.scalar).isFloat,
          "an index that is no integer");
}

std::string PrintElement(const Node& node, const Printer& printer) {
  return fmt::format("{}[{}]", printer.Operand(node.parts[0]), printer.Text(node.parts[1]));
}

Place LocateElement(const Node& node, Machine& machine) {
  const std::int64_t index = KnownInteger(machine.types, machine.Evaluate(node.parts[1]));
  return ElementAt(machine, machine.Locate(node.parts[0]), index);
}

Place ElementAt(const Machine& machine, Place array, std::int64_t index) {
  const Type& type = machine.types[array.type];
  Require(index >= 0 && index < type.count, "an index beyond the array");
  array.type = type.element;
  array.offset += static_cast<std::size_t>(index) * SizeOf(machine.types, type.element);
  return array;
}

// A pointer to what a packed structure holds may point where its type is not aligned. The object
// itself is aligned as its type is.
void RequireAligned(const Machine& machine, const Place& place) {
  const std::size_t alignment = AlignmentOf(machine.types, place.type);
  Require(place.offset % alignment == 0 &&
              AlignmentOf(machine.types, machine.ObjectOf(place).type) % alignment == 0,
          "a pointer that is not aligned");
}

void PassArguments(Machine& machine, const std::vector<Node>& parameters,
                   const std::vector<Node>& arguments) {
  std::vector<Value> values;
  for (const Node& argument : arguments) values.push_back(machine.Evaluate(argument));
  for (std::size_t i = 0; i < values.size() && i < parameters.size(); ++i) {
    const std::int64_t variable = parameters[i].numbers.at(0);
    if (machine.types[values[i].type].kind == Type::Kind::pointer) {
      machine.Bind(variable, values[i]);
    } else {
      machine.Declare(variable);
      machine.StoreTo(machine.PlaceOf(variable), values[i]);
    }
  }
}

}  // namespace exploration
