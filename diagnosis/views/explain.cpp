#include "diagnosis/views/explain.h"

#include <fmt/format.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <iterator>
#include <optional>
#include <span>
#include <string_view>
#include <utility>

#include "common/text/text.h"
#include "diagnosis/record/row.h"
#include "diagnosis/record/row_facts.h"
#include "diagnosis/verdict/category.h"
#include "diagnosis/verdict/ledger.h"
#include "diagnosis/views/experiments_of_run.h"
#include "diagnosis/views/rules.h"

namespace diagnosis {

namespace {

constexpr std::string_view typeNames[] = {"int", "uint", "short", "ushort", "char", "uchar"};

std::uint32_t BitsOf(float x) { return std::bit_cast<std::uint32_t>(x); }

NamedValue ValueOf(std::string what, float x) {
  const bool isFinite = std::isfinite(x);
  const char* kind = std::isnan(x)   ? "NaN"
                     : !isFinite     ? "infinite"
                     : IsDenormal(x) ? "denormal"
                                     : "";
  return {std::move(what), fmt::format("0x{:08X}", BitsOf(x)), NumberOf(x),
          isFinite ? fmt::format("{:a}", static_cast<double>(x)) : "", kind};
}

NamedValue ValueOf(std::string what, const Row& row, std::int64_t x) {
  const std::uint64_t bits =
      static_cast<std::uint64_t>(x) & ((std::uint64_t{1} << 8 * row.width) - 1);
  return {std::move(what), fmt::format("0x{:0{}X}", bits, 2 * row.width), fmt::format("{}", x), "",
          ""};
}

/// The stores into one union of two members, in their order, and the last one into every byte.
struct Stores {
  std::vector<std::string> lines;
  std::vector<StoredByte> bytes;
};

Stores StoresInto(const Lane& place, const Bytes& input, std::string_view elementMember,
                  std::string_view floatMember) {
  const Row& row = place.row;
  Stores stores;
  for (const std::uint8_t byte : place.Of(input)) stores.bytes.push_back({byte, ""});
  const auto store = [&](std::string_view member, std::size_t width, int lane) {
    const std::string name = MemberName(row, member, lane);
    const std::size_t first = width * static_cast<std::size_t>(lane);
    stores.lines.push_back(width == 1
                               ? fmt::format("{} in byte {}", name, first)
                               : fmt::format("{} in {} to {}", name, first, first + width - 1));
    for (std::size_t n = 0; n < width; ++n) stores.bytes[first + n].store = name;
  };
  for (int fill = 0; fill < FactsOf(row.name)->fills; ++fill) {
    for (int lane = 0; lane < row.lanes; ++lane) {
      store(elementMember, row.width, lane);
      store(floatMember, sizeof(float), lane);
    }
  }
  return stores;
}

WrongLane WrongLaneAt(const Lane& place) {
  const float answer = place.Answer();
  const float right =
      RightAnswersOf(place.row, place.repetition, place.element, place.lane, place.mode)
          .NearestTo(answer);
  return {place.number, place.element, place.lane, answer, right, DistanceBetween(answer, right)};
}

ExplainedLane ExplainLane(const Lane& place) {
  const Row& row = place.row;
  const std::string_view type = typeNames[static_cast<std::size_t>(row.elementType)];
  ExplainedLane explained;
  explained.lane = WrongLaneAt(place);

  Stores stores = StoresInto(place, place.repetition.inputA, "a", "h");
  explained.storesA = std::move(stores.lines);
  explained.bytesA = std::move(stores.bytes);
  const auto as = [&](std::string_view member, std::string_view what) {
    return fmt::format("{} as {}", MemberName(row, member, place.lane), what);
  };
  explained.values.push_back(ValueOf(as("a", type), row, place.A()));
  explained.values.push_back(
      ValueOf(as("h", "float"), FloatLane(place.Of(place.repetition.inputA), place.lane)));
  if (row.twoInputs) {
    stores = StoresInto(place, place.repetition.inputB, "k", "b");
    explained.storesB = std::move(stores.lines);
    explained.bytesB = std::move(stores.bytes);
    explained.values.push_back(ValueOf(
        as("k", type), row, IntegerLane(row, place.Of(place.repetition.inputB), place.lane)));
    explained.values.push_back(ValueOf(as("b", "float"), place.B()));
  }
  if (row.operation == Operation::power)
    explained.values.push_back(ValueOf("exponent", static_cast<float>(place.Exponent())));
  explained.values.push_back(ValueOf("reference", ReferenceOf(place)));
  explained.values.push_back(ValueOf("right", explained.lane.right));
  explained.values.push_back(ValueOf("device", place.Answer()));
  explained.reference = StepsOf(place);
  explained.suiteRule = SuiteRuleOn(place);
  explained.openClRule = OpenClRuleOn(place);
  explained.isRight = RightAnswersOf(row, place.repetition, place.element, place.lane, place.mode)
                          .Allow(place.Answer());
  return explained;
}

/// The lanes to be told of: those that are wrong, or where none is, those that the suite rejects.
std::vector<Lane> LanesToExplain(const Row& row, const Record& record, const Device& device,
                                 const FloatMode& mode, const Opinion& opinion, Category category) {
  std::vector<Lane> lanes;
  for (const WrongLane& wrong : opinion.wrong) {
    const auto repetition = static_cast<std::size_t>(wrong.repetition) - 1;
    lanes.push_back({row, device, mode, record.repetitions[repetition], wrong.repetition,
                     wrong.element, wrong.lane});
  }
  if (category != Category::failedRight) return lanes;
  int number = 0;
  for (const Repetition& repetition : record.repetitions) {
    ++number;
    if (!IsSeen(row, repetition) || !FoundMismatch(repetition)) continue;
    for (int element = 0; element < elementsOfRow; ++element) {
      for (int lane = 0; lane < row.lanes; ++lane) {
        const Lane place{row, device, mode, repetition, number, element, lane};
        if (IsRejected(place)) lanes.push_back(place);
      }
    }
  }
  return lanes;
}

/// The lane whose values stand in the suite's line; none if it wrote none, or nobody knows them.
std::optional<Lane> LaneOfLine(const Row& row, const Record& record, const Device& device,
                               const FloatMode& mode) {
  const auto found = std::ranges::find_if(record.repetitions, FoundMismatch);
  if (found == record.repetitions.end() || !IsSeen(row, *found)) return std::nullopt;
  const int number = static_cast<int>(found - record.repetitions.begin()) + 1;
  for (int element = 0; element < elementsOfRow; ++element) {
    for (int lane = 0; lane < row.lanes; ++lane) {
      const Lane place{row, device, mode, *found, number, element, lane};
      if (IsRejected(place)) return place;
    }
  }
  return std::nullopt;
}

/// Whether they are the same lane of a record.
bool IsSame(const Lane& one, const Lane& other) {
  return one.number == other.number && one.element == other.element && one.lane == other.lane;
}

std::string OtherLane(const Lane& place, Category category) {
  const std::string where = WhereOf(place.number, place.element, place.lane);
  if (category == Category::failedRight) {
    return fmt::format("{}: {}, the reference {}", where, BitsAndNumber(place.Answer()),
                       BitsAndNumber(ReferenceOf(place)));
  }
  const WrongLane lane = WrongLaneAt(place);
  return fmt::format(
      "{}: {} in place of {}{}", where, BitsAndNumber(lane.answer), BitsAndNumber(lane.right),
      std::isnan(lane.answer) || std::isnan(lane.right) ? "" : ", " + DistanceOf(lane));
}

/// The lines of a text that anybody may have written, no more than `most` of them.
void AddLines(std::vector<std::string>& notes, std::string_view title, std::string_view text,
              std::size_t most = 40) {
  if (text.empty()) return;
  notes.push_back(fmt::format("{}:", title));
  std::size_t shown = 0;
  while (!text.empty()) {
    if (shown++ == most) {
      notes.emplace_back("  ...");
      return;
    }
    const std::string_view line = text.substr(0, text.find('\n'));
    notes.push_back("  " + text::PrintableLine(line));
    text.remove_prefix(std::min(line.size() + 1, text.size()));
  }
}

std::vector<std::string> NotesOn(const Record& record, Status status) {
  std::vector<std::string> notes;
  for (const FailedCall& call : record.failedCalls)
    notes.push_back(fmt::format("{} returned {}", call.name, call.code));
  if (status == Status::buildError) AddLines(notes, "The build log", record.buildLog);
  if (status != Status::pass && status != Status::fail) {
    AddLines(notes, "On standard error", record.err);
    AddLines(notes, "What the driver wrote", record.driver);
  }
  return notes;
}

}  // namespace

std::string DistanceOf(const WrongLane& lane) {
  if (std::isnan(lane.answer)) return "a NaN";
  if (std::isnan(lane.right)) return "not a NaN";
  if (!lane.ulps) return "the other sign";
  if (*lane.ulps == 0) return "a zero of the other sign";
  return text::Counted(*lane.ulps, "unit") + " in the last place off";
}

std::string WhereOf(int repetition, int element, int lane) {
  return fmt::format("repetition {}, element {}, lane {}", repetition, element, lane);
}

Explanation Explain(const Record& record, const Device& device, const Suspects& suspects) {
  Explanation explanation;
  const Status status = StatusOf(record);
  explanation.row = record.row;
  explanation.status = NameOf(status);
  if (const std::string detail = DetailOf(record); !detail.empty())
    explanation.status += ": " + detail;
  explanation.opinion = OpinionOf(record, device);
  explanation.category = CategoryOf(record, explanation.opinion);
  explanation.notes = NotesOn(record, status);

  if (const std::optional<Row> row = RowNamed(record.row)) {
    const FloatMode mode = ModeOf(device, record.buildOptions);
    const std::vector<Lane> lanes =
        LanesToExplain(*row, record, device, mode, explanation.opinion, explanation.category);
    const bool areWrong = explanation.category != Category::failedRight;
    const std::optional<Lane> named =
        status == Status::fail ? LaneOfLine(*row, record, device, mode) : std::nullopt;
    const auto begin = [&explanation](const Lane& place, const char* title) {
      explanation.first.push_back(ExplainLane(place));
      explanation.first.back().title = title;
    };
    if (named) begin(*named, "lane that the suite names");
    for (const Lane& place : lanes) {
      if (explanation.first.empty()) {
        begin(place, areWrong ? "first wrong lane" : "first lane that the suite rejects");
      } else if (!named || !IsSame(*named, place)) {
        explanation.others.push_back(OtherLane(place, explanation.category));
      }
    }
  }
  for (const NamedSuspect& suspect : suspects.Of(record.row))
    explanation.suspects.push_back(suspect.name + ": " + suspect.meaning);
  explanation.experiments = ExperimentsOn(record);
  return explanation;
}

}  // namespace diagnosis
