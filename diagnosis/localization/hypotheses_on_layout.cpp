// Members, elements and lanes that lie elsewhere.

#include <fmt/format.h>

#include <algorithm>

#include "diagnosis/localization/hypothesis.h"

namespace diagnosis {
namespace {

constexpr int real = sizeof(float);

/// Where another structure than a union would have the members.
struct Layout {
  explicit Layout(const Row& row)
      : stride(static_cast<int>(row.stride)),
        element(static_cast<int>(row.width)),
        isVector(row.shape != Shape::arrays && row.shape != Shape::scalar),
        slots(row.lanes == 3 ? 4 : row.lanes) {
    // Aligned, packed, or where a vector of three has three places only.
    behindElement = {Aligned(slots * element, real), slots * element, row.lanes * element};
    behindFloat = {Aligned(slots * real, element), slots * real, row.lanes * real};
  }

  int Aligned(int size, int width) const {
    return RoundedUp(size, isVector ? slots * width : width);
  }
  /// The size of a structure whose last member ends there.
  int Grown(int end) const { return RoundedUp(end, std::max(32, isVector ? slots * real : real)); }
  static int RoundedUp(int size, int alignment) {
    return (size + alignment - 1) / alignment * alignment;
  }

  int stride;
  int element;
  bool isVector;
  int slots;
  std::set<int> behindElement;
  std::set<int> behindFloat;
};

/// A member at each other byte; `set` puts it there. Behind the other member is where a structure
/// has it.
void AddPlaces(Ways& ways, int width, const std::set<int> Layout::*behind,
               void (*set)(Fault& fault, const Place& place)) {
  const Layout layout(ways.row);
  const auto add = [&](int at, int stride, Rank rank, std::string detail) {
    Fault fault;
    set(fault, {.offset = at, .stride = stride});
    ways.Add(fault, {.rank = rank, .number = at, .detail = std::move(detail)});
  };
  for (const int at : layout.*behind) {
    if (at > layout.stride) continue;
    add(at, 0, Rank::named, "");
    const int grown = layout.Grown(at + layout.slots * width);
    if (grown > layout.stride)
      add(at, grown, Rank::named, fmt::format("elements {} apart", BytesOf(grown)));
  }
  for (int at = 1; at < layout.stride; ++at) {
    if (!(layout.*behind).contains(at)) add(at, 0, Rank::general, "");
  }
}

void AddStructs(Ways& ways) {
  const Layout layout(ways.row);
  for (const int at : layout.behindElement) {
    const int size = layout.Grown(at + layout.slots * real);
    const int stride = size > layout.stride ? size : 0;
    const Place place{.offset = at, .stride = stride};
    ways.Add({.a = {.place = {.stride = stride}}, .b = {.place = place}, .result = place},
             {.rank = Rank::general});
  }
}

/// Elements closer together or farther apart, in the buffers that are told.
template <bool a, bool b, bool result>
void AddStrides(Ways& ways) {
  const Row& row = ways.row;
  if (b && !result && !row.twoInputs) return;
  const Layout layout(row);
  std::set<int> likely = {4, 8, 12, 16, 32, 64, 128};
  for (const int lanes : {layout.slots, row.lanes}) {
    likely.insert(lanes * layout.element);
    likely.insert(lanes * real);
  }
  std::set<int> possible;
  for (int stride = 1; stride <= 256; stride += stride < 16 ? 1 : 4) {
    if (!likely.contains(stride)) possible.insert(stride);
  }
  const auto add = [&](int stride, Rank rank) {
    if (stride == layout.stride) return;
    ways.Add({.a = {.place = {.stride = a ? stride : 0}},
              .b = {.place = {.stride = b ? stride : 0}},
              .result = {.stride = result ? stride : 0}},
             {.rank = rank, .number = stride});
  };
  for (const int stride : likely) add(stride, Rank::named);
  for (const int stride : possible) add(stride, Rank::general);
}

/// Lanes closer together or farther apart; `set` sets the step of those that lie `own` apart.
void AddSteps(Ways& ways, std::size_t own, void (*set)(Fault& fault, int step)) {
  for (const int step : {1, 2, 4, 8, 16}) {
    if (step == static_cast<int>(own)) continue;
    Fault fault;
    set(fault, step);
    ways.Add(fault, {.rank = Rank::general, .number = step});
  }
}

constexpr Hypothesis hypotheses[] = {
    {"b-at-{n}",
     "The float member of B lies at byte {n} in place of 0.",
     [](Ways& ways) {
       if (!ways.row.twoInputs) return;
       AddPlaces(ways, real, &Layout::behindElement,
                 [](Fault& fault, const Place& place) { fault.b.place = place; });
     },
     {"The member is placed behind the other one, as in a structure, or behind some padding.",
      "b[tid].b at byte 0 of the union\nb[tid].b at byte {n}",
      "the layout of unions: every member has the offset 0", "add_* multiply_*"}},
    {"result-at-{n}",
     "The float member of the result lies at byte {n} in place of 0.",
     [](Ways& ways) {
       AddPlaces(ways, real, &Layout::behindElement,
                 [](Fault& fault, const Place& place) { fault.result = place; });
     },
     {"The member is placed behind the other one, as in a structure, or behind some padding.",
      "c[tid].r at byte 0 of the union\nc[tid].r at byte {n}",
      "the layout of unions: every member has the offset 0", "*"}},
    {"a-at-{n}",
     "The integer member of A lies at byte {n} in place of 0.",
     [](Ways& ways) {
       AddPlaces(ways, static_cast<int>(ways.row.width), &Layout::behindFloat,
                 [](Fault& fault, const Place& place) { fault.a.place = place; });
     },
     {"The member is placed behind the other one, as in a structure, or behind some padding.",
      "a[tid].a at byte 0 of the union\na[tid].a at byte {n}",
      "the layout of unions: every member has the offset 0", "*"}},
    {"union-as-struct",
     "In every union the members lie one behind the other, as in a struct.",
     AddStructs,
     {"The members of every union lie one behind the other.",
      "union {{ int a; float h; }}\nstruct {{ int a; float h; }}",
      "the layout of unions, the type that is made of them in the intermediate language", "*"}},
    {"stride-{n}-of-a",
     "The elements of a lie {n} byte{s} apart.",
     AddStrides<true, false, false>,
     {"The size of the union is wrong where A is read: its alignment is not seen, or rounded to "
      "another boundary.",
      "sizeof(union InputA) is a multiple of 32\n{n} bytes in its place",
      "attribute aligned on a union, the size of the type that stands for it", "*"}},
    {"stride-{n}-of-result",
     "The elements of result lie {n} byte{s} apart.",
     AddStrides<false, false, true>,
     {"The size of the union is wrong where the result is stored: its alignment is not seen, or "
      "rounded to another boundary.",
      "sizeof(union InputA) is a multiple of 32\n{n} bytes in its place",
      "attribute aligned on a union, the size of the type that stands for it", "*"}},
    {"stride-{n}",
     "The elements of all buffers lie {n} byte{s} apart.",
     AddStrides<true, true, true>,
     {"The size of the union is wrong in all buffers alike: its alignment is not seen, or rounded "
      "to another boundary.",
      "sizeof(union InputA) is a multiple of 32\n{n} bytes in its place",
      "attribute aligned on a union, the size of the type that stands for it",
      "power_union_scalar_* power_union_vector*"}},
    {"stride-{n}-of-b",
     "The elements of b lie {n} byte{s} apart.",
     AddStrides<false, true, false>,
     {"The size of the union is wrong where B is read: its alignment is not seen, or rounded to "
      "another boundary.",
      "sizeof(union InputA) is a multiple of 32\n{n} bytes in its place",
      "attribute aligned on a union, the size of the type that stands for it", "add_* multiply_*"}},
    {"stride-{n}-of-inputs",
     "The elements of inputs lie {n} byte{s} apart.",
     AddStrides<true, true, false>,
     {"The size of the union is wrong where the inputs are read: its alignment is not seen, or "
      "rounded to another boundary.",
      "sizeof(union InputA) is a multiple of 32\n{n} bytes in its place",
      "attribute aligned on a union, the size of the type that stands for it", "*"}},
    {"lane-stride-{n}-of-a",
     "The lanes of A lie {n} byte{s} apart.",
     [](Ways& ways) {
       AddSteps(ways, ways.row.width, [](Fault& fault, int step) { fault.a.place.step = step; });
     },
     {"The lanes are loaded or stored with the step of another type.",
      "lane j at byte j * size of its type\nlane j at byte {n} * j",
      "the size of an element where a vector or an array is taken apart", "*_arrays_* *_vector*"}},
    {"lane-stride-{n}-of-result",
     "The lanes of the result lie {n} byte{s} apart.",
     [](Ways& ways) {
       AddSteps(ways, real, [](Fault& fault, int step) { fault.result.step = step; });
     },
     {"The lanes are loaded or stored with the step of another type.",
      "lane j at byte j * size of its type\nlane j at byte {n} * j",
      "the size of an element where a vector or an array is taken apart", "*_arrays_* *_vector*"}},
    {"lane-stride-{n}-of-b",
     "The lanes of B lie {n} byte{s} apart.",
     [](Ways& ways) {
       if (!ways.row.twoInputs) return;
       AddSteps(ways, real, [](Fault& fault, int step) { fault.b.place.step = step; });
     },
     {"The lanes are loaded or stored with the step of another type.",
      "lane j at byte j * size of its type\nlane j at byte {n} * j",
      "the size of an element where a vector or an array is taken apart",
      "add_union_arrays_* add_union_vector* multiply_union_arrays_* multiply_union_vector*"}},
};

}  // namespace

constinit const std::span<const Hypothesis> hypothesesOnLayout = hypotheses;

}  // namespace diagnosis
