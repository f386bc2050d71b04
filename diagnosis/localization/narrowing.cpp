#include "diagnosis/localization/narrowing.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <set>
#include <string>

#include "diagnosis/judgement/opinion.h"
#include "diagnosis/localization/fit.h"
#include "diagnosis/localization/hypothesis.h"
#include "diagnosis/localization/row_data.h"

namespace diagnosis {
namespace {

using Names = std::set<std::string>;

/// The suspects that an experiment was made for, and those of them that stood after it.
struct Outcome {
  Names asked;
  Names left;
};

bool Has(const Question& question, const std::string& name) {
  return std::ranges::find(question.candidates, name, &Candidate::name) !=
         question.candidates.end();
}

/// Whether it ran through: of a run that did not, the answers say nothing.
bool IsWhole(const Record& record) {
  return record.ending.kind == Ending::Kind::returned && record.failedCalls.empty() &&
         !record.repetitions.empty();
}

Outcome OutcomeOf(const Question& question, const Record& experiment, const std::vector<Way>& ways,
                  const RowData& data, const Device& device) {
  Outcome outcome;
  for (const Predicted& predicted : experiment.experiment.predicted)
    if (Has(question, predicted.suspect)) outcome.asked.insert(predicted.suspect);
  const RowData seen(question.row, experiment, device, OpinionOf(experiment, device));
  for (const Way& way : ways) {
    const std::string name = way.Name();
    if (outcome.asked.contains(name) && !outcome.left.contains(name) &&
        FitOf(way.fault, data) != Fit::refuted && FitOf(way.fault, seen) != Fit::refuted)
      outcome.left.insert(name);
  }
  return outcome;
}

void Erase(Question& question, const Names& names) {
  std::erase_if(question.candidates,
                [&names](const Candidate& one) { return names.contains(one.name); });
}

}  // namespace

std::vector<Decision> Narrow(std::vector<Question>& questions, const Device& device) {
  std::vector<Outcome> outcomes;
  std::map<Names, Decision> decisions;  // by those asked about
  for (const Question& question : questions) {
    const Record& record = *question.result->record;
    if (std::ranges::none_of(record.experiments, IsWhole)) continue;
    const RowData data(question.row, record, device, question.result->opinion);
    const std::vector<Way> ways = WaysOn(data);
    for (const Record& experiment : record.experiments) {
      if (!IsWhole(experiment)) continue;
      const Outcome outcome = OutcomeOf(question, experiment, ways, data, device);
      if (outcome.asked.empty()) continue;
      outcomes.push_back(outcome);
      Decision& decision = decisions[outcome.asked];
      ++decision.experiments;
    }
  }
  std::map<Names, Names> left;  // by those asked about, after all that asked about them
  for (const Outcome& outcome : outcomes) {
    Names& names = left.try_emplace(outcome.asked, outcome.asked).first->second;
    std::erase_if(names,
                  [&outcome](const std::string& name) { return !outcome.left.contains(name); });
  }
  std::vector<Decision> made;
  for (auto& [asked, decision] : decisions) {
    const Names& kept = left.at(asked);
    Names dropped;
    std::ranges::set_difference(asked, kept, std::inserter(dropped, dropped.end()));
    for (Question& question : questions) {
      const auto stands = [&question](const std::string& name) { return Has(question, name); };
      const bool wasOpen = std::ranges::all_of(asked, stands);
      if (wasOpen || std::ranges::any_of(kept, stands)) Erase(question, dropped);
    }
    decision.kept.assign(kept.begin(), kept.end());
    decision.dropped.assign(dropped.begin(), dropped.end());
    made.push_back(std::move(decision));
  }
  return made;
}

}  // namespace diagnosis
