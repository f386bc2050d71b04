#include "diagnosis/views/as_json.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <string_view>
#include <utility>

#include "common/text/text.h"
#include "diagnosis/record/row_facts.h"

namespace diagnosis {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::string_view operations[] = {"add", "copy", "floor", "multiply", "power"};
constexpr std::string_view shapes[] = {"arrays",  "scalar",  "vector2", "vector3",
                                       "vector4", "vector8", "vector16"};
constexpr std::string_view elementTypes[] = {"int", "uint", "short", "ushort", "char", "uchar"};

std::string Whole(const char* list, Json items) {
  Json whole = {{"version", versionOfJson}};
  whole[list] = std::move(items);
  return whole.dump(2) + '\n';
}

Json TextsOf(const std::vector<std::string>& texts) {
  Json list = Json::array();
  for (const std::string& text : texts) list.push_back(text::Printable(text));
  return list;
}

// JSON has no NaN and no infinity: a float stands there with its bits.
Json FloatOf(float value) {
  Json json = {{"bits", std::bit_cast<std::uint32_t>(value)}};
  json["value"] = std::isfinite(value) ? Json(value) : Json(nullptr);
  return json;
}

Json JsonOfOpinion(const Opinion& opinion) {
  return {{"verdict", NameOf(opinion.verdict)},
          {"wrong lanes", opinion.wrong.size()},
          {"lanes", opinion.lanes},
          {"greatest ulps", opinion.greatestUlps}};
}

Json JsonOfLane(const ExplainedLane& lane) {
  Json json = {{"repetition", lane.lane.repetition},
               {"element", lane.lane.element},
               {"lane", lane.lane.lane},
               {"answer", FloatOf(lane.lane.answer)},
               {"right", FloatOf(lane.lane.right)}};
  json["ulps"] = lane.lane.ulps ? Json(*lane.lane.ulps) : Json(nullptr);
  json["stores into A"] = TextsOf(lane.storesA);
  json["stores into B"] = TextsOf(lane.storesB);
  json["reference"] = TextsOf(lane.reference);
  json["suite's rule"] = text::Printable(lane.suiteRule);
  json["OpenCL's rule"] = text::Printable(lane.openClRule);
  return json;
}

std::string_view NameOf(Comparison comparison) {
  switch (comparison) {
    case Comparison::same:
      return "same";
    case Comparison::otherwise:
      return "otherwise";
    case Comparison::oneOnly:
      return "in one run only";
    case Comparison::otherData:
      return "on other data";
    case Comparison::better:
      return "better";
    case Comparison::worse:
      break;
  }
  return "worse";
}

}  // namespace

std::string JsonOfRows(const std::vector<std::size_t>& selected) {
  Json list = Json::array();
  for (const std::size_t number : selected) {
    const RowFacts& own = FactsOfRows()[number];
    list.push_back({{"name", own.row.name},
                    {"operation", operations[static_cast<std::size_t>(own.row.operation)]},
                    {"shape", shapes[static_cast<std::size_t>(own.row.shape)]},
                    {"element type", elementTypes[static_cast<std::size_t>(own.row.elementType)]},
                    {"kernel", own.kernel},
                    {"bytes", own.row.stride},
                    {"draws before", own.drawsBefore},
                    {"draws per repetition", own.drawsPerRepetition},
                    {"repetitions", own.repetitions},
                    {"tolerance", own.tolerance},
                    {"scheduled", own.scheduled}});
  }
  return Whole("rows", std::move(list));
}

std::string JsonOf(const std::vector<Explanation>& explanations) {
  Json list = Json::array();
  for (const Explanation& one : explanations) {
    Json lanes = Json::array();
    for (const ExplainedLane& lane : one.first) lanes.push_back(JsonOfLane(lane));
    list.push_back({{"row", one.row},
                    {"status", text::Printable(one.status)},
                    {"category", TraitsOf(one.category).name},
                    {"opinion", JsonOfOpinion(one.opinion)},
                    {"first", std::move(lanes)},
                    {"others", TextsOf(one.others)},
                    {"suspects", TextsOf(one.suspects)},
                    {"experiments", TextsOf(one.experiments)},
                    {"notes", TextsOf(one.notes)}});
  }
  return Whole("explanations", std::move(list));
}

std::string JsonOf(const std::vector<NamedRun>& runs, const std::vector<ComparedRow>& compared) {
  Json list = Json::array();
  for (const ComparedRow& row : compared) {
    Json outcomes = Json::array();
    for (const auto& outcome : row.outcomes)
      outcomes.push_back(outcome ? Json(text::Printable(SummaryOf(*outcome))) : Json(nullptr));
    list.push_back({{"row", row.name},
                    {"comparison", NameOf(row.comparison)},
                    {"outcomes", std::move(outcomes)}});
  }
  Json names = Json::array();
  for (const NamedRun& run : runs)
    names.push_back({{"folder", text::Printable(run.name)},
                     {"device", text::Printable(run.run.info.device.name)},
                     {"driver", text::Printable(run.run.info.device.driverVersion)},
                     {"start", run.run.info.start}});
  Json whole = {{"version", versionOfJson}};
  whole["runs"] = std::move(names);
  whole["provenance"] = TextsOf(OtherProvenance(runs));
  whole["rows"] = std::move(list);
  return whole.dump(2) + '\n';
}

std::string JsonOf(const std::vector<Term>& terms) {
  Json list = Json::array();
  for (const Term& term : terms)
    list.push_back({{"name", term.name},
                    {"sentence", term.sentence},
                    {"cause", term.cause},
                    {"example", term.example},
                    {"place", term.place},
                    {"rows", term.rows}});
  return Whole("suspects", std::move(list));
}

}  // namespace diagnosis
