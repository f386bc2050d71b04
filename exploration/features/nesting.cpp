#include "exploration/features/features.h"

namespace exploration {
namespace {

/// Whether a structure or union has such a member, or one that is an array of such.
template <typename Predicate>
bool HasMember(const Program& program, const Predicate& isMeant) {
  for (TypeId id = Types::FirstOwn(); id < program.types.End(); ++id) {
    for (const Member& member : program.types[id].members) {
      TypeId type = member.type;
      while (program.types[type].kind == Type::Kind::array) type = program.types[type].element;
      if (isMeant(program.types[member.type]) || isMeant(program.types[type])) return true;
    }
  }
  return false;
}

}  // namespace

const Feature arraysFeature = {
    .name = "arrays",
    .says = "members that are arrays, of arrays too",
    .isUsed = [](const Program& program) {
      return HasMember(program, [](const Type& type) { return type.kind == Type::Kind::array; });
    }};

const Feature nestedStructsFeature = {.name = "nested-structs",
                                      .says = "structs in unions and structs",
                                      .isUsed = [](const Program& program) {
                                        return HasMember(program, [](const Type& type) {
                                          return type.kind == Type::Kind::structure;
                                        });
                                      }};

const Feature nestedUnionsFeature = {.name = "nested-unions",
                                     .says = "unions in unions and structs",
                                     .isUsed = [](const Program& program) {
                                       return HasMember(program, [](const Type& type) {
                                         return type.kind == Type::Kind::unionType;
                                       });
                                     }};

const Feature anonymousMembersFeature = {
    .name = "anonymous-members",
    .says = "structs and unions whose members are the outer one's too",
    .isUsed = [](const Program& program) {
      return HasMember(program,
                       [](const Type& type) { return type.IsRecord() && type.name.empty(); });
    }};

}  // namespace exploration
