#include "exploration/faults/settings.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <stdexcept>
#include <utility>

#include "exploration/features/basics.h"
#include "exploration/features/places.h"
#include "exploration/generator/generator.h"
#include "exploration/program/check.h"
#include "exploration/shrinking/edits.h"
#include "exploration/shrinking/steps.h"

namespace exploration {
namespace {

/// Stores into what lies in a structure, and into the first member of a union.
void Fill(const Program& program, const Node& place, std::vector<Node>& statements) {
  const Type& type = program.types[place.type];
  if (type.IsLeaf()) {
    const auto count = static_cast<std::size_t>(type.count);
    statements.push_back(Assignment(
        place, {&literalConstruct, place.type, {}, std::vector<std::int64_t>(count, 1)}));
  }
  const std::size_t members = type.kind == Type::Kind::unionType
                                  ? std::min<std::size_t>(type.members.size(), 1)
                                  : type.members.size();
  for (std::size_t i = 0; i < members; ++i)
    Fill(program, MemberOf(program, place, static_cast<int>(i)), statements);
}

/// What lies in shared memory is each work-item's own; what the host fills there, the program.
Program InPrivateMemory(const Program& program) {
  Program moved = program;
  std::vector<Node> statements;
  while (std::optional<Program> next = WithPrivateObject(moved, 0)) moved = std::move(*next);
  for (const Buffer& buffer : program.buffers)
    Fill(moved, NameOf(moved, buffer.variable), statements);
  const auto isDeclaration = [](const Node& node) { return Is(node, "declaration"); };
  std::vector<Node>& parts = moved.body.parts;
  parts.insert(std::find_if_not(parts.begin(), parts.end(), isDeclaration), statements.begin(),
               statements.end());
  return moved;
}

/// An element for each work-item, in local memory, or in a buffer of zeros.
Program MovedTo(const Program& program, Space space) {
  Program moved = InPrivateMemory(program);
  if (space == Space::privateSpace) return moved;
  for (std::size_t v = 0; v < moved.variables.size(); ++v) {
    Variable& variable = moved.variables[v];
    if (variable.role != Variable::Role::object ||
        moved.types[variable.type].kind == Type::Kind::pointer)
      continue;
    const auto named = static_cast<std::int64_t>(v);
    const bool isLocal = space == Space::localSpace;
    variable.type = moved.types.ArrayOf(variable.type, isLocal ? moved.localSize : moved.Items());
    variable.space = space;
    Visit(moved, [&](Node& node) {
      if (Is(node, "variable") && node.numbers[0] == named)
        node = OwnElement(moved, static_cast<int>(v));
    });
    if (isLocal) continue;
    variable.role = Variable::Role::buffer;
    std::erase_if(moved.body.parts, [named](const Node& statement) {
      return Is(statement, "declaration") && statement.numbers[0] == named;
    });
    moved.buffers.push_back({static_cast<int>(v), {}});
  }
  for (TypeId id = Types::FirstOwn(); id < moved.types.End(); ++id)
    if (moved.types[id].kind == Type::Kind::pointer) moved.types.Own(id).space = space;
  return moved;
}

/// All vectors of one width have another.
Program WithWidth(const Program& program, int from, int to) {
  Program changed = program;
  std::vector<TypeId> types = NoChange(changed);
  for (int scalar = 0; scalar < scalarCount; ++scalar) {
    const auto one = static_cast<Scalar>(scalar);
    types[static_cast<std::size_t>(VectorOf(one, from))] = VectorOf(one, to);
  }
  Retype(changed, types);
  return changed;
}

std::vector<int> WidthsOf(const Program& program) {
  std::vector<int> found;
  for (const int width : widths) {
    const auto isIt = [&](TypeId id) {
      return id != noType && program.types[id].kind == Type::Kind::vector &&
             program.types[id].count == width;
    };
    bool isUsed = false;
    Visit(program, [&](const Node& node) { isUsed = isUsed || isIt(node.type); });
    if (width > 1 && isUsed) found.push_back(width);
  }
  return found;
}

class Variants {
 public:
  explicit Variants(const InvestigationOptions& withOptions) : options(withOptions) {}

  /// If the program is valid so, and another.
  void Add(const std::string& name, const Program& from, Program changed) {
    try {
      changed = Tidied(std::move(changed));
      const RunnableProgram runnable = MakeRunnable(changed);
      if (runnable.text == MakeRunnable(from).text && changed.localSize == from.localSize) return;
      all.push_back({name, TaskOf(runnable, options), ""});
    } catch (const Invalid&) {
    } catch (const std::out_of_range&) {
    }
  }

  const InvestigationOptions& options;
  std::vector<Variant> all;
};

void AddBuilds(const RunnableProgram& runnable, Variants& variants) {
  const InvestigationOptions& options = variants.options;
  if (!options.compiler.empty()) return;
  Task task = TaskOf(runnable, options);
  task.buildOptions += task.buildOptions.empty() ? "-cl-opt-disable" : " -cl-opt-disable";
  if (options.buildOptions.find("-cl-opt-disable") == std::string::npos)
    variants.all.push_back({"-cl-opt-disable", task, ""});
  task = TaskOf(runnable, options);
  task.throughIl = true;
  const bool takesIl = options.device.il.find("SPIR-V") != std::string::npos;
  variants.all.push_back(
      {"as SPIR-V by Clang and llvm-spirv", task, takesIl ? "" : "the device takes no SPIR-V"});
}

}  // namespace

Task TaskOf(const RunnableProgram& program, const InvestigationOptions& options) {
  Task task;
  task.program = program;
  task.buildOptions = options.buildOptions;
  task.compiler = options.compiler;
  task.seconds = options.seconds;
  return task;
}

std::vector<Variant> VariantsOf(const Program& program, const InvestigationOptions& options) {
  Variants variants(options);
  AddBuilds(MakeRunnable(program), variants);
  for (const auto& [space, name] : {std::pair(Space::privateSpace, "in private memory"),
                                    std::pair(Space::localSpace, "in local memory"),
                                    std::pair(Space::globalSpace, "in global memory")}) {
    variants.Add(name, program, MovedTo(program, space));
    if (!variants.all.empty() && variants.all.back().name == name)
      variants.all.back().isMemory = true;
  }
  for (const int from : WidthsOf(program))
    for (const int to : widths)
      if (to > 1 && to != from)
        variants.Add(fmt::format("vectors of {} in place of {}", to, from), program,
                     WithWidth(program, from, to));
  for (const int size : {1, 2, 4, 8, 64}) {
    if (static_cast<std::size_t>(size) > options.device.maxWorkGroupSize && size > 1) continue;
    Program changed = program;
    changed.localSize = size;
    changed.groups = 1;
    variants.Add(size == 1 ? "a single work-item" : fmt::format("a work-group of {}", size),
                 program, std::move(changed));
  }
  return variants.all;
}

}  // namespace exploration
