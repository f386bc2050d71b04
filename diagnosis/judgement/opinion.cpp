#include "diagnosis/judgement/opinion.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <span>

namespace diagnosis {
namespace {

/// The bytes of an element, to the end of all.
std::span<const std::uint8_t> ElementOf(const Row& row, const Bytes& bytes, int element) {
  return std::span(bytes).subspan(row.stride * static_cast<std::size_t>(element));
}

}  // namespace

std::optional<std::uint64_t> DistanceBetween(float answer, float right) {
  if (std::isnan(answer) || std::isnan(right)) return std::nullopt;
  if ((answer < 0 && right > 0) || (answer > 0 && right < 0)) return std::nullopt;
  return UlpsBetween(answer, right);
}

std::string_view NameOf(Opinion::Verdict verdict) {
  constexpr std::string_view names[] = {"right", "wrong", "unseen"};
  return names[static_cast<std::size_t>(verdict)];
}

bool IsSeen(const Row& row, const Repetition& repetition) {
  const std::size_t size = row.stride * elementsOfRow;
  return repetition.inputA.size() >= size && (!row.twoInputs || repetition.inputB.size() >= size) &&
         repetition.result.size() >= size;
}

// OpenCL C leaves no choice here: an implicit conversion of an integer to float is as correctly
// rounded as convert_float, in the device's own mode unless a suffix names another.
RightAnswers RightAnswersOf(const Row& row, const Repetition& repetition, int element, int lane,
                            const FloatMode& mode) {
  const auto elementA = ElementOf(row, repetition.inputA, element);
  const float a = Converted(IntegerLane(row, elementA, lane), mode.conversion);
  const float b =
      row.twoInputs ? FloatLane(ElementOf(row, repetition.inputB, element), lane) : 0.0F;
  return RightAnswersOf(row.operation, a, b, ExponentOf(row, element, lane), mode);
}

Opinion OpinionOf(const Record& record, const Device& device) {
  Opinion opinion;
  const std::optional<Row> row = RowNamed(record.row);
  if (!row) return opinion;
  const FloatMode mode = ModeOf(device, record.buildOptions);
  int number = 0;
  for (const Repetition& repetition : record.repetitions) {
    ++number;
    if (!IsSeen(*row, repetition)) continue;
    for (int element = 0; element < elementsOfRow; ++element) {
      for (int lane = 0; lane < row->lanes; ++lane) {
        const RightAnswers answers = RightAnswersOf(*row, repetition, element, lane, mode);
        const float answer = FloatLane(ElementOf(*row, repetition.result, element), lane);
        const float right = answers.NearestTo(answer);
        const auto ulps = DistanceBetween(answer, right);
        ++opinion.lanes;
        if (ulps) opinion.greatestUlps = std::max(opinion.greatestUlps, *ulps);
        if (!answers.Allow(answer)) {
          opinion.wrong.push_back({number, element, lane, answer, right, ulps});
        }
      }
    }
  }
  if (opinion.lanes > 0) {
    opinion.verdict = opinion.wrong.empty() ? Opinion::Verdict::right : Opinion::Verdict::wrong;
  }
  return opinion;
}

}  // namespace diagnosis
