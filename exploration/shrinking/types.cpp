#include <algorithm>

#include "exploration/features/basics.h"
#include "exploration/shrinking/edits.h"
#include "exploration/shrinking/steps.h"

namespace exploration {
namespace {

/// Those that something has, each once.
std::vector<TypeId> LeafTypesOf(const Program& program) {
  std::vector<bool> isUsed(static_cast<std::size_t>(Types::FirstOwn()));
  const auto use = [&isUsed](TypeId id) {
    if (id >= 0 && id < Types::FirstOwn()) isUsed[static_cast<std::size_t>(id)] = true;
  };
  for (TypeId id = Types::FirstOwn(); id < program.types.End(); ++id) {
    use(program.types[id].element);
    for (const Member& member : program.types[id].members) use(member.type);
  }
  for (const Variable& variable : program.variables) use(variable.type);
  Visit(program, [&use](const Node& node) { use(node.type); });
  std::vector<TypeId> types;
  for (TypeId id = 0; id < Types::FirstOwn(); ++id)
    if (isUsed[static_cast<std::size_t>(id)]) types.push_back(id);
  return types;
}

}  // namespace

std::optional<Program> WithoutAttribute(const Program& program, std::size_t number) {
  Program left = program;
  for (TypeId id = Types::FirstOwn(); id < left.types.End(); ++id) {
    Type& type = left.types.Own(id);
    if (type.packed && number-- == 0) return type.packed = false, left;
    if (type.aligned != 0 && number-- == 0) return type.aligned = 0, left;
    for (Member& member : type.members)
      if (member.aligned != 0 && number-- == 0) return member.aligned = 0, left;
  }
  return std::nullopt;
}

/// All vectors of one type become narrower ones, or scalars.
std::optional<Program> WithNarrowerVector(const Program& program, std::size_t number) {
  for (const TypeId id : LeafTypesOf(program)) {
    const Type& type = program.types[id];
    for (const int width : widths) {
      if (width >= type.count || number-- != 0) continue;
      Program left = program;
      if (width == 1) {
        Visit(left, [id](Node& node) {
          if (!Is(node, "component") || node.parts[0].type != id) return;
          const Node scalar = node.parts[0];
          node = scalar;
        });
      }
      std::vector<TypeId> to = NoChange(left);
      to[static_cast<std::size_t>(id)] = VectorOf(type.scalar, width);
      Retype(left, to);
      return left;
    }
  }
  return std::nullopt;
}

/// All scalars of one type, and the components of vectors, become ones of a plainer type.
std::optional<Program> WithPlainerScalar(const Program& program, std::size_t number) {
  constexpr Scalar plainest[] = {Scalar::intType, Scalar::uintType, Scalar::longType,
                                 Scalar::ucharType, Scalar::ushortType};
  std::vector<Scalar> used;
  for (const TypeId id : LeafTypesOf(program)) {
    const Scalar scalar = program.types[id].scalar;
    if (std::find(used.begin(), used.end(), scalar) == used.end()) used.push_back(scalar);
  }
  for (const Scalar scalar : used) {
    for (const Scalar plainer : plainest) {
      if (scalar == plainer) break;
      if (number-- != 0) continue;
      Program left = program;
      std::vector<TypeId> to = NoChange(left);
      for (const int width : widths)
        to[static_cast<std::size_t>(VectorOf(scalar, width))] = VectorOf(plainer, width);
      Retype(left, to);
      return left;
    }
  }
  return std::nullopt;
}

}  // namespace exploration
