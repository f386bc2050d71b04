#include "exploration/features/drawing.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "exploration/features/features.h"
#include "exploration/features/places.h"

namespace exploration {
namespace {

constexpr int mostAnswers = 40;
constexpr std::size_t mostFunctions = 3;

std::size_t Size(int number) { return static_cast<std::size_t>(number); }

}  // namespace

/// What a statement that turns out not to be valid has added.
struct Drawing::Mark {
  explicit Mark(Drawing& ofDrawing)
      : drawing(ofDrawing),
        machine(drawing.machine),
        roots(drawing.roots),
        indices(drawing.indices),
        active(drawing.active),
        variables(drawing.program.variables.size()),
        functions(drawing.program.functions.size()),
        inputs(drawing.program.inputs.front().size()),
        types(drawing.program.types.End()),
        answers(drawing.program.answers),
        counts(drawing.counts),
        blocks(drawing.blocks.size()),
        statements(drawing.blocks.back().size()),
        function(drawing.function),
        bindings(function == nullptr ? 0 : function->size()) {}

  void GoBack() {
    drawing.machine = machine;
    drawing.roots = roots;
    drawing.indices = indices;
    drawing.active = active;
    drawing.program.variables.resize(variables);
    drawing.program.functions.resize(functions);
    for (auto& own : drawing.program.inputs) own.resize(inputs);
    drawing.program.types.Shrink(types);
    drawing.program.answers = answers;
    drawing.counts = counts;
    drawing.blocks.resize(blocks);
    drawing.blocks.back().resize(statements);
    drawing.function = function;
    if (function != nullptr)
      function->erase(function->begin() + static_cast<std::ptrdiff_t>(bindings), function->end());
    drawing.depth = 0;
  }

  Drawing& drawing;
  Machine machine;
  std::vector<Node> roots;
  std::vector<Index> indices;
  std::vector<int> active;
  std::size_t variables, functions, inputs;
  TypeId types;
  int answers;
  std::vector<int> counts;
  std::size_t blocks, statements;
  std::vector<Binding>* function;
  std::size_t bindings;
};

Drawing::Drawing(Random withRandom, Program empty, std::vector<const Feature*> withFeatures)
    : random(withRandom),
      program(std::move(empty)),
      machine(program),
      features(std::move(withFeatures)),
      blocks(1),
      counts(128) {
  program.inputs.resize(Size(program.Items()));
  for (int item = 0; item < program.Items(); ++item) active.push_back(item);
}

bool Drawing::Has(const Feature& feature) const {
  return std::find(features.begin(), features.end(), &feature) != features.end();
}

int Drawing::NewVariable(char letter, TypeId type, Space space, Variable::Role role) {
  const int count = ++counts.at(static_cast<std::size_t>(letter));
  program.variables.push_back({fmt::format("{}{}", letter, count), type, space, role});
  return static_cast<int>(program.variables.size()) - 1;
}

// Every byte is such that what it is the highest of, be it of a half, a float or a double, is an
// ordinary number: so any bytes may be read as any type.
std::int64_t Drawing::NewNumber(Scalar scalar) {
  const ScalarTraits& traits = TraitsOf(scalar);
  const int unused = 64 - 8 * traits.size;
  std::uint64_t bits = 0;
  for (int i = 0; i < 8; ++i)
    bits =
        bits << 8U | static_cast<std::uint64_t>(random.Between(0x04, 0x7B) + 128 * random.Below(2));
  // A number with few digits, for exact arithmetic.
  if (scalar == Scalar::floatType && random.Chance(40))
    bits = std::uint64_t{0x42000000} + (static_cast<std::uint64_t>(random.Below(256)) << 18U);
  if (scalar == Scalar::doubleType && random.Chance(40))
    bits = (std::uint64_t{0x4040} << 48U) + (static_cast<std::uint64_t>(random.Below(256)) << 45U);
  bits <<= unused;
  return traits.isSigned ? static_cast<std::int64_t>(bits) >> unused
                         : static_cast<std::int64_t>(bits >> unused);
}

Node Drawing::NewInput(TypeId type) {
  const auto first = static_cast<std::int64_t>(program.inputs.front().size());
  const Type& of = program.types[type];
  for (auto& own : program.inputs)
    for (int i = 0; i < of.count; ++i) own.push_back(NewNumber(of.scalar));
  Node input = {&inputConstruct, type, {}, {first}};
  if (!IsInFunction()) return input;
  const int parameter = NewVariable('x', type, Space::privateSpace, Variable::Role::parameter);
  function->push_back({parameter, input});
  Bind(function->back());
  return NameOf(program, parameter);
}

Node Drawing::NewInput(TypeId type, const std::vector<std::int64_t>& numbers) {
  const std::size_t slot = program.inputs.front().size();
  Random kept = random;
  Node input = NewInput(type);
  random = kept;
  for (std::size_t item = 0; item < numbers.size(); ++item)
    program.inputs[item][slot] = numbers[item];
  if (IsInFunction()) Bind(function->back());
  return input;
}

void Drawing::Bind(const Binding& binding) {
  for (int item = 0; item < program.Items(); ++item) {
    machine.SetItem(item);
    const Type& type = program.types[binding.argument.type];
    if (type.kind != Type::Kind::pointer) {
      const Value value = machine.Evaluate(binding.argument);
      machine.Declare(binding.parameter);
      machine.StoreTo(machine.PlaceOf(binding.parameter), value);
    } else if (std::find(active.begin(), active.end(), item) != active.end()) {
      machine.Bind(binding.parameter, machine.Evaluate(binding.argument));
    }
  }
}

bool Drawing::IsKnown(const Node& node) const {
  try {
    Machine trial = machine;
    for (const int item : active) {
      trial.SetItem(item);
      const Value value = trial.Evaluate(node);
      if (program.types[value.type].IsLeaf()) {
        if (value.KnowledgeOf(program.types) != Knowledge::known) return false;
      } else if (std::none_of(value.bytes.begin(), value.bytes.end(), [](const Byte& byte) {
                   return byte.knowledge == Knowledge::known;
                 })) {
        return false;
      }
    }
    return true;
  } catch (const Invalid&) {
    return false;
  }
}

Node Drawing::NewValue(TypeId type) {
  ++depth;
  std::optional<Node> derived;
  if (depth < 4 && random.Chance(50)) derived = Derived(type);
  --depth;
  return derived ? *derived : NewInput(type);
}

std::optional<Node> Drawing::Derived(TypeId type) {
  std::vector<const Feature*> able;
  for (const Feature* feature : features)
    if (feature->value != nullptr) able.push_back(feature);
  if (!able.empty() && random.Chance(60)) {
    std::optional<Node> value = random.OneOf(able)->value(*this, type);
    if (value && IsKnown(*value)) return value;
  }
  std::optional<Node> leaf = KnownLeaf();
  if (leaf && leaf->type == type) return leaf;
  return std::nullopt;
}

std::optional<Node> Drawing::Step(const Node& from) {
  std::vector<const Feature*> able;
  for (const Feature* feature : features)
    if (feature->place != nullptr) able.push_back(feature);
  while (!able.empty()) {
    const auto chosen = able.begin() + random.Below(static_cast<int>(able.size()));
    if (std::optional<Node> place = (*chosen)->place(*this, from)) return place;
    able.erase(chosen);
  }
  return std::nullopt;
}

std::optional<Node> Drawing::Leaf(bool forStore) {
  for (int attempt = 0; attempt < 8 && !roots.empty(); ++attempt) {
    std::optional<Node> node = random.OneOf(roots);
    if (forStore && SpaceOf(*node, program) == Space::constantSpace) continue;
    while (node && !program.types[node->type].IsLeaf()) node = Step(*node);
    if (!node) continue;
    // A component is no lvalue of which there are components again.
    if (program.types[node->type].count > 1 && random.Chance(40)) {
      if (const std::optional<Node> part = Step(*node)) node = part;
    }
    if (forStore || IsKnown(*node)) return node;
  }
  return std::nullopt;
}

std::optional<Node> Drawing::Record(bool forStore) {
  for (int attempt = 0; attempt < 8 && !roots.empty(); ++attempt) {
    std::optional<Node> node = random.OneOf(roots);
    if (forStore && SpaceOf(*node, program) == Space::constantSpace) continue;
    while (node) {
      const Type& type = program.types[node->type];
      if (type.IsLeaf()) break;
      if (!type.name.empty() && random.Chance(60) && (forStore || IsKnown(*node))) return node;
      node = Step(*node);
    }
  }
  return std::nullopt;
}

void Drawing::Add(const Node& statement) {
  answered.clear();
  if (IsOutermost()) {
    machine.ExecuteForAll(statement);
  } else {
    for (const int item : active) {
      machine.SetItem(item);
      machine.Execute(statement);
    }
  }
  blocks.back().push_back(statement);
}

void Drawing::AddAnswer(const Node& value) {
  const int count = program.types[value.type].count;
  if (program.answers + count > mostAnswers || IsInFunction()) return;
  if (std::find(answered.begin(), answered.end(), value) != answered.end()) return;
  program.answers += count;
  std::vector<Node> now = std::move(answered);
  Add({&answerConstruct, noType, {value}, {program.answers - count}});
  now.push_back(value);
  answered = std::move(now);
}

bool Drawing::Attempt(const Feature& feature) {
  Mark mark(*this);
  try {
    if (feature.statement(*this)) return true;
  } catch (const Invalid&) {
    // Drawn in vain: it is as if it had not been.
  }
  mark.GoBack();
  return false;
}

void Drawing::AddOne() {
  std::vector<const Feature*> able;
  for (const Feature* feature : features)
    if (feature->statement != nullptr) able.push_back(feature);
  // All others feed on what is stored.
  if (Has(membersFeature)) able.insert(able.end(), able.size() / 4 + 1, &membersFeature);
  for (int attempt = 0; attempt < 4 && !able.empty(); ++attempt)
    if (Attempt(*random.OneOf(able))) return;
}

Node Drawing::NewBlock(int statements, const std::vector<int>& items) {
  if (items.empty()) return Block({});
  const Machine before = machine;
  const std::size_t rootsBefore = roots.size();
  const std::vector<int> activeBefore = std::exchange(active, items);
  blocks.emplace_back();
  for (int i = 0; i < statements; ++i) AddOne();
  Node block = Block(std::move(blocks.back()));
  blocks.pop_back();
  active = activeBefore;
  roots.resize(rootsBefore);
  machine = before;
  BindAgain();
  return block;
}

/// The parameters that came since a state to which the machine has gone back.
void Drawing::BindAgain() {
  if (!IsInFunction()) return;
  for (const Binding& binding : *function)
    if (binding.argument.construct == &inputConstruct) Bind(binding);
}

Node Drawing::NewCall(const std::vector<Node>& arguments,
                      const std::function<std::optional<Node>(const std::vector<Node>&)>& result) {
  Require(!IsInFunction() && program.functions.size() < mostFunctions, "too many functions");
  const Machine before = machine;
  const auto rootsBefore = std::exchange(roots, {});
  const auto indicesBefore = std::exchange(indices, {});
  std::vector<Binding> bindings;
  std::vector<Node> parameters;
  for (const Node& argument : arguments) {
    const bool isPointer = program.types[argument.type].kind == Type::Kind::pointer;
    const int variable = NewVariable(isPointer ? 'p' : 'v', argument.type, Space::privateSpace,
                                     Variable::Role::parameter);
    bindings.push_back({variable, argument});
    const Node name = NameOf(program, variable);
    parameters.push_back(name);
    roots.push_back(isPointer ? Pointee(program, name) : name);
  }
  function = &bindings;
  for (const int item : active) {
    machine.SetItem(item);
    PassArguments(machine, parameters, arguments);
  }
  blocks.emplace_back();
  const int statements = random.Between(1, 4);
  for (int i = 0; i < statements; ++i) AddOne();
  Function drawn;
  drawn.name = fmt::format("f{}", ++counts.at('f'));
  if (const std::optional<Node> returned = result(parameters)) drawn.result = {*returned};
  drawn.body = Block(std::move(blocks.back()));
  blocks.pop_back();
  function = nullptr;

  Node call = {&callConstruct, drawn.result.empty() ? noType : drawn.result[0].type, {}, {}};
  for (const Binding& binding : bindings) {
    drawn.parameters.push_back(binding.parameter);
    call.parts.push_back(binding.argument);
  }
  program.functions.push_back(std::move(drawn));
  call.numbers = {static_cast<std::int64_t>(program.functions.size()) - 1};
  machine = before;
  roots = rootsBefore;
  indices = indicesBefore;
  return call;
}

Program Drawing::Finished() {
  program.body = Block(blocks.front());
  return WithoutUnused(program);
}

}  // namespace exploration
