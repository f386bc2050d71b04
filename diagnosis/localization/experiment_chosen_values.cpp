#include <algorithm>
#include <bit>
#include <cstdint>
#include <iterator>
#include <map>
#include <random>

#include "diagnosis/localization/experiment.h"
#include "diagnosis/localization/prediction.h"

namespace diagnosis {
namespace {

// Integers at which conversions part: signs, what a float holds exactly and what is just beyond,
// halves of its last place, and the ends of each width.
constexpr std::int64_t integers[] = {
    0,        1,         -1,       3,          -3,         100,        -100,
    127,      -128,      255,      300,        32767,      -32768,     65535,
    16777215, 16777216,  16777217, -16777217,  16777219,   -16777219,  33554433,
    33554434, -33554435, 50331651, 1000000007, -999999937, 2147483647, -2147483647};
// Floats with fractions, of either sign, too large for an integer, too small to count.
constexpr float floats[] = {0.5F,       -0.5F,      1.5F,   2.5F,        -2.75F, 0.25F,   1.0F,
                            -1.0F,      3.999F,     1e-3F,  -7.125F,     1e9F,   -3e9F,   65536.5F,
                            16777216.F, 8388607.5F, 1e-20F, -123456.79F, 5e18F,  0.9999F, 1e20F};

void Store(Bytes& bytes, std::size_t at, std::uint64_t value, std::size_t width) {
  for (std::size_t n = 0; n < width; ++n)
    bytes.at(at + n) = static_cast<std::uint8_t>(value >> (8 * n));
}

Experiment Drawn(const Row& row, std::uint32_t number) {
  std::mt19937 random(number);
  Experiment one;
  // What no member holds is anything but zero, so that a member that is read elsewhere shows.
  const auto anything = [&random](Bytes& bytes, std::size_t size) {
    for (std::size_t n = 0; n < size; ++n) bytes.push_back(static_cast<std::uint8_t>(random()));
  };
  anything(one.inputA, row.stride * elementsOfRow);
  if (row.twoInputs) anything(one.inputB, row.stride * elementsOfRow);
  for (std::size_t element = 0; element < elementsOfRow; ++element) {
    for (std::size_t lane = 0; lane < static_cast<std::size_t>(row.lanes); ++lane) {
      const std::int64_t integer = integers[random() % std::size(integers)];
      Store(one.inputA, row.stride * element + row.width * lane,
            static_cast<std::uint64_t>(integer), row.width);
      const float real = floats[random() % std::size(floats)];
      if (row.twoInputs)
        Store(one.inputB, row.stride * element + sizeof real * lane,
              std::bit_cast<std::uint32_t>(real), sizeof real);
    }
  }
  return one;
}

// In how many lanes each of the faults is told from each other.
std::size_t Differences(const Experiment& experiment, const RowData& data,
                        std::span<const Fault> rivals) {
  std::size_t differences = 0;
  for (const Fault& fault : rivals) {
    const std::optional<RowData> expected = Expected(experiment, fault, data);
    if (!expected) continue;
    for (const Fault& other : rivals) {
      differences += static_cast<std::size_t>(
          std::ranges::count_if(expected->lanes, [&](const RowData::Lane& lane) {
            return lane.repetition == 0 &&
                   !Predict(other, *expected, lane.repetition, lane.element, lane.lane)
                        .Allows(expected->BitsAt(lane));
          }));
    }
  }
  return differences;
}

// Of some that are drawn, those on which the faults differ most.
std::vector<Experiment> On(const RowData& data, std::span<const Fault> rivals) {
  constexpr std::uint32_t drawn = 8;
  std::multimap<std::size_t, Experiment, std::greater<>> byDifferences;
  for (std::uint32_t number = 1; number <= drawn; ++number) {
    Experiment one = Drawn(data.row, number);
    const std::size_t differences = Differences(one, data, rivals);
    byDifferences.emplace(differences, std::move(one));
  }
  return {byDifferences.begin()->second};
}

}  // namespace

const ExperimentKind experiments::chosen_values = {
    "chosen-values", "The inputs hold values on which the suspects differ.", On};

}  // namespace diagnosis
