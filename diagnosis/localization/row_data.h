#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "diagnosis/judgement/opinion.h"
#include "diagnosis/record/record.h"
#include "diagnosis/record/row.h"

namespace diagnosis {

/// What an experiment puts into the first `size` bytes of the results before each launch; nothing
/// if it puts nothing there.
std::optional<Bytes> FilledResult(const Experiment& experiment, std::size_t size);

/// A row's bytes as the device had them.
struct RowData {
  RowData(const Row& row, const Record& record, const Device& device, const Opinion& opinion);

  struct Seen {
    Bytes a;  // the elements and what lies behind them
    Bytes b;
    Bytes result;                 // the ten elements
    std::optional<Bytes> before;  // what stood there, where that is known
  };
  struct Lane {
    std::size_t repetition;
    int element;
    int lane;
  };

  std::uint32_t BitsAt(const Lane& lane) const;
  /// The answers that are right in that lane of a repetition.
  RightAnswers RightAt(std::size_t repetition, int element, int lane) const;

  Row row;
  FloatMode mode;
  std::vector<Seen> repetitions;
  std::vector<Lane> lanes;     // the wrong ones first: where a fault is soonest refuted
  std::size_t wrongLanes = 0;  // how many those are
  int items = 0;               // elements of which the inputs are known
};

}  // namespace diagnosis
