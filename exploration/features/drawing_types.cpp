#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "exploration/features/drawing.h"
#include "exploration/features/features.h"
#include "exploration/types/layout.h"

// Structures and unions are drawn from the inside outwards: one is only made of those before it.

namespace exploration {
namespace {

constexpr std::size_t mostBytes = 256;

std::string MemberName(int number) {
  return number < 26 ? std::string(1, static_cast<char>('a' + number)) : fmt::format("m{}", number);
}

}  // namespace

TypeId Drawing::NewLeafType() {
  std::vector<Scalar> scalars = {Scalar::charType,   Scalar::ucharType, Scalar::shortType,
                                 Scalar::ushortType, Scalar::intType,   Scalar::uintType,
                                 Scalar::longType,   Scalar::ulongType};
  if (Has(atomicsFeature)) scalars.insert(scalars.end(), 3, Scalar::uintType);
  if (Has(floatsFeature)) scalars.insert(scalars.end(), 4, Scalar::floatType);
  if (Has(doublesFeature)) scalars.insert(scalars.end(), 3, Scalar::doubleType);
  if (Has(halvesFeature)) scalars.insert(scalars.end(), 3, Scalar::halfType);
  const Scalar scalar = random.OneOf(scalars);
  int width = 1;
  if (Has(vectorsFeature) && random.Chance(45)) width = random.OneOf<int>({2, 2, 4, 4, 8, 16});
  if (Has(threeComponentsFeature) && random.Chance(30)) width = 3;
  return VectorOf(scalar, width);
}

Member Drawing::NewMember(int level, int& names) {
  const bool isUnion = Has(nestedUnionsFeature) && random.Chance(50);
  if (level < 2 && (isUnion || Has(nestedStructsFeature)) && random.Chance(25)) {
    // Which kind is left to NewRecord: below the outermost it draws what the features allow.
    if (Has(anonymousMembersFeature) && random.Chance(40))
      return {"", NewRecord(level + 1, true, names), 0};
    int inner = 0;
    TypeId type = NewRecord(level + 1, false, inner);
    if (Has(arraysFeature) && random.Chance(30))
      type = program.types.ArrayOf(type, random.Between(2, 3));
    return {MemberName(names++), type, 0};
  }
  TypeId type = NewLeafType();
  if (Has(arraysFeature) && random.Chance(30)) {
    const int most = SizeOf(program.types, type) > 16 ? 2 : 5;
    type = program.types.ArrayOf(type, random.Between(2, most));
    if (random.Chance(15)) type = program.types.ArrayOf(type, 2);
  }
  return {MemberName(names++), type, 0};
}

TypeId Drawing::NewRecord(int level, bool isAnonymous, int& names) {
  Type record;
  const bool mayBeUnion = level == 0 || Has(nestedUnionsFeature);
  const bool mayBeStruct = Has(nestedStructsFeature);
  const bool isUnion = mayBeUnion && (!mayBeStruct || random.Chance(level == 0 ? 75 : 50));
  record.kind = isUnion ? Type::Kind::unionType : Type::Kind::structure;
  const int count = random.Between(level == 0 ? 2 : 1, 4);
  for (int i = 0; i < count; ++i) record.members.push_back(NewMember(level, names));
  for (const Feature* feature : features)
    if (feature->type != nullptr) feature->type(*this, record);
  if (!isAnonymous) {
    const char letter = isUnion ? 'U' : 'S';
    record.name = fmt::format("{}{}", letter, ++counts.at(static_cast<std::size_t>(letter)));
  } else {
    // Its attributes would have no place that all compilers agree on.
    record.aligned = 0;
  }
  return program.types.Add(std::move(record));
}

TypeId Drawing::NewRecord() {
  const TypeId before = program.types.End();
  const std::vector<int> countsBefore = counts;
  // What is too big is only drawn again so often.
  for (int attempt = 0;; ++attempt) {
    int names = 0;
    const TypeId record = NewRecord(0, false, names);
    if (attempt == 20 || SizeOf(program.types, record) <= mostBytes) return record;
    program.types.Shrink(before);
    counts = countsBefore;
  }
}

}  // namespace exploration
