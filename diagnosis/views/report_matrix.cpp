#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <map>
#include <optional>
#include <utility>

#include "common/page/charts.h"
#include "diagnosis/record/row_facts.h"
#include "diagnosis/views/report_parts.h"

namespace diagnosis {

namespace {

constexpr std::string_view operations[] = {"add", "copy", "floor", "multiply", "power"};
// In the order of the page's lines.
constexpr Shape shapes[] = {Shape::scalar,  Shape::arrays,  Shape::vector2, Shape::vector3,
                            Shape::vector4, Shape::vector8, Shape::vector16};
constexpr page::Heading shapeNames[] = {{"scalar", "scalar"},         {"array", "array of four"},
                                        {"vector 2", "vector of 2"},  {"vector 3", "vector of 3"},
                                        {"vector 4", "vector of 4"},  {"vector 8", "vector of 8"},
                                        {"vector 16", "vector of 16"}};
constexpr std::string_view elementNames[] = {"int", "uint", "short", "ushort", "char", "uchar"};

constexpr std::size_t Index(auto enumerator) { return static_cast<std::size_t>(enumerator); }

std::uint64_t ToleranceOf(std::string_view row) {
  const RowFacts* const facts = FactsOf(row);
  return facts == nullptr ? 0 : facts->tolerance;
}

using Place = std::pair<Shape, std::size_t>;  // and element type
using Cells = std::map<Place, const RowResult*>;

std::map<std::string_view, Cells> ByOperation(const std::vector<RowResult>& results) {
  std::map<std::string_view, Cells> cells;
  for (const RowResult& outcome : results) {
    const std::optional<Row> row = RowNamed(outcome.record->row);
    if (!row) continue;
    cells[operations[Index(row->operation)]][{row->shape, Index(row->elementType)}] = &outcome;
  }
  return cells;
}

// A table of shapes by element types for each operation, its cells filled by `fill(cell, outcome)`.
void AddTables(pugi::xml_node section, const std::vector<RowResult>& results, std::string_view what,
               std::string_view (*note)(std::string_view), auto fill) {
  const pugi::xml_node tables = AddClassed(section, "div", "tables");
  for (const auto& [operation, cells] : ByOperation(results)) {
    page::AddGrid(
        tables,
        {operation, fmt::format("{} by shape and element type", what), note(operation), "shape",
         elementNames, shapeNames},
        [&fill, &cells = cells](pugi::xml_node cell, std::size_t line, std::size_t column) {
          const auto at = cells.find({shapes[line], column});
          if (at == cells.end()) return page::MakeBlank(cell, "not selected");
          fill(cell, *at->second);
        });
  }
}

// Where what stands in a cell goes: the way to the row's section, if it has one.
pugi::xml_node Inside(pugi::xml_node cell, const RowResult& outcome) {
  if (!HasArticle(outcome)) return Add(cell, "span");
  return page::AddLink(cell, IdOfRow(outcome.record->row));
}

void FillKind(pugi::xml_node cell, const RowResult& outcome) {
  const page::Mark mark = MarkOf(outcome.category);
  Set(cell, "class", mark.style);
  const pugi::xml_node inside = Set(Inside(cell, outcome), "title", outcome.record->row);
  page::AddSign(inside, mark);
  if (const std::size_t wrong = outcome.opinion.wrong.size(); wrong > 0)
    Set(AddClassed(inside, "span", "lanes", fmt::format("{}", wrong)), "aria-hidden", "true");
  AddClassed(inside, "span", "hidden", SummaryOf(outcome));
}

constexpr page::Shade shades[] = {
    {"exact", "", "0", "the right answer in every lane"},
    {"near", "", "5", "within what OpenCL allows"},
    {"far", "", "12", "within it, but more than half of it"},
    {"beyond", "!", "90", "more than OpenCL allows, not more than the suite does"},
    {"outside", "\u2717", "2.1e9", "more than either allows"},
};

void FillDistance(pugi::xml_node cell, const RowResult& outcome) {
  const pugi::xml_node inside = Set(Inside(cell, outcome), "title", outcome.record->row);
  const Opinion& opinion = outcome.opinion;
  if (opinion.verdict == Opinion::Verdict::unseen) {
    Set(cell, "class", "blank");
    Add(inside, "span", "\u2013");
    AddClassed(inside, "span", "hidden", "no result to judge");
    return;
  }
  const std::optional<Row> row = RowNamed(outcome.record->row);
  const std::uint64_t allowed = row->operation == Operation::power ? ulpsOfPower : 0;
  const bool noNumber =
      std::ranges::any_of(opinion.wrong, [](const WrongLane& lane) { return !lane.ulps; });
  const std::uint64_t ulps = opinion.greatestUlps;
  std::size_t shade = 0;
  if (noNumber || ulps > ToleranceOf(row->name)) {
    shade = 4;
  } else if (!opinion.wrong.empty()) {
    shade = 3;
  } else if (ulps > 0) {
    shade = 2 * ulps > allowed ? 2 : 1;
  }
  Set(cell, "class", shades[shade].style);
  if (!shades[shade].sign.empty()) Add(inside, "span", shades[shade].sign);
  const bool noNaN = std::ranges::none_of(opinion.wrong, [](const WrongLane& lane) {
    return std::isnan(lane.answer) || std::isnan(lane.right);
  });
  Add(inside, "span", !noNumber ? page::ShortNumber(ulps) : noNaN ? "sign" : "NaN");
}

std::string_view NoNote(std::string_view) { return ""; }

std::string_view Allowed(std::string_view operation) {
  if (operation == "power") return "OpenCL allows 16, the suite 128 to 512";
  if (operation == "add" || operation == "multiply") return "OpenCL allows 0, the suite 2";
  return "both allow 0";
}

void AddMatrix(page::Page&, pugi::xml_node section, const Analysis& analysis) {
  AddClassed(
      section, "p", "lead",
      "Of a cell\u2019s two signs the first is the suite\u2019s verdict, the second "
      "OpenCL\u2019s; the number below counts the wrong lanes of the row\u2019s repetitions.");
  AddTables(section, analysis.rows, "verdicts", NoNote, FillKind);
}

void AddDistances(page::Page&, pugi::xml_node section, const Analysis& analysis) {
  AddClassed(section, "p", "lead",
             "The greatest distance of any lane from an answer that is right, in units in the last "
             "place.");
  page::AddShades(section, shades);
  AddTables(section, analysis.rows, "greatest distances", Allowed, FillDistance);
}

}  // namespace

const Section sections::matrix = {"matrix", "The matrix", false, AddMatrix};
const Section sections::distances = {"distances", "Distance from the right answer", false,
                                     AddDistances};

}  // namespace diagnosis
