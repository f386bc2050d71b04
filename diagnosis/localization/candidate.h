#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "diagnosis/localization/hypothesis.h"
#include "diagnosis/verdict/row_result.h"

namespace diagnosis {

/// What a suspect is but for its numbers, or two at once: a member that lies elsewhere lies at
/// another byte in each layout.
struct Kind {
  std::string_view one;    // names of hypotheses
  std::string_view other;  // empty if it is one
  auto operator<=>(const Kind&) const = default;
};

/// A suspect of one row.
struct Candidate {
  Kind kind;
  std::string name;
  std::string meaning;  // in this row
  std::string sentence;
  int rank;             // as Rank, and behind that rankOfPair
  std::size_t place;    // in the table, where the simplest come first
  std::int64_t number;  // in the name

  bool IsPlain() const { return rank == static_cast<int>(Rank::named); }
};

inline constexpr int rankOfPair = static_cast<int>(Rank::vague) + 1;

/// A row that stands in question: it is wrong, or failed though it is right.
struct Question {
  const RowResult* result;
  Row row;
  bool isWrong;
  std::vector<Candidate> candidates;

  const std::string& Name() const { return result->record->row; }
};

/// How many rows each name explains.
using Counts = std::map<std::string, std::size_t>;
Counts CountOf(const std::vector<Question>& questions);

/// The hypothesis by itself, without a row.
Candidate CandidateOf(const Hypothesis& hypothesis);

/// All single faults that explain the row; those made of the answers only if no other does, and the
/// vague ones only then.
void TrySingles(Question& question, const RowData& data, const std::vector<Way>& ways);

/// Two faults at once, one of them known from another row.
void TryPairs(Question& question, const RowData& data, const std::vector<Way>& ways,
              const Counts& known);

/// The vague suspects under one name, that of the greatest bound.
void JoinVague(std::vector<Question>& questions);

}  // namespace diagnosis
