#include "diagnosis/localization/row_data.h"

#include <bit>
#include <span>
#include <utility>

namespace diagnosis {

std::optional<Bytes> FilledResult(const Experiment& experiment, std::size_t size) {
  const Bytes& fill = experiment.result;
  if (fill.empty()) return std::nullopt;
  Bytes bytes(size);
  for (std::size_t at = 0; at < size; ++at) bytes[at] = fill[at % fill.size()];
  return bytes;
}

RowData::RowData(const Row& theRow, const Record& record, const Device& device,
                 const Opinion& opinion)
    : row(theRow), mode(ModeOf(device, record.buildOptions)) {
  const std::size_t size = row.stride * elementsOfRow;
  const auto joined = [](const Bytes& elements, const Bytes& behind) {
    Bytes all = elements;
    all.insert(all.end(), behind.begin(), behind.end());
    return all;
  };
  std::vector<std::size_t> places;  // of a repetition among those that are seen
  const Repetition* before = nullptr;
  for (const Repetition& repetition : record.repetitions) {
    places.push_back(repetitions.size());
    if (IsSeen(row, repetition)) {
      Seen seen{joined(repetition.inputA, record.behindA),
                joined(repetition.inputB, record.behindB), repetition.result, std::nullopt};
      seen.result.resize(size);
      seen.before = FilledResult(record.experiment, size);
      if (!seen.before && before != nullptr) seen.before = before->result;
      repetitions.push_back(std::move(seen));
    }
    before = IsSeen(row, repetition) ? &repetition : nullptr;
  }
  for (const WrongLane& wrong : opinion.wrong) {
    lanes.push_back(
        {places[static_cast<std::size_t>(wrong.repetition) - 1], wrong.element, wrong.lane});
  }
  wrongLanes = lanes.size();
  const auto numberOf = [this](const Lane& lane) {
    const auto element = lane.repetition * elementsOfRow + static_cast<std::size_t>(lane.element);
    return element * static_cast<std::size_t>(row.lanes) + static_cast<std::size_t>(lane.lane);
  };
  std::vector<bool> isWrong(numberOf({repetitions.size(), 0, 0}));
  for (const Lane& wrong : lanes) isWrong[numberOf(wrong)] = true;
  for (std::size_t repetition = 0; repetition < repetitions.size(); ++repetition) {
    for (int element = 0; element < elementsOfRow; ++element) {
      for (int lane = 0; lane < row.lanes; ++lane) {
        const Lane next{repetition, element, lane};
        if (!isWrong[numberOf(next)]) lanes.push_back(next);
      }
    }
  }
  if (!repetitions.empty()) {
    items = static_cast<int>(repetitions.front().a.size() / row.stride);
  }
}

std::uint32_t RowData::BitsAt(const Lane& lane) const {
  const auto element = std::span(repetitions[lane.repetition].result)
                           .subspan(row.stride * static_cast<std::size_t>(lane.element));
  return std::bit_cast<std::uint32_t>(FloatLane(element, lane.lane));
}

RightAnswers RowData::RightAt(std::size_t repetition, int element, int lane) const {
  const Seen& seen = repetitions[repetition];
  const auto at = row.stride * static_cast<std::size_t>(element);
  const float a = Converted(IntegerLane(row, std::span(seen.a).subspan(at), lane), mode.conversion);
  const float b = row.twoInputs ? FloatLane(std::span(seen.b).subspan(at), lane) : 0.0F;
  return RightAnswersOf(row.operation, a, b, ExponentOf(row, element, lane), mode);
}

}  // namespace diagnosis
