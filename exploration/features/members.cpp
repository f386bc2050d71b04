#include "exploration/features/drawing.h"
#include "exploration/features/features.h"
#include "exploration/features/places.h"

namespace exploration {
namespace {

bool DrawStore(Drawing& drawing) {
  const std::optional<Node> place = drawing.TargetLeaf();
  if (!place) return false;
  drawing.Add(Assignment(*place, drawing.NewValue(place->type)));
  // What was stored is there again, or what else can be read of it.
  if (!drawing.random.Chance(40)) return true;
  if (const std::optional<Node> known = drawing.KnownLeaf()) drawing.AddAnswer(*known);
  return true;
}

std::optional<Node> DrawMember(Drawing& drawing, const Node& from) {
  const Type& record = drawing.program.types[from.type];
  if (!record.IsRecord()) return std::nullopt;
  return MemberOf(drawing.program, from,
                  drawing.random.Below(static_cast<int>(record.members.size())));
}

}  // namespace

const Feature membersFeature = {.name = "members",
                                .says = "stores and loads of members at any depth",
                                .statement = DrawStore,
                                .place = DrawMember};

}  // namespace exploration
