#include "diagnosis/localization/hypothesis.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <bit>
#include <cmath>
#include <stdexcept>
#include <utility>

namespace diagnosis {
namespace {

std::set<std::uint32_t> WrongAnswersOf(const RowData& data) {
  std::set<std::uint32_t> answers;
  for (std::size_t n = 0; n < data.wrongLanes; ++n) answers.insert(data.BitsAt(data.lanes[n]));
  return answers;
}

/// Whether what is read or stored stands somewhere else.
bool IsElsewhere(const Fault& fault) {
  const auto moved = [](const Reading& reading) {
    return reading.place != Place() || reading.lanes != ownLanes || reading.elementsOn != 0 ||
           reading.repetitionsBefore != 0;
  };
  return moved(fault.a) || moved(fault.b) || fault.result != Place() || fault.lanes != ownLanes ||
         fault.elements != ownElements || fault.repetitionsBefore != 0;
}

}  // namespace

std::string Filled(const char* pattern, std::int64_t number) {
  return fmt::format(fmt::runtime(pattern), fmt::arg("n", number),
                     fmt::arg("s", number == 1 ? "" : "s"));
}

std::string Way::Name() const { return Filled(hypothesis->name, telling.number); }

std::string Way::Sentence() const { return Filled(hypothesis->sentence, telling.number); }

std::string Way::Meaning() const {
  std::string meaning = Sentence();
  if (telling.detail.empty()) return meaning;
  meaning.pop_back();  // the full stop
  return meaning + " (" + telling.detail + ").";
}

Ways::Ways(const RowData& theData)
    : data(theData), row(theData.row), wrongAnswers(WrongAnswersOf(theData)) {}

void Ways::AddAll(std::span<const Hypothesis> hypotheses) {
  for (const Hypothesis& hypothesis : hypotheses) {
    current_ = &hypothesis;
    hypothesis.add(*this);
  }
}

void Ways::Add(const Fault& fault, Telling telling) {
  // With one or two answers in all wrong lanes, one of a great many places holds them by chance.
  constexpr std::size_t fewAnswers = 2;
  if (telling.rank != Rank::named && wrongAnswers.size() <= fewAnswers && IsElsewhere(fault))
    return;
  ways_.push_back({current_, fault, std::move(telling)});
}

void Ways::AddLaneMap(const LaneMap& map, const Telling& telling) {
  const auto with = [&telling](const char* where) {
    Telling partly = telling;
    partly.detail += (partly.detail.empty() ? "" : ", ") + std::string(where);
    return partly;
  };
  Add({.lanes = map}, telling);
  if (row.twoInputs || row.operation == Operation::power)
    Add({.a = {.lanes = map}}, with("of A alone"));
  if (row.twoInputs) Add({.b = {.lanes = map}}, with("of B alone"));
}

std::optional<std::int64_t> UlpsOfWrongLane(const RowData& data, std::size_t number) {
  if (number >= data.wrongLanes) return std::nullopt;
  const RowData::Lane& lane = data.lanes[number];
  const auto answer = std::bit_cast<float>(data.BitsAt(lane));
  const float right = data.RightAt(lane.repetition, lane.element, lane.lane).NearestTo(answer);
  if (std::isnan(answer) || std::isnan(right)) return std::nullopt;
  return static_cast<std::int64_t>(UlpsBetween(answer, right));
}

std::uint32_t MaskOf(const std::set<int>& numbers) {
  std::uint32_t mask = 0;
  for (const int number : numbers) mask |= 1U << number;
  return mask;
}

std::string ListOf(const std::set<int>& numbers) {
  return fmt::format("{}", fmt::join(numbers, ", "));
}

std::string BytesOf(std::int64_t count) {
  return fmt::format("{} byte{}", count, count == 1 ? "" : "s");
}

std::vector<std::span<const Hypothesis>> AllHypotheses() {
  return {hypothesesOnRounding, hypothesesOnOperations, hypothesesOnConversion, hypothesesOnMembers,
          hypothesesOnLanes,    hypothesesOnElements,   hypothesesOnLayout};
}

const Hypothesis& HypothesisNamed(std::string_view name) {
  for (const std::span<const Hypothesis> hypotheses : AllHypotheses()) {
    for (const Hypothesis& hypothesis : hypotheses) {
      if (name == hypothesis.name) return hypothesis;
    }
  }
  throw std::out_of_range("no hypothesis is called so");
}

std::vector<Way> WaysOn(const RowData& data) {
  Ways ways(data);
  for (const std::span<const Hypothesis> hypotheses : AllHypotheses()) ways.AddAll(hypotheses);
  return ways.Take();
}

}  // namespace diagnosis
