#include "diagnosis/localization/candidate.h"

#include <algorithm>
#include <optional>
#include <set>
#include <span>
#include <utility>

#include "diagnosis/localization/fit.h"

namespace diagnosis {
namespace {

constexpr Rank plainRanks[] = {Rank::named, Rank::general};
constexpr Rank fittedRanks[] = {Rank::fitted};
constexpr Rank vagueRanks[] = {Rank::vague};

Candidate CandidateOf(const Way& way, std::size_t place) {
  return {{way.hypothesis->name, {}},         way.Name(), way.Meaning(),     way.Sentence(),
          static_cast<int>(way.telling.rank), place,      way.telling.number};
}

void AddCandidate(Question& question, Candidate candidate) {
  const auto isThere = [&candidate](const Candidate& other) {
    return other.name == candidate.name;
  };
  if (std::ranges::none_of(question.candidates, isThere))
    question.candidates.push_back(std::move(candidate));
}

}  // namespace

Candidate CandidateOf(const Hypothesis& hypothesis) {
  return CandidateOf(Way{&hypothesis, {}, {}}, 0);
}

void TrySingles(Question& question, const RowData& data, const std::vector<Way>& ways) {
  for (const std::span<const Rank> ranks :
       {std::span<const Rank>(plainRanks), std::span<const Rank>(fittedRanks),
        std::span<const Rank>(vagueRanks)}) {
    if (!question.candidates.empty()) return;
    std::vector<Candidate> doubtful;
    for (std::size_t n = 0; n < ways.size(); ++n) {
      if (std::ranges::find(ranks, ways[n].telling.rank) == ranks.end()) continue;
      const Fit fit = FitOf(ways[n].fault, data);
      if (fit == Fit::refuted) continue;
      const Candidate candidate = CandidateOf(ways[n], n);
      if (fit == Fit::explains) {
        AddCandidate(question, candidate);
      } else {
        doubtful.push_back(candidate);
      }
    }
    if (!question.candidates.empty()) return;
    for (Candidate& candidate : doubtful) AddCandidate(question, std::move(candidate));
  }
}

Counts CountOf(const std::vector<Question>& questions) {
  Counts counts;
  for (const Question& question : questions) {
    for (const Candidate& candidate : question.candidates) ++counts[candidate.name];
  }
  return counts;
}

void TryPairs(Question& question, const RowData& data, const std::vector<Way>& ways,
              const Counts& known) {
  std::set<std::uint32_t> answers;
  for (std::size_t n = 0; n < data.wrongLanes; ++n) answers.insert(data.BitsAt(data.lanes[n]));
  constexpr std::size_t fewAnswers = 7;  // which one of so many pairs gives by chance
  if (answers.size() <= fewAnswers) return;
  struct Member {
    const Way* way;
    std::size_t place;
    bool isKnown;
  };
  std::vector<Member> members;
  for (std::size_t n = 0; n < ways.size(); ++n) {
    const Way& way = ways[n];
    const bool isKnown = known.contains(way.Name());
    if (way.fault.change != Change::bits &&
        (way.telling.rank == Rank::named || (way.telling.rank == Rank::general && isKnown)))
      members.push_back({&way, n, isKnown});
  }
  for (std::size_t i = 0; i < members.size(); ++i) {
    for (std::size_t j = i + 1; j < members.size(); ++j) {
      const Way& one = *members[i].way;
      const Way& other = *members[j].way;
      if (one.IsAlike(other) || (!members[i].isKnown && !members[j].isKnown)) continue;
      const std::optional<Fault> both = Both(one.fault, other.fault);
      if (!both || FitOf(*both, data) != Fit::explains) continue;
      AddCandidate(question, {{one.hypothesis->name, other.hypothesis->name},
                              one.Name() + "+" + other.Name(),
                              one.Meaning() + " " + other.Meaning(),
                              one.Sentence() + " " + other.Sentence(),
                              rankOfPair,
                              members[i].place * ways.size() + members[j].place,
                              0});
    }
  }
}

void JoinVague(std::vector<Question>& questions) {
  std::vector<Candidate*> vague;
  for (Question& question : questions) {
    for (Candidate& candidate : question.candidates) {
      if (candidate.rank == static_cast<int>(Rank::vague)) vague.push_back(&candidate);
    }
  }
  if (vague.empty()) return;
  const Candidate greatest = **std::ranges::max_element(
      vague, {}, [](const Candidate* candidate) { return candidate->number; });
  for (Candidate* candidate : vague) {
    candidate->name = greatest.name;
    candidate->sentence = greatest.sentence;
  }
}

}  // namespace diagnosis
