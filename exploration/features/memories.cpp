#include <algorithm>

#include "exploration/features/drawing.h"
#include "exploration/features/features.h"
#include "exploration/features/places.h"

namespace exploration {
namespace {

bool HasObject(const Program& program, Space space, Variable::Role role) {
  return std::any_of(program.variables.begin(), program.variables.end(),
                     [&](const Variable& variable) {
                       return variable.space == space && variable.role == role &&
                              program.types[variable.type].kind != Type::Kind::pointer;
                     });
}

bool DrawPrivate(Drawing& drawing, TypeId record) {
  const char letter = drawing.program.types[record].kind == Type::Kind::unionType ? 'u' : 's';
  TypeId type = record;
  if (drawing.Has(arraysFeature) && SizeOf(drawing.program.types, record) <= 64 &&
      drawing.random.Chance(25))
    type = drawing.program.types.ArrayOf(record, drawing.random.Between(2, 3));
  const int variable =
      drawing.NewVariable(letter, type, Space::privateSpace, Variable::Role::object);
  drawing.Add({&declarationConstruct, noType, {}, {variable}});
  drawing.roots.push_back(NameOf(drawing.program, variable));
  return true;
}

/// An element for each work-item of a group.
bool DrawLocal(Drawing& drawing, TypeId record) {
  const TypeId array = drawing.program.types.ArrayOf(record, drawing.program.localSize);
  const int variable = drawing.NewVariable('l', array, Space::localSpace, Variable::Role::object);
  drawing.Add({&declarationConstruct, noType, {}, {variable}});
  drawing.roots.push_back(OwnElement(drawing.program, variable));
  return true;
}

void AddBuffer(Drawing& drawing, int variable) {
  Buffer buffer;
  buffer.variable = variable;
  const Variable& of = drawing.program.variables[static_cast<std::size_t>(variable)];
  buffer.bytes.resize(SizeOf(drawing.program.types, of.type));
  for (std::uint8_t& byte : buffer.bytes)
    byte = static_cast<std::uint8_t>(drawing.NewNumber(Scalar::ucharType));
  drawing.program.buffers.push_back(buffer);
  drawing.machine.Fill(buffer);
}

/// An element for each work-item.
bool DrawGlobal(Drawing& drawing, TypeId record) {
  const TypeId array = drawing.program.types.ArrayOf(record, drawing.program.Items());
  const int variable = drawing.NewVariable('g', array, Space::globalSpace, Variable::Role::buffer);
  AddBuffer(drawing, variable);
  drawing.roots.push_back(OwnElement(drawing.program, variable));
  return true;
}

bool DrawConstant(Drawing& drawing, TypeId record) {
  const TypeId array = drawing.program.types.ArrayOf(
      record, std::max(drawing.program.Items(), drawing.random.Between(1, 3)));
  const int variable =
      drawing.NewVariable('k', array, Space::constantSpace, Variable::Role::buffer);
  AddBuffer(drawing, variable);
  drawing.roots.push_back(drawing.random.Chance(50) ? OwnElement(drawing.program, variable)
                                                    : NameOf(drawing.program, variable));
  return true;
}

}  // namespace

const Feature privateMemoryFeature = {.name = "private-memory",
                                      .says = "variables of a work-item's own",
                                      .object = DrawPrivate,
                                      .isUsed = [](const Program& program) {
                                        return HasObject(program, Space::privateSpace,
                                                         Variable::Role::object);
                                      }};

const Feature localMemoryFeature = {
    .name = "local-memory",
    .says = "arrays in local memory, with an element for each work-item",
    .object = DrawLocal,
    .isUsed = [](const Program& program) {
      return HasObject(program, Space::localSpace, Variable::Role::object);
    }};

const Feature globalMemoryFeature = {
    .name = "global-memory",
    .says = "buffers that the host has filled, and reads afterwards",
    .object = DrawGlobal,
    .isUsed = [](const Program& program) {
      return HasObject(program, Space::globalSpace, Variable::Role::buffer);
    }};

const Feature constantMemoryFeature = {.name = "constant-memory",
                                       .says = "__constant buffers that the host has filled",
                                       .object = DrawConstant,
                                       .isUsed = [](const Program& program) {
                                         return HasObject(program, Space::constantSpace,
                                                          Variable::Role::buffer);
                                       }};

const Feature workItemsFeature = {
    .name = "work-items",
    .says = "several work-items, each with objects of its own",
    .isUsed = [](const Program& program) { return program.Items() > 1; }};

}  // namespace exploration
