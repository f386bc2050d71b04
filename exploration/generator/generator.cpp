#include "exploration/generator/generator.h"

#include <algorithm>
#include <utility>

#include "common/text/bad_use.h"
#include "exploration/features/drawing.h"
#include "exploration/features/features.h"
#include "exploration/model/model.h"

namespace exploration {
namespace {

const Feature* Named(const std::string& name) {
  const Feature* feature = FeatureNamed(name);
  if (feature == nullptr) throw text::BadUse("there is no feature '" + name + "'");
  return feature;
}

bool Contains(const std::vector<const Feature*>& features, const Feature* feature) {
  return std::find(features.begin(), features.end(), feature) != features.end();
}

struct Memory {
  Space space;
  std::vector<const Feature*> features;
};
const std::vector<Memory>& Memories() {
  static const std::vector<Memory> memories = {
      {Space::privateSpace, {&privateMemoryFeature, &initializersFeature}},
      {Space::localSpace, {&localMemoryFeature}},
      {Space::globalSpace, {&globalMemoryFeature}},
      {Space::constantSpace, {&constantMemoryFeature, &constantDataFeature}},
  };
  return memories;
}

/// What every program has, unless it was ruled out: without members and indices nothing is reached.
bool IsBasic(const Feature* feature) {
  return feature == &membersFeature || feature == &constantIndicesFeature;
}

std::vector<const Feature*> Allowed(const Options& options) {
  std::vector<const Feature*> allowed;
  for (const std::string& name : options.only) allowed.push_back(Named(name));
  if (options.only.empty()) allowed = Features();
  for (const Feature* feature : Features())
    if (IsBasic(feature) && !Contains(allowed, feature)) allowed.push_back(feature);
  for (const std::string& name : options.without) std::erase(allowed, Named(name));
  if (!options.hasDouble) std::erase(allowed, &doublesFeature);
  if (!options.hasHalf) std::erase(allowed, &halvesFeature);
  if (!options.hasAnonymousMembers) std::erase(allowed, &anonymousMembersFeature);
  if (options.space) {
    for (const Memory& memory : Memories()) {
      if (memory.space == *options.space) continue;
      for (const Feature* feature : memory.features) std::erase(allowed, feature);
    }
  }
  return allowed;
}

/// With what it needs, unless that may not be used.
void Choose(const Feature* feature, const std::vector<const Feature*>& allowed,
            std::vector<const Feature*>& chosen) {
  const auto lacks = [&allowed](const Feature* need) {
    return need != nullptr && !Contains(allowed, need);
  };
  if (std::any_of(feature->needs.begin(), feature->needs.end(), lacks)) return;
  for (const Feature* need : feature->needs)
    if (need != nullptr) Choose(need, allowed, chosen);
  if (!Contains(chosen, feature)) chosen.push_back(feature);
}

/// What this program uses: few features much rather than all of them a little, by which more faults
/// are found. There is always some memory for its objects.
std::vector<const Feature*> Chosen(Random& random, const std::vector<const Feature*>& allowed) {
  std::vector<const Feature*> objects;
  for (const Feature* feature : allowed)
    if (feature->object != nullptr) objects.push_back(feature);
  if (objects.empty()) throw text::BadUse("no feature is left that has a union anywhere");
  std::vector<const Feature*> chosen = {random.OneOf(objects)};
  const int percent = random.OneOf<int>({15, 30, 50, 75});
  for (const Feature* feature : allowed)
    if (IsBasic(feature) || random.Chance(percent)) Choose(feature, allowed, chosen);
  return chosen;
}

/// Answers for what is known in the end.
void AddLastAnswers(Drawing& drawing) {
  for (int i = 0; i < 12; ++i)
    if (const std::optional<Node> leaf = drawing.KnownLeaf()) drawing.AddAnswer(*leaf);
}

}  // namespace

Program Draw(std::uint64_t seed, std::uint64_t number, const Options& options) {
  Random random(seed, number);
  std::vector<const Feature*> features = Chosen(random, Allowed(options));
  Program program;
  program.seed = seed;
  program.number = number;
  if (Contains(features, &workItemsFeature)) {
    program.localSize = random.Between(2, 4);
    program.groups = random.Chance(30) ? 2 : 1;
  }

  Drawing drawing(random, program, features);
  const TypeId record = drawing.NewRecord();
  const TypeId other = drawing.random.Chance(30) ? drawing.NewRecord() : record;
  std::vector<const Feature*> objects;
  for (const Feature* feature : features)
    if (feature->object != nullptr) objects.push_back(feature);
  // One in each memory, as far as there are not too many, and some more.
  const std::size_t count = static_cast<std::size_t>(drawing.random.Between(2, 4));
  for (std::size_t i = 0; i < count; ++i) {
    const Feature* feature = i < objects.size() ? objects[i] : drawing.random.OneOf(objects);
    feature->object(drawing, i == 3 ? other : record);
  }
  const int statements = drawing.random.OneOf<int>({3, 6, 10, 15, 25});
  for (int i = 0; i < statements; ++i) drawing.AddOne();
  AddLastAnswers(drawing);
  return drawing.Finished();
}

RunnableProgram MakeRunnable(const Program& program) {
  RunnableProgram runnable = Modelled(program);
  for (const Feature* feature : FeaturesOf(program)) runnable.features.emplace_back(feature->name);
  return runnable;
}

}  // namespace exploration
