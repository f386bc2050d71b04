#include "diagnosis/localization/suspects.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <optional>
#include <tuple>
#include <utility>

#include "diagnosis/localization/candidate.h"
#include "diagnosis/localization/fit.h"
#include "diagnosis/localization/narrowing.h"
#include "diagnosis/localization/sift.h"

namespace diagnosis {
namespace {

/// A suspect of the whole run.
struct Overall {
  Suspect suspect;
  RowSet rows;
  int rank;
  std::size_t place;
};

/// The fewest suspects of all rows in question, and the rows that none explains.
std::vector<Suspect> Fewest(const std::vector<Question>& questions) {
  std::vector<Overall> all;
  std::map<std::string, std::size_t> places;
  RowSet explained;
  Suspect nothing{unexplained, "No suspect predicts the answers.", {}, {}, 0};
  for (std::size_t number = 0; number < questions.size(); ++number) {
    const Question& question = questions[number];
    if (question.candidates.empty()) nothing.rows.push_back(question.Name());
    for (const Candidate& candidate : question.candidates) {
      const auto [place, isNew] = places.try_emplace(candidate.name, all.size());
      if (isNew)
        all.push_back(
            {{candidate.name, candidate.sentence, {}, {}, 0}, {}, candidate.rank, candidate.place});
      all[place->second].suspect.rows.push_back(question.Name());
      all[place->second].rows.set(number);
      explained.set(number);
    }
  }
  std::ranges::stable_sort(all, {}, [](const Overall& overall) {
    return std::tuple(-static_cast<std::int64_t>(overall.rows.count()), overall.rank,
                      overall.place);
  });

  // What explains no row that one before it does not is of no use here.
  std::vector<Overall> useful;
  for (Overall& overall : all) {
    const auto holds = [&overall](const Overall& other) {
      return (overall.rows & ~other.rows).none();
    };
    const auto holder = std::ranges::find_if(useful, holds);
    if (holder == useful.end()) {
      useful.push_back(std::move(overall));
    } else if (holder->rows == overall.rows) {
      holder->suspect.alike.push_back(overall.suspect.name);
    }
  }
  std::vector<Suspect> fewest;
  std::vector<RowSet> sets;
  sets.reserve(useful.size());
  for (const Overall& overall : useful) sets.push_back(overall.rows);
  for (const std::size_t n : FewestOf(sets, explained)) {
    fewest.push_back(useful[n].suspect);
    fewest.back().counted = (sets[n] & explained).count();
    explained &= ~sets[n];
  }
  nothing.counted = nothing.rows.size();
  if (!nothing.rows.empty()) fewest.push_back(std::move(nothing));
  return fewest;
}

/// Whether the row shows that the device keeps denormals, and nothing else.
bool KeepsDenormals(const RowData& data) {
  Fault kept;
  kept.denormalOperands = kept.denormalResults = Denormals::kept;
  Fault flushed;
  flushed.denormalOperands = flushed.denormalResults = Denormals::flushed;
  return FitOf(kept, data) != Fit::refuted && FitOf(flushed, data) == Fit::refuted;
}

}  // namespace

const std::vector<NamedSuspect>& Suspects::Of(std::string_view row) const {
  static const std::vector<NamedSuspect> none;
  const auto found = byRow.find(row);
  return found == byRow.end() ? none : found->second;
}

Suspects SuspectsOf(const std::vector<RowResult>& rows, const Device& device) {
  std::vector<Question> questions;
  for (const RowResult& result : rows) {
    const std::optional<Row> row = RowNamed(result.record->row);
    if (!row || questions.size() == RowSet().size()) continue;
    const bool isWrong = result.opinion.verdict == Opinion::Verdict::wrong;
    const RowData data(*row, *result.record, device, result.opinion);
    Question question{&result, *row, isWrong, {}};
    if (isWrong) {
      TrySingles(question, data, WaysOn(data));
      questions.push_back(std::move(question));
    } else if (CategoryOf(result.status, result.opinion.verdict) == Category::failedRight &&
               KeepsDenormals(data)) {
      question.candidates.push_back(CandidateOf(HypothesisNamed(denormalsKept)));
      questions.push_back(std::move(question));
    }
  }
  JoinVague(questions);
  const Counts counts = CountOf(questions);
  for (Question& question : questions) {
    if (!question.candidates.empty()) continue;
    const RowData data(question.row, *question.result->record, device, question.result->opinion);
    TryPairs(question, data, WaysOn(data), counts);
  }
  const Counts allCounts = CountOf(questions);
  for (Question& question : questions) Sift(question, allCounts);

  KeepCredible(questions);
  KeepFewestKinds(questions);

  Suspects suspects;
  suspects.decisions = Narrow(questions, device);
  suspects.fewest = Fewest(questions);
  for (Question& question : questions) {
    KeepPlain(question, suspects.fewest);
    auto& named = suspects.byRow[question.Name()];
    for (const Candidate& candidate : question.candidates)
      named.push_back({candidate.name, candidate.meaning});
    if (named.empty()) named.push_back({unexplained, "No suspect predicts the answers."});
  }
  return suspects;
}

}  // namespace diagnosis
