// Lanes that have the answers of others, or none.

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <bit>
#include <functional>

#include "diagnosis/localization/hypothesis.h"

namespace diagnosis {
namespace {

LaneMap MapOf(const Row& row, const std::function<int(int)>& source) {
  LaneMap map = ownLanes;
  for (int lane = 0; lane < row.lanes; ++lane)
    map[static_cast<std::size_t>(lane)] = static_cast<std::uint8_t>(source(lane));
  return map;
}

void AddOneForAll(Ways& ways) {
  for (int n = 0; n < ways.row.lanes && ways.row.lanes > 1; ++n)
    ways.AddLaneMap(MapOf(ways.row, [n](int) { return n; }), {.number = n});
}

/// A map of more than one lane from a function of the lane and of how many there are.
void AddMap(Ways& ways, Rank rank, int (*source)(int lane, int lanes)) {
  const int lanes = ways.row.lanes;
  if (lanes == 1) return;
  ways.AddLaneMap(MapOf(ways.row, [=](int lane) { return source(lane, lanes); }), {.rank = rank});
}

/// Likewise of halves or pairs.
void AddMapOfEven(Ways& ways, int (*source)(int lane, int lanes)) {
  if (ways.row.lanes % 2 == 0) AddMap(ways, Rank::general, source);
}

void AddShifts(Ways& ways) {
  const int lanes = ways.row.lanes;
  for (int on = 1; on < lanes; ++on) {
    const int least = 2 * on <= lanes ? on : on - lanes;
    ways.AddLaneMap(MapOf(ways.row, [on, lanes](int lane) { return (lane + on) % lanes; }),
                    {.detail = fmt::format("lane j that of j{:+}, around the end", least)});
  }
  for (int on = 1 - lanes; on < lanes; ++on) {
    if (on == 0) continue;
    const std::string detail = fmt::format("lane j that of j{:+}", on);
    const int real = sizeof(float);
    ways.Add({.a = {.place = {.offset = on * static_cast<int>(ways.row.width)}},
              .b = {.place = {.offset = on * real}}},
             {.detail = detail + ", read on beyond the lanes"});
    ways.Add({.result = {.offset = -on * real}},
             {.detail = detail + ", stored on beyond the lanes"});
  }
}

/// Any lane in the place of any: from the answers themselves.
void AddPermutation(Ways& ways) {
  const RowData& data = ways.data;
  const int lanes = ways.row.lanes;
  LaneMap map = ownLanes;
  for (int lane = 0; lane < lanes; ++lane) {
    const auto stands = [&](int source) {
      return std::ranges::all_of(data.lanes, [&](const RowData::Lane& one) {
        return one.lane != lane || data.RightAt(one.repetition, one.element, source)
                                       .Allow(std::bit_cast<float>(data.BitsAt(one)));
      });
    };
    int source = lane;
    for (int next = 0; !stands(source); ++next) {
      if (next == lanes) return;
      source = next;
    }
    map[static_cast<std::size_t>(lane)] = static_cast<std::uint8_t>(source);
  }
  if (map == ownLanes) return;
  const std::vector<int> sources(map.begin(), map.begin() + lanes);
  ways.Add({.lanes = map}, {.rank = Rank::fitted,
                            .detail = fmt::format("in this order: {}", fmt::join(sources, ", "))});
}

constexpr Hypothesis hypotheses[] = {
    {"lane-{n}-for-all",
     "Every lane has the answer of lane {n}.",
     AddOneForAll,
     {"One lane is computed and spread over the vector, or every lane reads one register.",
      "c.r = v\nc.r = v.s{n}{n}{n}{n}", "scalarization of vectors, splats, swizzles with one index",
      "*_arrays_* *_vector*"}},
    {"last-lane-for-all",
     "Every lane has the answer of the last one.",
     [](Ways& ways) { AddMap(ways, Rank::general, [](int, int lanes) { return lanes - 1; }); },
     {"One lane, the last of them, is spread over the vector: a loop over the lanes keeps the last "
      "value.",
      "c.r = v\nc.r = v.s3333", "scalarization of vectors, loops over lanes",
      "*_arrays_* *_vector*"}},
    {"lanes-reversed",
     "The lanes stand in the opposite order.",
     [](Ways& ways) {
       AddMap(ways, Rank::named, [](int lane, int lanes) { return lanes - 1 - lane; });
     },
     {"The lanes are numbered from the other end.", "c.r = v\nc.r = v.s3210",
      "the numbering of lanes in registers, a vector's byte order", "*_arrays_* *_vector*"}},
    {"lanes-shifted",
     "Each lane has the answer of one a few lanes on.",
     AddShifts,
     {"Every lane is taken from a neighbour: an offset of one too much, or a swizzle that is "
      "turned.",
      "c.r = v\nc.r = v.s1230", "swizzles, the offset of the first lane", "*_arrays_* *_vector*"}},
    {"lane-halves-exchanged",
     "The halves of the lanes are exchanged.",
     [](Ways& ways) {
       AddMapOfEven(ways, [](int lane, int lanes) { return (lane + lanes / 2) % lanes; });
     },
     {"A vector that is split into halves is put together in the other order.",
      "c.r = v\nc.r = (v.hi, v.lo)", "the splitting of wide vectors, concatenation of halves",
      "*_arrays_* *_vector[248]_* *_vector16_*"}},
    {"lane-pairs-exchanged",
     "Even and odd lanes are exchanged.",
     [](Ways& ways) { AddMapOfEven(ways, [](int lane, int) { return lane ^ 1; }); },
     {"Pairs of lanes are loaded or stored as one word in the other order.",
      "c.r = v\nc.r = v.s1032", "loads of two lanes at once, packing",
      "*_arrays_* *_vector[248]_* *_vector16_*"}},
    {"low-half-for-both",
     "The high half has the answers of the low one.",
     [](Ways& ways) { AddMapOfEven(ways, [](int lane, int lanes) { return lane % (lanes / 2); }); },
     {"A vector that is split into halves has its first half twice.", "c.r = v\nc.r = (v.lo, v.lo)",
      "the splitting of wide vectors, the offset of the second half",
      "*_arrays_* *_vector[248]_* *_vector16_*"}},
    {"high-half-for-both",
     "The low half has the answers of the high one.",
     [](Ways& ways) {
       AddMapOfEven(ways, [](int lane, int lanes) { return lane % (lanes / 2) + lanes / 2; });
     },
     {"A vector that is split into halves has its second half twice.",
      "c.r = v\nc.r = (v.hi, v.hi)", "the splitting of wide vectors, the offset of the first half",
      "*_arrays_* *_vector[248]_* *_vector16_*"}},
    {"lanes-permuted",
     "Lanes have the answers of other lanes.",
     AddPermutation,
     {"The lanes stand in an order that nobody would guess: a swizzle or a shuffle with wrong "
      "indices.",
      "c.r = v\nc.r = shuffle(v, m)", "shuffle masks, swizzles", "*_arrays_* *_vector*"}},
};

}  // namespace

constinit const std::span<const Hypothesis> hypothesesOnLanes = hypotheses;

}  // namespace diagnosis
