#include "diagnosis/record/row_facts.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "harness/rows.h"
#include "kernels/kernel_text.h"
#include "power/power_case.h"

namespace diagnosis {
namespace {

// By operation.
struct OperationFacts {
  std::string_view kernel;
  std::uint32_t tolerance;
};
constexpr OperationFacts operations[] = {
    {"sum", 2},       // add
    {"copy", 0},      //
    {"_floor", 0},    //
    {"multiply", 2},  //
    {"power", 0},     // each row has its own, below
};

// The power rows' tolerances, by shape and element type.
constexpr std::uint32_t powerTolerances[][6] = {
    // int, uint, short, ushort, char, uchar
    {128, 128, 128, 128, 256, 128},  // arrays
    {128, 128, 256, 128, 128, 128},  // scalar
    {128, 128, 256, 512, 256, 256},  // vector2
    {128, 128, 128, 512, 128, 128},  // vector3
    {128, 128, 256, 256, 256, 128},  // vector4
    {128, 128, 256, 256, 128, 128},  // vector8
    {128, 128, 256, 256, 256, 128},  // vector16
};

// Rows repeat themselves ten times and write a RUN line each time, but for these.
struct Repeats {
  std::string_view row;
  int repetitions;
  int runLines;
};
constexpr Repeats usualRepeats = {"", 10, 10};
constexpr Repeats otherRepeats[] = {
    {"copy_union_scalar_1", 1, 10}, {"copy_union_scalar_3", 1, 10}, {"copy_union_scalar_4", 1, 10},
    {"copy_union_scalar_5", 1, 10}, {"copy_union_scalar_6", 1, 10}, {"power_union_vector3_4", 9, 9},
};

RowFacts FactsFor(Row row) {
  const auto operation = static_cast<std::size_t>(row.operation);
  const bool isPower = row.operation == Operation::power;
  const auto* const other = std::ranges::find(otherRepeats, row.name, &Repeats::row);
  const Repeats& repeats = other == std::end(otherRepeats) ? usualRepeats : *other;

  RowFacts facts;
  facts.kernel = operations[operation].kernel;
  facts.tolerance = isPower ? powerTolerances[static_cast<std::size_t>(row.shape)]
                                             [static_cast<std::size_t>(row.elementType)]
                            : operations[operation].tolerance;
  facts.fills = isPower && row.shape == Shape::scalar ? 4 : 1;
  facts.repetitions = repeats.repetitions;
  facts.runLines = repeats.runLines;
  facts.drawsPerRepetition =
      static_cast<std::size_t>(elementsOfRow * row.lanes * facts.fills) * (row.twoInputs ? 4 : 2);
  facts.row = std::move(row);
  return facts;
}

}  // namespace

const std::vector<RowFacts>& FactsOfRows() {
  static const auto table = [] {
    std::vector<RowFacts> facts;
    facts.reserve(std::size(rows));
    std::size_t draws = 0;
    for (const NamedRunner& row : rows) {
      RowFacts& own = facts.emplace_back(FactsFor(RowNamed(row.name).value()));
      own.scheduled = facts.size() <= schedule.size();
      own.drawsBefore = draws;
      draws += own.drawsPerRepetition * static_cast<std::size_t>(own.repetitions);
    }
    return facts;
  }();
  return table;
}

const RowFacts* FactsOf(std::string_view name) {
  const auto found =
      std::ranges::find(FactsOfRows(), name,
                        [](const RowFacts& facts) -> std::string_view { return facts.row.name; });
  return found == FactsOfRows().end() ? nullptr : &*found;
}

std::string KernelTextOf(const Row& row) {
  kernel_text::Room text = kernel_text::blanks;
  kernel_text::Writer writer({row.operation, row.shape, row.elementType}, text);
  for (const kernel_text::Line& line : kernel_text::lines) writer.Write(line);
  writer.End();
  return text.data();
}

float SuitesPower(float base, int exponent) { return PowerReference(base, exponent); }

}  // namespace diagnosis
