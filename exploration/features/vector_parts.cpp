#include "exploration/features/vector_parts.h"

#include <algorithm>
#include <utility>

namespace exploration {

void CheckPart(const Node& node, const Program& program, const std::vector<int>& components) {
  RequireParts(node, 1);
  Require(HasParts(node.parts[0], program), "a part of what is no whole vector");
  const Type& vector = program.types[node.parts[0].type];
  for (const int component : components) {
    Require(component >= 0 && component < vector.count, "no such component");
    Require(std::count(components.begin(), components.end(), component) == 1,
            "a component that is named twice");
  }
  Require(std::find(std::begin(widths), std::end(widths), static_cast<int>(components.size())) !=
              std::end(widths),
          "a vector of no such width");
  Require(node.type == VectorOf(vector.scalar, static_cast<int>(components.size())),
          "a part of another type");
}

Place LocatePart(const Node& node, Machine& machine, std::vector<int> components) {
  Place place = machine.Locate(node.parts[0]);
  place.components = std::move(components);
  return place;
}

std::string ComponentNames(int width, const std::vector<std::int64_t>& components) {
  std::string text = width <= 4 ? "." : ".s";
  for (const std::int64_t component : components)
    text += width <= 4 ? "xyzw"[component] : "0123456789abcdef"[component];
  return text;
}

bool HasParts(const Node& node, const Program& program) {
  if (node.construct->kind != Construct::Kind::place || node.type == noType) return false;
  // A part of a part has no name of its own here: a part's place is the vector it is of.
  const bool isPart = !node.parts.empty() && node.parts[0].type != noType &&
                      program.types[node.parts[0].type].kind == Type::Kind::vector;
  return program.types[node.type].kind == Type::Kind::vector && !isPart;
}

}  // namespace exploration
