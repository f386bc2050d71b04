#include "exploration/features/braces.h"
#include "exploration/features/drawing.h"
#include "exploration/features/features.h"

namespace exploration {
namespace {

/// With -cl-single-precision-constant a double is written as what a float can hold too.
Node DrawLiteral(Drawing& drawing, TypeId type) {
  Node literal = {&literalConstruct, type, {}, {}};
  const Type& of = drawing.program.types[type];
  for (int i = 0; i < of.count; ++i) {
    if (of.scalar == Scalar::doubleType) {
      literal.numbers.push_back((std::int64_t{0x4040} << 48) +
                                (std::int64_t{drawing.random.Below(256)} << 45));
    } else {
      literal.numbers.push_back(drawing.NewNumber(of.scalar));
    }
  }
  return literal;
}

/// A half has no literal that is a constant everywhere.
bool HasHalf(const Types& types, TypeId type) {
  for (const Leaf& leaf : LeavesOf(types, type))
    if (types[leaf.type].scalar == Scalar::halfType) return true;
  return false;
}

bool DrawObject(Drawing& drawing, TypeId record) {
  if (HasHalf(drawing.program.types, record)) return false;
  const TypeId type = drawing.random.Chance(50)
                          ? record
                          : drawing.program.types.ArrayOf(record, drawing.random.Between(2, 3));
  const int variable =
      drawing.NewVariable('c', type, Space::constantSpace, Variable::Role::constant);
  const Node braces =
      DrawBraces(drawing, type, [&drawing](TypeId leaf) { return DrawLiteral(drawing, leaf); });
  drawing.program.constants.push_back({variable, braces});
  drawing.machine.Fill(drawing.program.constants.back());
  drawing.roots.push_back(NameOf(drawing.program, variable));
  return true;
}

}  // namespace

const Feature constantDataFeature = {
    .name = "constant-data",
    .says = "__constant data with an initializer",
    .object = DrawObject,
    .isUsed = [](const Program& program) { return !program.constants.empty(); }};

}  // namespace exploration
