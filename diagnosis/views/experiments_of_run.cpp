#include "diagnosis/views/experiments_of_run.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <bit>
#include <cstdint>
#include <optional>
#include <span>

#include "diagnosis/localization/experiment.h"
#include "diagnosis/record/row.h"
#include "diagnosis/verdict/ledger.h"
#include "diagnosis/views/explain.h"

namespace diagnosis {

namespace {

std::string Times(std::size_t count) {
  if (count == 1) return "once";
  return count == 2 ? "twice" : fmt::format("{} times", count);
}

// What stood in the lane that the prediction is of, or how the row ended.
std::string AnswerIn(const Record& record) {
  const Experiment& experiment = record.experiment;
  const std::optional<Row> row = RowNamed(record.row);
  const auto repetition = static_cast<std::size_t>(experiment.repetition) - 1;
  const bool isThere = row && repetition < record.repetitions.size() &&
                       !record.repetitions[repetition].result.empty() && experiment.element >= 0 &&
                       experiment.element < elementsOfRow && experiment.lane >= 0 &&
                       experiment.lane < row->lanes;
  if (!isThere) return "nothing: " + std::string(NameOf(StatusOf(record)));
  const auto element = std::span(record.repetitions[repetition].result)
                           .subspan(row->stride * static_cast<std::size_t>(experiment.element));
  return fmt::format("0x{:08X}", std::bit_cast<std::uint32_t>(FloatLane(element, experiment.lane)));
}

}  // namespace

std::string TextOf(const Decision& decision) {
  const std::string asked = "asked " + Times(decision.experiments) + ": ";
  if (decision.kept.empty())
    return asked + fmt::format("not {}", fmt::join(decision.dropped, ", not "));
  std::string text = asked + fmt::format("{}", fmt::join(decision.kept, " or "));
  for (const std::string& name : decision.dropped) text += ", not " + name;
  return text + (decision.dropped.empty() ? ", still" : "");
}

std::string ExperimentsOfRun(const Suspects& suspects) {
  std::vector<std::string> texts;
  for (const Decision& decision : suspects.decisions) texts.push_back(TextOf(decision));
  return texts.empty() ? "" : fmt::format("Experiments: {}.\n", fmt::join(texts, "; "));
}

std::vector<std::string> ExperimentsOn(const Record& record) {
  std::vector<std::string> lines;
  for (const Record& asked : record.experiments) {
    const Experiment& experiment = asked.experiment;
    const ExperimentKind* const kind = ExperimentNamed(experiment.kind);
    lines.push_back(experiment.kind + (kind != nullptr ? std::string(": ") + kind->sentence : ""));
    lines.push_back("  In " + WhereOf(experiment.repetition, experiment.element, experiment.lane) +
                    ":");
    for (const Predicted& predicted : experiment.predicted)
      lines.push_back(fmt::format("    {} predicts {}", predicted.suspect, predicted.answer));
    lines.push_back("    the device gave " + AnswerIn(asked));
  }
  return lines;
}

}  // namespace diagnosis
