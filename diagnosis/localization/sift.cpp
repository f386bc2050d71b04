#include "diagnosis/localization/sift.h"

#include <algorithm>
#include <array>
#include <map>
#include <set>
#include <string_view>
#include <tuple>
#include <utility>

namespace diagnosis {
namespace {

/// The one kind, or the two, of which a candidate is.
std::vector<std::string_view> PartsOf(const Kind& kind) {
  if (kind.other.empty()) return {kind.one};
  return {kind.one, kind.other};
}

/// Operation, shape and element type.
using Coordinates = std::array<int, 3>;

Coordinates CoordinatesOf(const Row& row) {
  return {static_cast<int>(row.operation), static_cast<int>(row.shape),
          static_cast<int>(row.elementType)};
}

/// Picks `left` of the sets from `from` on that hold what is missing: the first such pick in their
/// order, or none.
bool Pick(const std::vector<RowSet>& sets, std::size_t from, std::size_t left,
          const RowSet& missing, std::vector<std::size_t>& picked, std::size_t& steps) {
  if (missing.none()) return true;
  if (left == 0) return false;
  for (std::size_t n = from; n < sets.size(); ++n) {
    if (steps == 0) return false;
    --steps;
    if ((sets[n] & missing).none()) continue;
    picked.push_back(n);
    if (Pick(sets, n + 1, left - 1, missing & ~sets[n], picked, steps)) return true;
    picked.pop_back();
  }
  return false;
}

}  // namespace

void Sift(Question& question, const Counts& counts) {
  std::ranges::stable_sort(question.candidates, {}, [&counts](const Candidate& candidate) {
    return std::tuple(-static_cast<std::int64_t>(counts.at(candidate.name)), candidate.rank,
                      candidate.place);
  });
  std::vector<Candidate> kept;
  for (Candidate& candidate : question.candidates) {
    const auto isPlainer = [&candidate](const Candidate& other) {
      return other.rank < candidate.rank;
    };
    const bool hasPlainer = std::ranges::any_of(question.candidates, [&](const Candidate& other) {
      return isPlainer(other) && counts.at(other.name) >= counts.at(candidate.name);
    });
    if (candidate.IsPlain() || !hasPlainer) kept.push_back(candidate);
  }
  // The first of those that are not plain.
  std::size_t others = 3;
  std::erase_if(kept, [&others](const Candidate& candidate) {
    if (candidate.IsPlain()) return false;
    if (others == 0) return true;
    --others;
    return false;
  });
  question.candidates = std::move(kept);
}

void KeepCredible(std::vector<Question>& questions) {
  std::map<std::string_view, std::set<std::size_t>> explained;
  for (std::size_t number = 0; number < questions.size(); ++number) {
    for (const Candidate& candidate : questions[number].candidates) {
      for (const std::string_view part : PartsOf(candidate.kind)) explained[part].insert(number);
    }
  }
  std::set<std::string_view> credible = {denormalsKept};
  for (const auto& [kind, numbers] : explained) {
    std::array<std::set<int>, 3> where;
    for (const std::size_t number : numbers) {
      const Coordinates coordinates = CoordinatesOf(questions[number].row);
      for (std::size_t i = 0; i < where.size(); ++i) where.at(i).insert(coordinates.at(i));
    }
    // Without the first coordinate, without the second, without the third.
    std::array<std::size_t, 3> beside{};
    for (const Question& question : questions) {
      if (!question.isWrong) continue;
      const Coordinates coordinates = CoordinatesOf(question.row);
      const auto shares = [&](std::size_t i) { return where.at(i).contains(coordinates.at(i)); };
      for (std::size_t i = 0; i < beside.size(); ++i) {
        if (shares((i + 1) % 3) && shares((i + 2) % 3)) ++beside.at(i);
      }
    }
    std::ranges::sort(beside);
    constexpr std::size_t few = 2;
    if (3 * numbers.size() >= 2 * (numbers.size() <= few ? beside[2] : beside[1]))
      credible.insert(kind);
  }
  for (Question& question : questions) {
    std::erase_if(question.candidates, [&credible](const Candidate& candidate) {
      return !std::ranges::all_of(PartsOf(candidate.kind), [&credible](std::string_view part) {
        return credible.contains(part);
      });
    });
  }
}

void KeepFewestKinds(std::vector<Question>& questions) {
  struct OfKind {
    Kind kind;
    RowSet rows;
    int rank;
    std::size_t place;
  };
  std::map<Kind, OfKind> byKind;
  RowSet explained;
  for (std::size_t number = 0; number < questions.size(); ++number) {
    for (const Candidate& candidate : questions[number].candidates) {
      OfKind& one = byKind
                        .try_emplace(candidate.kind,
                                     OfKind{candidate.kind, {}, candidate.rank, candidate.place})
                        .first->second;
      one.rows.set(number);
      one.rank = std::min(one.rank, candidate.rank);
      one.place = std::min(one.place, candidate.place);
      explained.set(number);
    }
  }
  std::vector<OfKind> kinds;
  kinds.reserve(byKind.size());
  for (auto& [name, kind] : byKind) kinds.push_back(std::move(kind));
  std::ranges::stable_sort(kinds, {}, [](const OfKind& kind) {
    return std::tuple(-static_cast<std::int64_t>(kind.rows.count()), kind.rank, kind.place);
  });
  std::vector<RowSet> sets;
  sets.reserve(kinds.size());
  for (const OfKind& kind : kinds) sets.push_back(kind.rows);
  const std::size_t fewest = FewestOf(sets, explained).size();
  std::set<Kind> kept;
  for (const OfKind& kind : kinds) {
    if (1 + FewestOf(sets, explained & ~kind.rows).size() <= fewest) kept.insert(kind.kind);
  }
  for (Question& question : questions) {
    std::erase_if(question.candidates,
                  [&kept](const Candidate& candidate) { return !kept.contains(candidate.kind); });
  }
}

void KeepPlain(Question& question, const std::vector<Suspect>& fewest) {
  const auto isOfFewest = [&fewest](const Candidate& candidate) {
    return std::ranges::find(fewest, candidate.name, &Suspect::name) != fewest.end();
  };
  const bool isTold = std::ranges::any_of(question.candidates, [&](const Candidate& candidate) {
    return candidate.IsPlain() && isOfFewest(candidate);
  });
  if (!isTold) return;
  std::erase_if(question.candidates, [&](const Candidate& candidate) {
    return !candidate.IsPlain() && !isOfFewest(candidate);
  });
}

std::vector<std::size_t> FewestOf(const std::vector<RowSet>& sets, RowSet missing) {
  std::size_t steps = 1'000'000;
  std::vector<std::size_t> picked;
  for (std::size_t most = 0; most <= sets.size() && steps > 0; ++most) {
    if (Pick(sets, 0, most, missing, picked, steps)) return picked;
    picked.clear();
  }
  while (missing.any()) {
    const auto best = std::ranges::max_element(
        sets, {}, [&missing](const RowSet& set) { return (set & missing).count(); });
    missing &= ~*best;
    picked.push_back(static_cast<std::size_t>(best - sets.begin()));
  }
  return picked;
}

}  // namespace diagnosis
