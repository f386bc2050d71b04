#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "diagnosis/localization/fault.h"
#include "diagnosis/localization/row_data.h"

namespace diagnosis {

/// What is told first where several explain a row.
enum class Rank {
  named,    // a fault that says what every answer is
  general,  // one of a great many of its kind, so it may fit by chance
  fitted,   // one that is made of the answers themselves
  vague,    // one that says only how far off the answers are
};

class Ways;

/// What one wants to know who meets a name.
struct Entry {
  const char* cause;    // what the compiler, or the driver, probably does
  const char* example;  // two lines: what is asked for, and what is done in its place
  const char* place;    // where to look
  const char* rows;     // names or globs of the rows that can show it, with blanks between
};

/// A kind of fault that a row may suffer from. Its name, its sentence and the example are patterns
/// of fmt, in which {n} is a number that differs from way to way, and {s} the ending of its plural.
struct Hypothesis {
  const char* name;
  const char* sentence;
  void (*add)(Ways& ways);  // adds each way in which the row at hand may have it
  Entry entry;
};

/// How a way is told.
struct Telling {
  Rank rank = Rank::named;
  std::int64_t number = 0;
  std::string detail{};  // what the sentence leaves open; often empty
};

/// One way in which a row may have a fault of a kind.
struct Way {
  const Hypothesis* hypothesis;
  Fault fault;
  Telling telling;

  std::string Name() const;
  std::string Sentence() const;
  /// The sentence with its detail.
  std::string Meaning() const;
  /// Whether they have the same name.
  bool IsAlike(const Way& other) const {
    return hypothesis == other.hypothesis && telling.number == other.telling.number;
  }
};

/// The ways under construction, for one row.
class Ways {
 public:
  explicit Ways(const RowData& data);

  const RowData& data;
  const Row& row;
  const std::set<std::uint32_t> wrongAnswers;

  void AddAll(std::span<const Hypothesis> hypotheses);
  void Add(const Fault& fault, Telling telling = {});
  /// `map` in the place of the lanes of the answers, of A alone and of B alone.
  void AddLaneMap(const LaneMap& map, const Telling& telling);
  std::vector<Way> Take() { return std::move(ways_); }

 private:
  std::vector<Way> ways_;
  const Hypothesis* current_ = nullptr;
};

/// How far a wrong answer lies from the nearest right one; nothing if there is no such lane, or no
/// distance.
std::optional<std::int64_t> UlpsOfWrongLane(const RowData& data, std::size_t number);

/// A pattern of a hypothesis with its number.
std::string Filled(const char* pattern, std::int64_t number);

/// The elements, or lanes, as bits.
std::uint32_t MaskOf(const std::set<int>& numbers);

/// "1, 2, 3"
std::string ListOf(const std::set<int>& numbers);

/// "1 byte", "2 bytes"
std::string BytesOf(std::int64_t count);

// The hypotheses, a file for each subject.
extern const std::span<const Hypothesis> hypothesesOnRounding;
extern const std::span<const Hypothesis> hypothesesOnConversion;
extern const std::span<const Hypothesis> hypothesesOnOperations;
extern const std::span<const Hypothesis> hypothesesOnMembers;
extern const std::span<const Hypothesis> hypothesesOnLanes;
extern const std::span<const Hypothesis> hypothesesOnElements;
extern const std::span<const Hypothesis> hypothesesOnLayout;

/// All of them, the simplest first.
std::vector<std::span<const Hypothesis>> AllHypotheses();

/// The hypothesis of that name. Throws std::out_of_range if there is none.
const Hypothesis& HypothesisNamed(std::string_view name);

/// All that a wrong row may suffer from.
std::vector<Way> WaysOn(const RowData& data);

}  // namespace diagnosis
