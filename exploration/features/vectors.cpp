#include "exploration/features/features.h"

namespace exploration {
namespace {

/// Whether a member or variable is such a vector, or has such elements.
template <typename Predicate>
bool HasVector(const Program& program, const Predicate& isMeant) {
  const auto isVector = [&](TypeId id) {
    return program.types[id].kind == Type::Kind::vector && isMeant(program.types[id].count);
  };
  for (TypeId id = Types::FirstOwn(); id < program.types.End(); ++id) {
    const Type& type = program.types[id];
    if (type.element != noType && isVector(type.element)) return true;
    for (const Member& member : type.members)
      if (isVector(member.type)) return true;
  }
  return false;
}

}  // namespace

const Feature vectorsFeature = {.name = "vectors",
                                .says = "members that are vectors of 2, 4, 8 or 16 components",
                                .isUsed = [](const Program& program) {
                                  return HasVector(program, [](int width) { return width != 3; });
                                }};

const Feature threeComponentsFeature = {.name = "three-components",
                                        .says = "members that are vectors of three components",
                                        .isUsed = [](const Program& program) {
                                          return HasVector(program,
                                                           [](int width) { return width == 3; });
                                        }};

}  // namespace exploration
