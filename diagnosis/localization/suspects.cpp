#include "diagnosis/localization/suspects.h"

#include <algorithm>
#include <array>
#include <bitset>
#include <compare>
#include <cstdint>
#include <optional>
#include <set>
#include <span>
#include <string_view>
#include <tuple>
#include <utility>

#include "diagnosis/judgement/opinion.h"
#include "diagnosis/localization/fault.h"
#include "diagnosis/localization/hypotheses.h"

namespace diagnosis {
namespace {

/// A suspect of one row.
struct Candidate {
  std::string name;
  std::string meaning;  // in this row
  std::string sentence;
  int rank;
  std::size_t place;  // in the table, where the simplest come first
};

constexpr Rank plainRanks[] = {Rank::named, Rank::general};
constexpr Rank fittedRanks[] = {Rank::fitted};
constexpr Rank vagueRanks[] = {Rank::vague};
constexpr int rankOfPair = static_cast<int>(Rank::vague) + 1;

std::string MeaningOf(const Hypothesis& hypothesis) {
  if (hypothesis.detail.empty()) return hypothesis.meaning;
  std::string meaning = hypothesis.meaning;
  meaning.pop_back();  // the full stop
  return meaning + " (" + hypothesis.detail + ").";
}

/// A row that stands in question.
struct Question {
  const RowResult* result;
  bool isWrong;
  std::vector<Candidate> candidates;

  const std::string& Row() const { return result->record->row; }
};

void AddCandidate(Question& question, Candidate candidate) {
  const auto isThere = [&candidate](const Candidate& other) {
    return other.name == candidate.name;
  };
  if (std::ranges::none_of(question.candidates, isThere))
    question.candidates.push_back(std::move(candidate));
}

/// All single faults that explain the row; those made of the answers only if no other does, and the
/// vague ones only then.
void TrySingles(Question& question, const RowData& data,
                const std::vector<Hypothesis>& hypotheses) {
  for (const std::span<const Rank> ranks :
       {std::span<const Rank>(plainRanks), std::span<const Rank>(fittedRanks),
        std::span<const Rank>(vagueRanks)}) {
    if (!question.candidates.empty()) return;
    std::vector<Candidate> doubtful;
    for (std::size_t n = 0; n < hypotheses.size(); ++n) {
      const Hypothesis& hypothesis = hypotheses[n];
      if (std::ranges::find(ranks, hypothesis.rank) == ranks.end()) continue;
      const Fit fit = FitOf(hypothesis.fault, data);
      if (fit == Fit::refuted) continue;
      const Candidate candidate{hypothesis.name, MeaningOf(hypothesis), hypothesis.meaning,
                                static_cast<int>(hypothesis.rank), n};
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

using Counts = std::map<std::string, std::size_t>;

/// How many rows each name explains.
Counts Count(const std::vector<Question>& questions) {
  Counts counts;
  for (const Question& question : questions) {
    for (const Candidate& candidate : question.candidates) ++counts[candidate.name];
  }
  return counts;
}

/// Two faults at once, one of them known from another row.
void TryPairs(Question& question, const RowData& data, const std::vector<Hypothesis>& hypotheses,
              const Counts& known) {
  std::set<std::uint32_t> answers;
  for (std::size_t n = 0; n < data.wrongLanes; ++n) answers.insert(data.BitsAt(data.lanes[n]));
  constexpr std::size_t fewAnswers = 7;  // which one of so many pairs gives by chance
  if (answers.size() <= fewAnswers) return;
  std::vector<std::size_t> worthTrying;
  for (std::size_t n = 0; n < hypotheses.size(); ++n) {
    const Hypothesis& hypothesis = hypotheses[n];
    if (hypothesis.fault.change == Change::bits) continue;
    if (hypothesis.rank == Rank::named ||
        (hypothesis.rank == Rank::general && known.contains(hypothesis.name)))
      worthTrying.push_back(n);
  }
  for (std::size_t i = 0; i < worthTrying.size(); ++i) {
    for (std::size_t j = i + 1; j < worthTrying.size(); ++j) {
      const Hypothesis& one = hypotheses[worthTrying[i]];
      const Hypothesis& other = hypotheses[worthTrying[j]];
      if (one.name == other.name) continue;
      if (!known.contains(one.name) && !known.contains(other.name)) continue;
      const std::optional<Fault> both = Both(one.fault, other.fault);
      if (!both || FitOf(*both, data) != Fit::explains) continue;
      AddCandidate(question, {one.name + "+" + other.name, MeaningOf(one) + " " + MeaningOf(other),
                              one.meaning + " " + other.meaning, rankOfPair,
                              worthTrying[i] * hypotheses.size() + worthTrying[j]});
    }
  }
}

/// The vague suspects under one name, that of the greatest bound.
void JoinVague(std::vector<Question>& questions) {
  const Candidate* greatest = nullptr;
  for (const Question& question : questions) {
    for (const Candidate& candidate : question.candidates) {
      const bool isVague = candidate.rank == static_cast<int>(Rank::vague);
      if (!isVague) continue;
      const auto key = [](const Candidate& one) {
        return std::pair(one.name.size(), std::string_view(one.name));
      };
      if (greatest == nullptr || key(*greatest) < key(candidate)) greatest = &candidate;
    }
  }
  if (greatest == nullptr) return;
  const std::string name = greatest->name;
  const std::string sentence = greatest->sentence;
  for (Question& question : questions) {
    for (Candidate& candidate : question.candidates) {
      if (candidate.rank != static_cast<int>(Rank::vague)) continue;
      candidate.name = name;
      candidate.sentence = sentence;
    }
  }
}

/// Takes away what explains no more rows than a plainer suspect of the same row does, if it is not
/// itself a plain one: with so many of its kind, one may fit by chance.
void Sift(Question& question, const Counts& counts) {
  std::ranges::stable_sort(question.candidates, {}, [&counts](const Candidate& candidate) {
    return std::tuple(-static_cast<std::int64_t>(counts.at(candidate.name)), candidate.rank,
                      candidate.place);
  });
  std::vector<Candidate> kept;
  for (Candidate& candidate : question.candidates) {
    const bool isPlain = candidate.rank == static_cast<int>(Rank::named);
    const auto isPlainer = [&candidate](const Candidate& other) {
      return other.rank < candidate.rank;
    };
    const bool hasPlainer = std::ranges::any_of(question.candidates, [&](const Candidate& other) {
      return isPlainer(other) && counts.at(other.name) >= counts.at(candidate.name);
    });
    if (isPlain || !hasPlainer) kept.push_back(candidate);
  }
  constexpr std::size_t mostOthers = 3;
  const auto others =
      static_cast<std::size_t>(std::ranges::count_if(kept, [](const Candidate& candidate) {
        return candidate.rank != static_cast<int>(Rank::named);
      }));
  for (std::size_t surplus = others > mostOthers ? others - mostOthers : 0; surplus > 0;
       --surplus) {
    const auto last = std::ranges::find_if(kept.rbegin(), kept.rend(), [](const Candidate& one) {
      return one.rank != static_cast<int>(Rank::named);
    });
    kept.erase(std::next(last).base());
  }
  question.candidates = std::move(kept);
}

using RowSet = std::bitset<256>;

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

/// The fewest sets that hold all of these rows; where that takes too long to find, those that one
/// after the other hold most of what is left. Each row is in a set.
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

/// What a suspect is but for its numbers: a member that lies elsewhere lies at another byte in each
/// layout.
std::string KindOfName(std::string_view name) {
  constexpr std::string_view constant = "answers-0x";
  if (name.starts_with(constant)) return std::string(constant);
  std::string kind;
  for (const char c : name) {
    const bool isDigit = c >= '0' && c <= '9';
    if (!isDigit) {
      kind += c;
    } else if (!kind.ends_with('N')) {
      kind += 'N';
    }
  }
  return kind;
}

/// The kinds of the one suspect, or of the two, that a name tells.
std::vector<std::string> KindsOfName(const std::string& name) {
  const std::size_t plus = name.find('+');
  if (plus == std::string::npos) return {KindOfName(name)};
  return {KindOfName(name.substr(0, plus)), KindOfName(name.substr(plus + 1))};
}

/// Takes away the suspects that explain a row here and there by chance. What a device does wrong,
/// it does wherever the operation, the shape or the element type is the same: of the wrong rows
/// that share two of these with those that it explains, a suspect must explain two thirds, for two
/// of the three ways to choose two, or for each where it explains one or two rows only.
void KeepCredible(std::vector<Question>& questions) {
  struct Where {
    std::set<int> operations, shapes, types;
  };
  std::map<std::string, std::set<std::size_t>> explained;
  for (std::size_t number = 0; number < questions.size(); ++number) {
    for (const Candidate& candidate : questions[number].candidates) {
      for (const std::string& kind : KindsOfName(candidate.name)) explained[kind].insert(number);
    }
  }
  std::set<std::string> credible = {denormalsKept};
  for (const auto& [kind, numbers] : explained) {
    Where where;
    for (const std::size_t number : numbers) {
      const auto row = RowNamed(questions[number].Row()).value();
      where.operations.insert(static_cast<int>(row.operation));
      where.shapes.insert(static_cast<int>(row.shape));
      where.types.insert(static_cast<int>(row.elementType));
    }
    std::size_t ofOperationAndShape = 0;
    std::size_t ofOperationAndType = 0;
    std::size_t ofShapeAndType = 0;
    for (const Question& question : questions) {
      if (!question.isWrong) continue;
      const auto row = RowNamed(question.Row()).value();
      const bool operation = where.operations.contains(static_cast<int>(row.operation));
      const bool shape = where.shapes.contains(static_cast<int>(row.shape));
      const bool type = where.types.contains(static_cast<int>(row.elementType));
      if (operation && shape) ++ofOperationAndShape;
      if (operation && type) ++ofOperationAndType;
      if (shape && type) ++ofShapeAndType;
    }
    std::array counts = {ofOperationAndShape, ofOperationAndType, ofShapeAndType};
    std::ranges::sort(counts);
    constexpr std::size_t few = 2;
    const std::size_t beside = numbers.size() <= few ? counts[2] : counts[1];
    if (3 * numbers.size() >= 2 * beside) credible.insert(kind);
  }
  for (Question& question : questions) {
    std::erase_if(question.candidates, [&credible](const Candidate& candidate) {
      return !std::ranges::all_of(
          KindsOfName(candidate.name),
          [&credible](const std::string& kind) { return credible.contains(kind); });
    });
  }
}

/// Takes away the suspects that are of none of the fewest kinds which explain the run. A kind stays
/// if as few can be had with it: the data can't tell.
void KeepFewestKinds(std::vector<Question>& questions) {
  struct OfKind {
    std::string kind;
    RowSet rows;
    int rank;
    std::size_t place;
  };
  std::map<std::string, OfKind> byName;
  RowSet explained;
  for (std::size_t number = 0; number < questions.size(); ++number) {
    for (const Candidate& candidate : questions[number].candidates) {
      const std::string kind = KindOfName(candidate.name);
      OfKind& one =
          byName.try_emplace(kind, OfKind{kind, {}, candidate.rank, candidate.place}).first->second;
      one.rows.set(number);
      one.rank = std::min(one.rank, candidate.rank);
      one.place = std::min(one.place, candidate.place);
      explained.set(number);
    }
  }
  std::vector<OfKind> kinds;
  kinds.reserve(byName.size());
  for (auto& [name, kind] : byName) kinds.push_back(std::move(kind));
  std::ranges::stable_sort(kinds, {}, [](const OfKind& kind) {
    return std::tuple(-static_cast<std::int64_t>(kind.rows.count()), kind.rank, kind.place);
  });
  std::vector<RowSet> sets;
  sets.reserve(kinds.size());
  for (const OfKind& kind : kinds) sets.push_back(kind.rows);
  const std::size_t fewest = FewestOf(sets, explained).size();
  std::set<std::string> kept;
  for (const OfKind& kind : kinds) {
    if (1 + FewestOf(sets, explained & ~kind.rows).size() <= fewest) kept.insert(kind.kind);
  }
  for (Question& question : questions) {
    std::erase_if(question.candidates, [&kept](const Candidate& candidate) {
      return !kept.contains(KindOfName(candidate.name));
    });
  }
}

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
  Suspect nothing{unexplained, "No suspect predicts the answers.", {}, {}};
  for (std::size_t number = 0; number < questions.size(); ++number) {
    const Question& question = questions[number];
    if (question.candidates.empty()) nothing.rows.push_back(question.Row());
    for (const Candidate& candidate : question.candidates) {
      const auto [place, isNew] = places.try_emplace(candidate.name, all.size());
      if (isNew)
        all.push_back(
            {{candidate.name, candidate.sentence, {}, {}}, {}, candidate.rank, candidate.place});
      all[place->second].suspect.rows.push_back(question.Row());
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
  for (const std::size_t n : FewestOf(sets, explained)) fewest.push_back(useful[n].suspect);
  if (!nothing.rows.empty()) fewest.push_back(std::move(nothing));
  return fewest;
}

/// Takes away what is not plain where a plain suspect is one of the run's fewest, and this is not:
/// other rows have refuted it.
void KeepPlain(Question& question, const std::vector<Suspect>& fewest) {
  const auto isOfFewest = [&fewest](const Candidate& candidate) {
    return std::ranges::find(fewest, candidate.name, &Suspect::name) != fewest.end();
  };
  const auto isPlain = [](const Candidate& candidate) {
    return candidate.rank == static_cast<int>(Rank::named);
  };
  const bool isTold = std::ranges::any_of(question.candidates, [&](const Candidate& candidate) {
    return isPlain(candidate) && isOfFewest(candidate);
  });
  if (!isTold) return;
  std::erase_if(question.candidates, [&](const Candidate& candidate) {
    return !isPlain(candidate) && !isOfFewest(candidate);
  });
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
    Question question{&result, isWrong, {}};
    if (isWrong) {
      TrySingles(question, data, HypothesesOn(data));
      questions.push_back(std::move(question));
    } else if (CategoryOf(result.status, result.opinion.verdict) == Category::failedRight &&
               KeepsDenormals(data)) {
      constexpr char meaning[] = "Denormals are kept, where the row expects them flushed.";
      question.candidates.push_back({denormalsKept, meaning, meaning, 0, 0});
      questions.push_back(std::move(question));
    }
  }
  JoinVague(questions);
  const Counts counts = Count(questions);
  for (Question& question : questions) {
    if (!question.candidates.empty()) continue;
    const Record& record = *question.result->record;
    const RowData data(RowNamed(record.row).value(), record, device, question.result->opinion);
    TryPairs(question, data, HypothesesOn(data), counts);
  }
  const Counts allCounts = Count(questions);
  for (Question& question : questions) Sift(question, allCounts);

  KeepCredible(questions);
  KeepFewestKinds(questions);

  Suspects suspects;
  suspects.fewest = Fewest(questions);
  for (Question& question : questions) {
    KeepPlain(question, suspects.fewest);
    auto& named = suspects.byRow[question.Row()];
    for (const Candidate& candidate : question.candidates)
      named.push_back({candidate.name, candidate.meaning});
    if (named.empty()) named.push_back({unexplained, "No suspect predicts the answers."});
  }
  return suspects;
}

}  // namespace diagnosis
