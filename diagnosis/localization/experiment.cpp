#include "diagnosis/localization/experiment.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <map>
#include <set>
#include <tuple>
#include <utility>

#include "diagnosis/localization/fit.h"
#include "diagnosis/localization/hypothesis.h"
#include "diagnosis/localization/prediction.h"

namespace diagnosis {
namespace {

constexpr const ExperimentKind* kinds[] = {
#define LIST(name) &experiments::name,
    EXPERIMENTS(LIST)
#undef LIST
};

/// One of the suspects between which it is open, in one row.
struct Rival {
  std::string name;
  Fault fault;
};

/// Those of these names that fit the row: nothing if one does not, or has no fault of its own.
std::vector<Rival> RivalsIn(const RowData& data, const std::vector<std::string>& names) {
  std::vector<Rival> rivals;
  for (const Way& way : WaysOn(data)) {
    const std::string name = way.Name();
    if (std::ranges::find(names, name) == names.end() ||
        std::ranges::find(rivals, name, &Rival::name) != rivals.end() ||
        FitOf(way.fault, data) == Fit::refuted)
      continue;
    rivals.push_back({name, way.fault});
  }
  return rivals.size() == names.size() ? rivals : std::vector<Rival>();
}

/// How many of the rivals some other's answers would refute, and the other way round.
std::size_t TellsApart(const Experiment& experiment, const RowData& data,
                       const std::vector<Rival>& rivals) {
  std::vector<std::optional<RowData>> expected;
  expected.reserve(rivals.size());
  for (const Rival& rival : rivals) expected.push_back(Expected(experiment, rival.fault, data));
  std::size_t pairs = 0;
  for (std::size_t i = 0; i < rivals.size(); ++i) {
    for (std::size_t j = i + 1; j < rivals.size(); ++j) {
      if (expected[i] && expected[j] && FitOf(rivals[j].fault, *expected[i]) == Fit::refuted &&
          FitOf(rivals[i].fault, *expected[j]) == Fit::refuted)
        ++pairs;
    }
  }
  return pairs;
}

/// Puts in what each says of the first lane on which two of them differ.
void Predict(const std::vector<Rival>& rivals, const RowData& data, Experiment& experiment) {
  using Place = std::tuple<std::size_t, int, int>;
  std::vector<std::map<Place, std::uint32_t>> answers;
  for (const Rival& rival : rivals) {
    auto& own = answers.emplace_back();
    if (const auto expected = Expected(experiment, rival.fault, data)) {
      for (const RowData::Lane& lane : expected->lanes)
        own[{lane.repetition, lane.element, lane.lane}] = expected->BitsAt(lane);
    }
  }
  std::map<Place, std::set<std::uint32_t>> differing;
  for (const auto& own : answers) {
    for (const auto& [place, bits] : own) differing[place].insert(bits);
  }
  std::erase_if(differing, [](const auto& one) { return one.second.size() < 2; });
  const Place place = differing.empty() ? Place() : differing.begin()->first;
  experiment.repetition = static_cast<int>(std::get<0>(place)) + 1;
  experiment.element = std::get<1>(place);
  experiment.lane = std::get<2>(place);
  for (std::size_t n = 0; n < rivals.size(); ++n) {
    const auto found = answers[n].find(place);
    experiment.predicted.push_back({rivals[n].name, found == answers[n].end()
                                                        ? "anything"
                                                        : fmt::format("0x{:08X}", found->second)});
  }
}

/// Some of the rows, from all over the run.
std::vector<std::string> SomeOf(const std::vector<std::string>& rows) {
  constexpr std::size_t most = 16;
  if (rows.size() <= most) return rows;
  std::vector<std::string> some;
  for (std::size_t n = 0; n < most; ++n) some.push_back(rows[n * rows.size() / most]);
  return some;
}

bool WasAsked(const Record& record, const ExperimentKind& kind) {
  return std::ranges::any_of(record.experiments, [&kind](const Record& asked) {
    return asked.experiment.kind == kind.name;
  });
}

struct Choice {
  std::size_t pairs = 0;
  ToAsk asked;
};

/// The experiment that tells most of these names apart.
Choice BestFor(const std::vector<std::string>& names, const std::vector<std::string>& rows,
               const Analysis& analysis) {
  const std::size_t all = names.size() * (names.size() - 1) / 2;
  struct Seen {
    const RowResult* result;
    RowData data;
    std::vector<Rival> rivals;
  };
  std::vector<Seen> seen;
  for (const std::string& name : SomeOf(rows)) {
    const RowResult* const result = analysis.Find(name);
    const std::optional<Row> row = RowNamed(name);
    if (result == nullptr || !row) continue;
    RowData data(*row, *result->record, analysis.run->info.device, result->opinion);
    std::vector<Rival> rivals = RivalsIn(data, names);
    if (!rivals.empty()) seen.push_back({result, std::move(data), std::move(rivals)});
  }
  Choice best;
  for (const ExperimentKind* const kind : kinds) {
    for (const Seen& one : seen) {
      if (WasAsked(*one.result->record, *kind)) continue;
      std::vector<Fault> faults;
      for (const Rival& rival : one.rivals) faults.push_back(rival.fault);
      for (Experiment& experiment : kind->on(one.data, faults)) {
        const std::size_t pairs = TellsApart(experiment, one.data, one.rivals);
        if (pairs <= best.pairs) continue;
        experiment.kind = kind->name;
        Predict(one.rivals, one.data, experiment);
        best = {pairs, {one.result->record->row, std::move(experiment)}};
        if (pairs == all) return best;
      }
    }
  }
  return best;
}

}  // namespace

const ExperimentKind* ExperimentNamed(const std::string& name) {
  const auto* const found = std::ranges::find_if(
      kinds, [&name](const ExperimentKind* kind) { return name == kind->name; });
  return found == std::end(kinds) ? nullptr : *found;
}

std::optional<RowData> Expected(const Experiment& experiment, const Fault& fault,
                                const RowData& data) {
  if (fault.result != Place() || fault.resultWidth != 0) return std::nullopt;
  RowData expected = data;
  const std::size_t used = data.row.stride * elementsOfRow;
  const auto change = [&](Bytes& bytes, const Bytes& elements) {
    std::copy_n(elements.begin(), std::min(elements.size(), bytes.size()), bytes.begin());
    for (std::size_t at = used; at < bytes.size() && !experiment.behind.empty(); ++at)
      bytes[at] = experiment.behind[(at - used) % experiment.behind.size()];
  };
  for (RowData::Seen& seen : expected.repetitions) {
    change(seen.a, experiment.inputA);
    change(seen.b, experiment.inputB);
  }
  std::vector<RowData::Lane> known;
  const Bytes* before = nullptr;
  for (std::size_t repetition = 0; repetition < expected.repetitions.size(); ++repetition) {
    RowData::Seen& seen = expected.repetitions[repetition];
    seen.before = FilledResult(experiment, used);
    if (!seen.before && before != nullptr) seen.before = *before;
    if (seen.before) seen.result = *seen.before;
    before = &seen.result;
  }
  for (const RowData::Lane& lane : data.lanes) {
    RowData::Seen& seen = expected.repetitions[lane.repetition];
    const bool isWritten =
        !Holds(fault.unwrittenElements, lane.element) && !Holds(fault.unwrittenLanes, lane.lane);
    if (!isWritten && !seen.before) continue;
    const std::size_t at = data.row.stride * static_cast<std::size_t>(lane.element) +
                           sizeof(std::uint32_t) * static_cast<std::size_t>(lane.lane);
    if (isWritten) {
      const auto bits = Predict(fault, expected, lane.repetition, lane.element, lane.lane).Sample();
      if (!bits) continue;
      std::memcpy(&seen.result[at], &*bits, sizeof *bits);
    }
    known.push_back(lane);
  }
  // What is known of no lane is wrong in none.
  expected.lanes = std::move(known);
  expected.wrongLanes = expected.lanes.size();
  return expected;
}

std::vector<ToAsk> ExperimentsFor(const Analysis& analysis, std::size_t most) {
  std::vector<ToAsk> asked;
  for (const Suspect& suspect : analysis.suspects.fewest) {
    if (suspect.alike.empty() || asked.size() >= most) continue;
    std::vector<std::string> names = suspect.alike;
    names.insert(names.begin(), suspect.name);
    Choice best = BestFor(names, suspect.rows, analysis);
    if (best.pairs > 0) asked.push_back(std::move(best.asked));
  }
  return asked;
}

std::size_t MostExperiments(std::size_t rows) {
  constexpr std::size_t least = 3;
  return std::max(least, rows / 10);
}

}  // namespace diagnosis
