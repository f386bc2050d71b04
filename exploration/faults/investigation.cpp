#include "exploration/faults/investigation.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "exploration/faults/settings.h"
#include "exploration/generator/generator.h"
#include "exploration/program/check.h"
#include "exploration/shrinking/without_features.h"

namespace exploration {
namespace {

using Kind = Outcome::Kind;

// As often a program is run that may answer differently, to be seen doing it.
constexpr std::size_t runsOfUnsteady = 6;

// So many findings of a fault are shrunk to the end before less is enough.
constexpr std::size_t fullyShrunk = 3;

class Investigation {
 public:
  Investigation(const Finding& theFinding, const std::vector<Fault>& knownFaults,
                const InvestigationOptions& withOptions, const TryAll& throughTryAll)
      : finding(theFinding), known(knownFaults), options(withOptions), tryAll(throughTryAll) {}

  Conclusion Conclude() {
    if (!GoesWrongAgain()) return {};
    Fault found;
    found.symptom = first;
    const auto told = first.isTold ? Known(Explains, found) : std::nullopt;
    if (told) return {Conclusion::Kind::knownFault, *told, {}};
    const auto behind = IsBehindIt();
    if (behind) return {Conclusion::Kind::knownFault, *behind, {}};
    std::optional<Fault> fault = Described(Shrunken(finding.program, true));
    const auto explaining = fault ? Known(Explains, *fault) : std::nullopt;
    if (explaining) return {Conclusion::Kind::knownFault, *explaining, {}};
    fault = Described(Shrunken(fault ? fault->shrunken.program : finding.program, false));
    // What goes wrong only now and then may be lost on the way.
    if (!fault) fault = Described({{finding.program, finding.runnable}, 0, false});
    if (!fault) return {};
    TrySettings(*fault);
    auto same = Known(IsSame, *fault);
    if (!same) same = SharesCauseWith(*fault);
    if (same) return {Conclusion::Kind::knownFault, *same, std::move(fault)};
    return {Conclusion::Kind::newFault, 0, std::move(fault)};
  }

 private:
  std::optional<std::size_t> Known(bool (*is)(const Fault&, const Fault&),
                                   const Fault& fault) const {
    for (std::size_t i = 0; i < known.size(); ++i)
      if (is(known[i], fault)) return i;
    return std::nullopt;
  }

  /// The first of these faults with which it goes away: what is left of it goes right when all is
  /// out that uses the features.
  struct Telling {
    std::size_t fault;
    std::vector<std::string> features;
  };
  std::optional<std::size_t> GoesAwayWith(const std::vector<Telling>& faults) const {
    std::vector<Task> tasks;
    std::vector<std::size_t> tried;
    for (const Telling& fault : faults) {
      try {
        const auto left = WithoutFeatures(finding.program, fault.features);
        if (!left) continue;
        tasks.push_back(TaskOf(MakeRunnable(*left), options));
        tried.push_back(fault.fault);
      } catch (const Invalid&) {
      } catch (const std::out_of_range&) {  // parts are missing
      }
    }
    const std::vector<Outcome> outcomes = tryAll(tasks);
    for (std::size_t i = 0; i < tried.size(); ++i)
      if (outcomes[i].kind == Kind::right) return tried[i];
    return std::nullopt;
  }

  /// As it was drawn, without any features of a known fault's that tell it.
  std::optional<std::size_t> IsBehindIt() const {
    std::vector<Telling> faults;
    for (std::size_t i = 0; i < known.size(); ++i) {
      Telling telling{i, TellingFeatures(known[i].features)};
      const bool hasAll =
          std::ranges::includes(Sorted(finding.runnable.features), Sorted(telling.features));
      if (IsUntold(known[i]) && !telling.features.empty() && hasAll)
        faults.push_back(std::move(telling));
    }
    return GoesAwayWith(faults);
  }

  /// As it was drawn, without the features that the shrunken one still shares with a known fault.
  std::optional<std::size_t> SharesCauseWith(const Fault& shrunken) const {
    std::vector<Telling> faults;
    for (std::size_t i = 0; i < known.size(); ++i) {
      Telling telling{i, TellingFeatures(InBoth(known[i].features, shrunken.features))};
      if (IsUntold(known[i]) && !telling.features.empty()) faults.push_back(std::move(telling));
    }
    return GoesAwayWith(faults);
  }
  bool IsUntold(const Fault& fault) const {
    return !fault.symptom.isTold && !first.isTold && fault.symptom.kind == wanted;
  }
  static std::vector<std::string> Sorted(std::vector<std::string> features) {
    std::ranges::sort(features);
    return features;
  }

  bool GoesWrongAgain() {
    wanted = finding.outcome.kind;
    const std::vector<Outcome> outcomes =
        tryAll(std::vector<Task>(runsOfUnsteady / 2, TaskOf(finding.runnable, options)));
    const auto count = [&outcomes](auto is) {
      return static_cast<std::size_t>(std::count_if(outcomes.begin(), outcomes.end(), is));
    };
    const auto isWanted = [this](const Outcome& outcome) { return outcome.kind == wanted; };
    if (count(isWanted) == outcomes.size()) {
      first = SymptomOf(finding.runnable, outcomes.front());
      return true;
    }
    wanted = Kind::unsteady;
    return count([](const Outcome& outcome) { return outcome.IsFinding(); }) > 0;
  }

  static bool AreWrong(const std::vector<Outcome>& runs) {
    return std::ranges::all_of(
        runs, [](const Outcome& outcome) { return outcome.kind == Kind::wrongAnswer; });
  }

  /// Of a wrong answer any other is as good, as plainer values are wrong in another way. Of what is
  /// refused or crashes, or where a driver says what went wrong, only the same is. In place of
  /// what comes and goes, what is always wrong is better.
  bool IsWanted(const RunnableProgram& program, const std::vector<Outcome>& runs) const {
    if (wanted == Kind::unsteady) {
      if (AreWrong(runs)) return true;
      return std::any_of(runs.begin(), runs.end(), [&runs](const Outcome& outcome) {
        return outcome.kind == Kind::unsteady ||
               (outcome.IsFinding() && outcome.kind != runs.front().kind) ||
               (runs.front().IsFinding() && outcome.kind == Kind::right);
      });
    }
    if (runs.front().kind != wanted) return false;
    const Symptom symptom = SymptomOf(program, runs.front());
    if (wanted == Kind::wrongAnswer && !symptom.isTold && !first.isTold) return true;
    return symptom == first;
  }

  std::vector<bool> AreStillWrong(const std::vector<Candidate>& candidates) {
    const std::size_t each = wanted == Kind::unsteady ? runsOfUnsteady : 1;
    std::vector<Task> tasks;
    for (const Candidate& candidate : candidates)
      for (std::size_t i = 0; i < each; ++i) tasks.push_back(TaskOf(candidate.runnable, options));
    const std::vector<Outcome> outcomes = tryAll(tasks);
    std::vector<bool> wrong;
    for (std::size_t i = 0; i < candidates.size(); ++i) {
      const auto begin = outcomes.begin() + static_cast<std::ptrdiff_t>(i * each);
      wrong.push_back(
          IsWanted(candidates[i].runnable, {begin, begin + static_cast<std::ptrdiff_t>(each)}));
    }
    return wrong;
  }

  Shrunk Shrunken(const Program& program, bool isCoarse) {
    ShrinkLimits limits = options.limits;
    limits.isCoarse = isCoarse;
    if (isCoarse && wanted != Kind::unsteady) limits.confirmations = 1;
    const StillWrong stillWrong = [this](const std::vector<Candidate>& candidates) {
      return AreStillWrong(candidates);
    };
    return Shrink(program, stillWrong, limits);
  }

  /// Nothing if it does not go wrong any more.
  std::optional<Fault> Described(const Shrunk& shrunk) {
    const RunnableProgram& runnable = shrunk.smallest.runnable;
    const std::size_t runs = wanted == Kind::unsteady ? runsOfUnsteady : 1;
    const std::vector<Outcome> outcomes =
        tryAll(std::vector<Task>(runs, TaskOf(runnable, options)));
    if (!IsWanted(runnable, outcomes)) return std::nullopt;
    Fault fault;
    const auto shown = std::find_if(outcomes.begin(), outcomes.end(),
                                    [](const Outcome& outcome) { return outcome.IsFinding(); });
    fault.symptom = SymptomOf(runnable, *shown);
    if (wanted == Kind::unsteady && !AreWrong(outcomes)) fault.symptom = {wanted, "", false};
    fault.features = runnable.features;
    fault.first = finding;
    fault.shrunken = {shrunk.smallest.program, runnable, *shown};
    fault.isComplete = shrunk.isComplete;
    return fault;
  }

  /// Whether what is left of a finding, when the statements are out that it does not need, needs no
  /// more than a known fault. Where it has other features too, they may be what it is about; of a
  /// fault that has proved to be behind some such findings it is taken that it is behind the next,
  /// unless most of the features are others.
  static bool Explains(const Fault& fault, const Fault& finding) {
    if (!IsSame(fault, finding)) return false;
    if (fault.symptom.isTold || fault.features.size() >= finding.features.size()) return true;
    const std::size_t others = finding.features.size() - fault.features.size();
    return fault.findings >= fullyShrunk && others <= 2 * fault.features.size();
  }

  void TrySettings(Fault& fault) {
    const std::vector<Variant> variants = VariantsOf(fault.shrunken.program, options);
    std::vector<Task> tasks;
    for (const Variant& variant : variants)
      if (variant.cannot.empty()) tasks.push_back(variant.task);
    const std::vector<Outcome> outcomes = tryAll(tasks);
    std::size_t next = 0;
    for (const Variant& variant : variants) {
      if (!variant.cannot.empty()) {
        fault.settings.push_back({variant.name, variant.cannot});
        continue;
      }
      const Outcome& outcome = outcomes.at(next++);
      const std::string result = outcome.kind == Kind::right          ? "goes away"
                                 : outcome.kind == fault.symptom.kind ? "stays"
                                 : outcome.kind == Kind::notRun       ? outcome.text
                                                                      : Told(outcome);
      fault.settings.push_back({variant.name, result});
      if (variant.isMemory && outcome.kind == fault.symptom.kind)
        std::erase_if(fault.features,
                      [](const std::string& feature) { return feature.ends_with("-memory"); });
    }
    fault.title = TitleOf(fault.symptom, fault.features);
    fault.name = NameOf(fault.symptom, fault.features);
  }

  const Finding& finding;
  const std::vector<Fault>& known;
  const InvestigationOptions& options;
  const TryAll& tryAll;
  Kind wanted = Kind::right;
  Symptom first;
};

}  // namespace

Conclusion Investigated(const Finding& finding, const std::vector<Fault>& known,
                        const InvestigationOptions& options, const TryAll& tryAll) {
  return Investigation(finding, known, options, tryAll).Conclude();
}

}  // namespace exploration
