// Work-items that compute the element of another, or none, and stores that do not happen.

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <bit>
#include <functional>
#include <span>

#include "diagnosis/localization/hypothesis.h"

namespace diagnosis {
namespace {

constexpr std::size_t fewAnswers = 2;

ElementMap MapOf(const RowData& data, const std::function<int(int)>& source) {
  ElementMap map = ownElements;
  for (int element = 0; element < elementsOfRow; ++element) {
    const int from = source(element);
    map[static_cast<std::size_t>(element)] =
        static_cast<std::int16_t>(from >= 0 && from < data.items ? from : -1);
  }
  return map;
}

void AddShifts(Ways& ways) {
  const auto add = [&ways](int on, Rank rank) {
    ways.Add({.elements = MapOf(ways.data, [on](int element) { return element + on; })},
             {.rank = rank, .number = on});
    if (ways.row.twoInputs || ways.row.operation == Operation::power)
      ways.Add({.a = {.elementsOn = on}}, {.rank = rank, .number = on, .detail = "of A alone"});
    if (ways.row.twoInputs)
      ways.Add({.b = {.elementsOn = on}}, {.rank = rank, .number = on, .detail = "of B alone"});
  };
  for (int on = 1; on < elementsOfRow; ++on) {
    add(on, Rank::named);
    add(-on, Rank::named);
  }
  for (int on = elementsOfRow; on < ways.data.items; ++on) add(on, Rank::general);
}

/// The groups of lanes that may be unwritten: in each repetition of which it is known what stood in
/// the buffer, all of them keep it. If it is known of none, those with a wrong lane.
std::set<int> Unwritten(const RowData& data, int RowData::Lane::*group) {
  std::set<int> groups;
  std::set<int> others;
  bool anyBefore = false;
  for (std::size_t n = 0; n < data.lanes.size(); ++n) {
    const RowData::Lane& lane = data.lanes[n];
    const RowData::Seen& seen = data.repetitions[lane.repetition];
    if (n < data.wrongLanes) groups.insert(lane.*group);
    if (!seen.before) continue;
    anyBefore = true;
    const auto before =
        std::span(*seen.before).subspan(data.row.stride * static_cast<std::size_t>(lane.element));
    const auto bits = std::bit_cast<std::uint32_t>(FloatLane(before, lane.lane));
    if (bits != data.BitsAt(lane)) others.insert(lane.*group);
  }
  if (anyBefore) std::erase_if(groups, [&others](int one) { return others.contains(one); });
  return groups;
}

/// A buffer that nobody has written into is filled with one byte, or with this and that.
bool MayBeFresh(const Ways& ways) {
  return ways.wrongAnswers.size() > fewAnswers ||
         std::ranges::all_of(ways.wrongAnswers, [](std::uint32_t bits) {
           return bits == (bits & 0xFFU) * 0x01010101U;
         });
}

void AddUnwrittenElements(Ways& ways) {
  if (!MayBeFresh(ways)) return;
  const std::set<int> elements = Unwritten(ways.data, &RowData::Lane::element);
  if (elements.empty()) return;
  ways.Add(
      {.unwrittenElements = MaskOf(elements)},
      {.detail = elements.size() == elementsOfRow ? "all of them" : "these: " + ListOf(elements)});
}

void AddUnwrittenLanes(Ways& ways) {
  if (!MayBeFresh(ways)) return;
  const std::set<int> lanes = Unwritten(ways.data, &RowData::Lane::lane);
  if (lanes.empty() || std::ssize(lanes) >= ways.row.lanes) return;
  ways.Add({.unwrittenLanes = MaskOf(lanes)}, {.detail = "these: " + ListOf(lanes)});
}

/// The same bits in all wrong lanes, or zeros of either sign, written or found there. Of one lane
/// that is nothing to say.
void AddConstant(Ways& ways) {
  constexpr std::size_t fewLanes = 2;
  const RowData& data = ways.data;
  const bool isZero = std::ranges::all_of(
      ways.wrongAnswers, [](std::uint32_t bits) { return (bits & 0x7FFFFFFFU) == 0; });
  if (!isZero && (ways.wrongAnswers.size() != 1 || data.wrongLanes <= fewLanes)) return;
  const std::uint32_t bits = isZero ? 0 : *ways.wrongAnswers.begin();
  std::set<int> elements;
  std::set<int> lanes;
  for (std::size_t n = 0; n < data.wrongLanes; ++n) {
    elements.insert(data.lanes[n].element);
    lanes.insert(data.lanes[n].lane);
  }
  const auto add = [&](std::uint32_t inElements, std::uint32_t inLanes, std::string detail) {
    ways.Add({.change = Change::bits,
              .amount = bits,
              .changedElements = inElements,
              .changedLanes = inLanes},
             {.number = bits, .detail = std::move(detail)});
  };
  add(0, 0, "");
  if (elements.size() < elementsOfRow)
    add(MaskOf(elements), 0, "in these elements: " + ListOf(elements));
  if (std::ssize(lanes) < ways.row.lanes) add(0, MaskOf(lanes), "in these lanes: " + ListOf(lanes));
}

/// Any element in the place of any: from the answers themselves.
void AddPermutation(Ways& ways) {
  const RowData& data = ways.data;
  ElementMap map = ownElements;
  for (int element = 0; element < elementsOfRow; ++element) {
    const auto stands = [&](int source) {
      return std::ranges::all_of(data.lanes, [&](const RowData::Lane& one) {
        return one.element != element || data.RightAt(one.repetition, source, one.lane)
                                             .Allow(std::bit_cast<float>(data.BitsAt(one)));
      });
    };
    int source = element;
    for (int next = 0; !stands(source); ++next) {
      if (next == std::min(data.items, 4 * elementsOfRow)) return;
      source = next;
    }
    map[static_cast<std::size_t>(element)] = static_cast<std::int16_t>(source);
  }
  if (map == ownElements) return;
  ways.Add({.elements = map}, {.rank = Rank::fitted,
                               .detail = fmt::format("in this order: {}", fmt::join(map, ", "))});
}

constexpr Hypothesis hypotheses[] = {
    {"element-shifted-{n}",
     "Element i has the answer of element i{n:+}.",
     AddShifts,
     {"The index of an element is off: the work-item's number, the global offset or a pointer's "
      "start.",
      "c[tid] = f(a[tid])\nc[tid] = f(a[tid + {n}])",
      "get_global_id, the offset of the launch, the address of the buffer", "*"}},
    {"element-{n}-for-all",
     "Every element has the answer of element {n}.",
     [](Ways& ways) {
       for (int one = 0; one < elementsOfRow; ++one)
         ways.Add({.elements = MapOf(ways.data, [one](int) { return one; })},
                  {.rank = Rank::general, .number = one});
     },
     {"One work-item's value is taken for that of all: it is computed once for a whole group.",
      "c[tid] = f(a[tid])\nc[tid] = f(a[{n}])",
      "uniformity analysis, scalar registers for what differs", "*"}},
    {"elements-reversed",
     "The elements stand in the opposite order.",
     [](Ways& ways) {
       const auto reversed = [](int element) { return elementsOfRow - 1 - element; };
       ways.Add({.elements = MapOf(ways.data, reversed)}, {.rank = Rank::general});
     },
     {"The work-items are numbered from the other end.",
      "c[tid] = f(a[tid])\nc[tid] = f(a[9 - tid])",
      "get_global_id, the direction of the loop over work-items", "*"}},
    {"elements-unwritten",
     "Some elements are not written: they keep what stood in the buffer.",
     AddUnwrittenElements,
     {"Some work-items are not run, or their store is masked out.",
      "c[tid] = v for each tid\nnothing for some tid",
      "execution masks, rests of groups, the number of groups that are launched", "*"}},
    {"lanes-unwritten",
     "Some lanes are not written: they keep what stood in the buffer.",
     AddUnwrittenLanes,
     {"A wide store is split, and a part of it is lost.", "c.r = v\nc.r.lo = v.lo",
      "the splitting of wide stores, write masks", "*_arrays_* *_vector*"}},
    {"answers-0x{n:08X}",
     "The same bits are the answer whatever the inputs are.",
     AddConstant,
     {"The result does not depend on the inputs: a constant is stored, or nothing is, and this "
      "stood there.",
      "c.r = v\nc.r = as_float(0x{n:08X})",
      "constant folding of the whole kernel, poison and undefined values; a store that is lost",
      "*"}},
    {"answers-of-repetition-before",
     "The answers are those of the repetition before.",
     [](Ways& ways) {
       if (ways.data.repetitions.size() < 2) return;
       ways.Add({.repetitionsBefore = 1}, {.rank = Rank::general});
     },
     {"The host reads the result before the kernel has written it.",
      "kernel, then read\nread, then kernel",
      "events and barriers between commands, caches that are not flushed", "*"}},
    {"a-of-repetition-before",
     "A is read as it was in the repetition before.",
     [](Ways& ways) {
       if (ways.data.repetitions.size() < 2) return;
       ways.Add({.a = {.repetitionsBefore = 1}}, {.rank = Rank::general});
     },
     {"The kernel runs before A's new contents have arrived.",
      "write A, then kernel\nkernel, then write A",
      "events between commands, caches that are not invalidated", "*"}},
    {"b-of-repetition-before",
     "B is read as it was in the repetition before.",
     [](Ways& ways) {
       if (ways.data.repetitions.size() < 2 || !ways.row.twoInputs) return;
       ways.Add({.b = {.repetitionsBefore = 1}}, {.rank = Rank::general});
     },
     {"The kernel runs before B's new contents have arrived.",
      "write B, then kernel\nkernel, then write B",
      "events between commands, caches that are not invalidated", "add_* multiply_*"}},
    {"elements-permuted",
     "Elements have the answers of other elements.",
     AddPermutation,
     {"Work-items have each other's elements, in an order that nobody would guess.",
      "c[tid] = f(a[tid])\nc[tid] = f(a[p(tid)])",
      "the mapping of work-items to lanes of the hardware", "*"}},
};

}  // namespace

constinit const std::span<const Hypothesis> hypothesesOnElements = hypotheses;

}  // namespace diagnosis
