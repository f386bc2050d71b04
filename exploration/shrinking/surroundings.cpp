#include <algorithm>
#include <bit>
#include <cstdint>

#include "exploration/features/basics.h"
#include "exploration/shrinking/edits.h"
#include "exploration/shrinking/steps.h"

namespace exploration {

/// Alone, in one work-group, or in groups of one.
std::optional<Program> WithFewerItems(const Program& program, std::size_t number) {
  const int sizes[][2] = {{1, 1},
                          {program.localSize, 1},
                          {1, program.groups},
                          {program.localSize - 1, program.groups},
                          {program.localSize, program.groups - 1}};
  if (number >= std::size(sizes)) return std::nullopt;
  Program left = program;
  left.localSize = std::max(sizes[number][0], 1);
  left.groups = std::max(sizes[number][1], 1);
  return left;
}

/// What lies in shared memory with an element for each work-item is a variable of each one's own.
std::optional<Program> WithPrivateObject(const Program& program, std::size_t number) {
  for (std::size_t v = 0; v < program.variables.size(); ++v) {
    const Space space = program.variables[v].space;
    if (space == Space::privateSpace || program.variables[v].role == Variable::Role::constant ||
        number-- != 0)
      continue;
    Program left = program;
    Variable& variable = left.variables[v];
    const auto named = static_cast<std::int64_t>(v);
    variable.space = Space::privateSpace;
    if (left.types[variable.type].kind == Type::Kind::array)
      variable.type = left.types[variable.type].element;
    Visit(left, [&](Node& node) {
      if (Is(node, "own element") && node.numbers[0] == named) node = NameOf(left, named);
    });
    if (variable.role == Variable::Role::buffer) {
      variable.role = Variable::Role::object;
      std::erase_if(left.buffers,
                    [named](const Buffer& buffer) { return buffer.variable == named; });
      left.body.parts.insert(left.body.parts.begin(), {&declarationConstruct, noType, {}, {named}});
    }
    for (TypeId id = Types::FirstOwn(); id < left.types.End(); ++id) {
      Type& type = left.types.Own(id);
      if (type.kind == Type::Kind::pointer && type.space == space) type.space = Space::privateSpace;
    }
    return left;
  }
  return std::nullopt;
}

/// Small numbers, as integers and as the bits of floats and doubles; all at once, and then each by
/// itself. They stay different, for the way in which an answer is wrong to be seen.
std::optional<Program> WithPlainerInput(const Program& program, std::size_t number) {
  Program left = program;
  const std::size_t count = left.inputs.empty() ? 0 : left.inputs.front().size();
  if (count == 0 || number >= 3 * (count + 1)) return std::nullopt;
  std::int64_t plain = 0;
  for (std::vector<std::int64_t>& own : left.inputs) {
    for (std::size_t i = 0; i < count; ++i) {
      ++plain;
      if (number >= 3 && number / 3 - 1 != i) continue;
      own[i] = number % 3 == 0   ? plain
               : number % 3 == 1 ? std::bit_cast<std::int32_t>(static_cast<float>(plain))
                                 : std::bit_cast<std::int64_t>(static_cast<double>(plain));
    }
  }
  return left;
}

/// Chunks of zeros, the largest first.
std::optional<Program> WithPlainerBuffer(const Program& program, std::size_t number) {
  Program left = program;
  for (Buffer& buffer : left.buffers) {
    std::size_t steps = 0;
    while (Chunk(buffer.bytes.size(), steps)) ++steps;
    if (number >= steps) {
      number -= steps;
      continue;
    }
    const std::vector<bool> chunk = *Chunk(buffer.bytes.size(), number);
    for (std::size_t i = 0; i < chunk.size(); ++i)
      if (chunk[i]) buffer.bytes[i] = 0;
    return left;
  }
  return std::nullopt;
}

}  // namespace exploration
