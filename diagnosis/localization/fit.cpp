#include "diagnosis/localization/fit.h"

#include <algorithm>
#include <cstring>
#include <optional>

#include "diagnosis/localization/prediction.h"

namespace diagnosis {
namespace {

/// One that stores a byte of the row's ten elements: byte `byte` of what it stores.
struct Writer {
  int element;
  int lane;
  std::size_t byte;
};

bool Writes(const Fault& fault, int element, int lane) {
  return !Holds(fault.unwrittenElements, element) && !Holds(fault.unwrittenLanes, lane);
}

/// Holds a fault against a row's answers, lane by lane.
class Trial {
 public:
  Trial(const Fault& fault, const RowData& data) : fault_(fault), data_(data) {
    const Place& place = fault.result;
    isMoved_ = place.offset != 0 || place.stride != 0 || place.step != 0 || fault.resultWidth != 0;
  }

  Fit Result() {
    if (!LanesFit() || !(isMoved_ ? OtherStoresFit() : UnwrittenElementsKeepAll()))
      return Fit::refuted;
    return OthersKeep() && !byChance_ ? Fit::explains : Fit::doubtful;
  }

 private:
  bool LanesFit() {
    std::size_t tried = 0;
    std::size_t unknownWrong = 0;
    std::size_t unknown = 0;
    for (const RowData::Lane& lane : data_.lanes) {
      known_ = true;
      if (!Fits(lane)) return false;
      unknown += known_ ? 0 : 1;
      unknownWrong += known_ || tried >= data_.wrongLanes ? 0 : 1;
      ++tried;
    }
    return 2 * unknown <= tried && 2 * unknownWrong <= data_.wrongLanes;
  }

  /// All that store byte `at` of the ten elements, in their order.
  std::vector<Writer> WritersOf(std::size_t at) const {
    const Place& place = fault_.result;
    const int width =
        fault_.resultWidth != 0 ? fault_.resultWidth : static_cast<int>(sizeof(float));
    const int step = place.step != 0 ? place.step : static_cast<int>(sizeof(float));
    const int stride = place.stride != 0 ? place.stride : static_cast<int>(data_.row.stride);
    const int fromFront = static_cast<int>(at) - place.offset;
    std::vector<Writer> writers;
    for (int lane = 0; lane < data_.row.lanes; ++lane) {
      const int fromLane = fromFront - step * lane;
      if (fromLane < 0) continue;
      const int last = std::min(fromLane / stride, data_.items - 1);
      for (int element = last; element >= 0 && fromLane - stride * element < width; --element) {
        if (Writes(fault_, element, lane))
          writers.push_back({element, lane, static_cast<std::size_t>(fromLane - stride * element)});
      }
    }
    return writers;
  }

  bool Fits(const RowData::Lane& lane) {
    const std::size_t at = data_.row.stride * static_cast<std::size_t>(lane.element) +
                           sizeof(float) * static_cast<std::size_t>(lane.lane);
    if (!isMoved_) {
      if (!Writes(fault_, lane.element, lane.lane))
        return Keeps(lane.repetition, at, sizeof(float));
      const Prediction prediction =
          Predict(fault_, data_, lane.repetition, lane.element, lane.lane);
      known_ = prediction.IsKnown();
      return prediction.Allows(data_.BitsAt(lane));
    }
    const std::vector<Writer> writers = WritersOf(at);
    const std::vector<Writer> writersOfLast = WritersOf(at + sizeof(float) - 1);
    if (writers.size() > 1 || writersOfLast.size() > 1) byChance_ = true;
    bool isWhole = false;
    for (const Writer& writer : writers) {
      // One that stores the whole lane.
      if (writer.byte != 0 || std::ranges::none_of(writersOfLast, [&writer](const Writer& last) {
            return last.element == writer.element && last.lane == writer.lane;
          }))
        continue;
      const Prediction prediction = PredictBy(writer, lane.repetition);
      known_ = prediction.IsKnown();
      if (prediction.Allows(data_.BitsAt(lane))) return true;
      isWhole = true;
    }
    if (isWhole) return false;
    if (writers.empty() && writersOfLast.empty() && WritersOf(at + 1).empty() &&
        WritersOf(at + 2).empty())
      return Keeps(lane.repetition, at, sizeof(float));
    for (std::size_t byte = at; byte < at + sizeof(float); ++byte) {
      if (!ByteFits(lane.repetition, byte, WritersOf(byte))) return false;
    }
    return true;
  }

  Prediction PredictBy(const Writer& writer, std::size_t repetition) const {
    return Predict(fault_, data_, repetition, writer.element, writer.lane);
  }

  bool ByteFits(std::size_t repetition, std::size_t at, const std::vector<Writer>& writers) {
    if (writers.empty()) return Keeps(repetition, at, 1);
    return std::ranges::any_of(writers, [&](const Writer& writer) {
      return PredictBy(writer, repetition)
          .AllowsByte(writer.byte, data_.repetitions[repetition].result[at]);
    });
  }

  /// Whether the bytes are what stood there. Where nobody knows what that was, it was one and the
  /// same byte everywhere unless it was so by chance.
  bool Keeps(std::size_t repetition, std::size_t at, std::size_t size) {
    const RowData::Seen& seen = data_.repetitions[repetition];
    const auto first = seen.result.begin() + static_cast<std::ptrdiff_t>(at);
    if (seen.before) {
      return std::equal(first, first + static_cast<std::ptrdiff_t>(size),
                        seen.before->begin() + static_cast<std::ptrdiff_t>(at));
    }
    const bool isOnly = data_.repetitions.size() == 1;
    known_ = isOnly;
    if (size != sizeof(float)) return true;
    std::uint32_t word = 0;
    std::memcpy(&word, &*first, sizeof word);
    const std::uint32_t repeated = (word & 0xFFU) * 0x01010101U;
    if (!fresh_) fresh_ = word;
    if (word != *fresh_ || word != repeated) byChance_ = true;
    return word == *fresh_ || !isOnly;
  }

  /// Whether what is stored between the lanes, where no row looks, is there too.
  bool OtherStoresFit() {
    for (std::size_t at = 0; at < data_.row.stride * elementsOfRow; ++at) {
      const std::vector<Writer> writers = WritersOf(at);
      if (writers.size() != 1) continue;
      for (std::size_t repetition = 0; repetition < data_.repetitions.size(); ++repetition) {
        if (!ByteFits(repetition, at, writers)) return false;
      }
    }
    return true;
  }

  /// Whether an element that is not written is left alone as a whole.
  bool UnwrittenElementsKeepAll() {
    if (fault_.unwrittenElements == 0) return true;
    for (std::size_t repetition = 0; repetition < data_.repetitions.size(); ++repetition) {
      for (std::size_t at = 0; at < data_.row.stride * elementsOfRow; at += sizeof(float)) {
        const bool keeps = (fault_.unwrittenElements >> (at / data_.row.stride) & 1U) != 0;
        if (keeps && !Keeps(repetition, at, sizeof(float))) return false;
      }
    }
    return true;
  }

  /// Whether all that the fault leaves alone, and no lane holds, is what stood there.
  bool OthersKeep() {
    const Row& row = data_.row;
    const auto slots = static_cast<std::size_t>(row.lanes == 3 ? 4 : row.lanes);
    for (std::size_t at = 0; at < row.stride * elementsOfRow; ++at) {
      if (isMoved_ ? !WritersOf(at).empty() : at % row.stride < sizeof(float) * slots) continue;
      const auto keeps = [at](const RowData::Seen& seen) {
        return !seen.before || seen.result[at] == (*seen.before)[at];
      };
      if (!std::ranges::all_of(data_.repetitions, keeps)) return false;
    }
    return true;
  }

  const Fault& fault_;
  const RowData& data_;
  bool isMoved_ = false;
  bool byChance_ = false;
  bool known_ = true;
  std::optional<std::uint32_t> fresh_;
};

}  // namespace

Fit FitOf(const Fault& fault, const RowData& data) { return Trial(fault, data).Result(); }

}  // namespace diagnosis
