#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "diagnosis/localization/analysis.h"
#include "diagnosis/localization/fault.h"
#include "diagnosis/localization/row_data.h"
#include "diagnosis/record/record.h"

// What a device can be asked where its answers fit several suspects: a row once more, with one
// thing changed of which they predict different answers.

namespace diagnosis {

/// What can be changed in a row.
struct ExperimentKind {
  const char* name;
  const char* sentence;  // what is changed
  /// The ways to change it in a row, those first that are likelier to tell these faults apart. The
  /// kind's name and what is predicted are filled in by who asks.
  std::vector<Experiment> (*on)(const RowData& data, std::span<const Fault> rivals);
};

/// EXPERIMENTS(DO) does DO(name) for each kind, in the order in which they are tried. A kind is the
/// file experiment_NAME.cpp.
#define EXPERIMENTS(DO) \
  DO(filled_result)     \
  DO(filled_behind)     \
  DO(chosen_values)

#define DECLARE(name) extern const ExperimentKind name;
namespace experiments {
EXPERIMENTS(DECLARE)
}
#undef DECLARE

/// The kind of that name, or null.
const ExperimentKind* ExperimentNamed(const std::string& name);

/// What the experiment lets a device of that fault see and answer, where `data` is the row without
/// it. Of lanes of which that is not known there is none in what comes back; nothing at all of a
/// fault that stores elsewhere.
std::optional<RowData> Expected(const Experiment& experiment, const Fault& fault,
                                const RowData& data);

/// An experiment to be made.
struct ToAsk {
  std::string row;
  Experiment experiment;
};

/// The fewest experiments, and no more than `most`, that tell suspects apart between which the run
/// leaves open which it is: one for each such group, if there is one that tells any of its suspects
/// from the others.
std::vector<ToAsk> ExperimentsFor(const Analysis& analysis, std::size_t most);

/// How many experiments a run of so many rows may cost.
std::size_t MostExperiments(std::size_t rows);

}  // namespace diagnosis
