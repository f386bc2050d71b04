#include <algorithm>

#include "exploration/features/drawing.h"
#include "exploration/features/features.h"
#include "exploration/types/layout.h"

namespace exploration {
namespace {

bool IsAligned(const Types& types, const Type& type) {
  if (type.kind == Type::Kind::array) return IsAligned(types, types[type.element]);
  return type.aligned != 0 ||
         std::any_of(type.members.begin(), type.members.end(), [&types](const Member& member) {
           return member.aligned != 0 || IsAligned(types, types[member.type]);
         });
}

// What becomes of an aligned type in a packed one, the language does not say.
void Pack(Drawing& drawing, Type& record) {
  if (!IsAligned(drawing.program.types, record)) record.packed = drawing.random.Chance(40);
}

// A type that is asked to be less aligned than its members stays as it is.
void Align(Drawing& drawing, Type& record) {
  if (record.packed) return;
  if (drawing.random.Chance(25)) record.aligned = drawing.random.OneOf<int>({4, 8, 16, 32, 64});
  for (Member& member : record.members) {
    if (member.name.empty() || !drawing.random.Chance(15)) continue;
    const int aligned = drawing.random.OneOf<int>({2, 4, 8, 16, 32});
    if (static_cast<std::size_t>(aligned) >= AlignmentOf(drawing.program.types, member.type))
      member.aligned = aligned;
  }
}

bool AnyRecord(const Program& program, bool (*isMeant)(const Type&)) {
  for (TypeId id = Types::FirstOwn(); id < program.types.End(); ++id)
    if (isMeant(program.types[id])) return true;
  return false;
}

}  // namespace

const Feature packedFeature = {.name = "packed",
                               .says = "__attribute__((packed))",
                               .type = Pack,
                               .isUsed = [](const Program& program) {
                                 return AnyRecord(program,
                                                  [](const Type& type) { return type.packed; });
                               }};

const Feature alignedFeature = {
    .name = "aligned",
    .says = "__attribute__((aligned(N))), of types and of members",
    .type = Align,
    .isUsed = [](const Program& program) {
      return AnyRecord(program, [](const Type& type) {
        return type.aligned != 0 ||
               std::any_of(type.members.begin(), type.members.end(),
                           [](const Member& member) { return member.aligned != 0; });
      });
    }};

}  // namespace exploration
