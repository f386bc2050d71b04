#include "diagnosis/record/listing.h"

#include <fmt/format.h>

#include <iterator>
#include <string_view>

#include "diagnosis/record/row_facts.h"
#include "harness/rows.h"

namespace diagnosis {

namespace {

constexpr std::string_view elementTypes[] = {"int", "uint", "short", "ushort", "char", "uchar"};

struct Parts {
  std::string_view operation;
  std::string_view shape;
  std::string_view elementType;
};

// A name is operation, "_union_", shape, "_" and the element type's number.
Parts PartsOf(std::string_view name) {
  constexpr std::string_view middle = "_union_";
  const std::size_t operation = name.find(middle);
  const std::size_t shape = operation + middle.size();
  const std::size_t number = name.size() - 1;
  return {name.substr(0, operation), name.substr(shape, number - 1 - shape),
          elementTypes[name[number] - '1']};
}

}  // namespace

std::string NamesOf(const std::vector<std::size_t>& selected) {
  std::string names;
  for (const std::size_t row : selected) names += std::string(rows[row].name) + "\n";
  return names;
}

std::string TableOf(const std::vector<std::size_t>& selected) {
  std::string table =
      fmt::format("{:<27} {:<9} {:<8} {:<7} {:<8} {:>5} {:>12} {:>16} {:>11} {:>9} {}\n", "row",
                  "operation", "shape", "element", "kernel", "bytes", "draws before",
                  "draws/repetition", "repetitions", "tolerance", "scheduled");
  for (const std::size_t row : selected) {
    const RowFacts& own = FactsOfRows()[row];
    const Parts parts = PartsOf(own.row.name);
    fmt::format_to(std::back_inserter(table),
                   "{:<27} {:<9} {:<8} {:<7} {:<8} {:>5} {:>12} {:>16} {:>11} {:>9} {}\n",
                   own.row.name, parts.operation, parts.shape, parts.elementType, own.kernel,
                   own.row.stride, own.drawsBefore, own.drawsPerRepetition, own.repetitions,
                   own.tolerance, own.scheduled ? "yes" : "no");
  }
  return table;
}

}  // namespace diagnosis
