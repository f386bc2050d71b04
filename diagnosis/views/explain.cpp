#include "diagnosis/views/explain.h"

#include <CL/cl.h>
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
#include "diagnosis/judgement/arithmetic.h"
#include "diagnosis/record/row.h"
#include "diagnosis/record/row_facts.h"
#include "diagnosis/verdict/category.h"
#include "diagnosis/verdict/ledger.h"
#include "harness/host_floating_point.h"
#include "harness/ulp.h"

namespace diagnosis {

namespace {

constexpr std::string_view typeNames[] = {"int", "uint", "short", "ushort", "char", "uchar"};

std::string Counted(std::uint64_t count, std::string_view what) {
  return fmt::format("{} {}{}", count, what, count == 1 ? "" : "s");
}

std::uint32_t BitsOf(float x) { return std::bit_cast<std::uint32_t>(x); }

std::string NumberOf(float x) {
  if (std::isnan(x)) return "NaN";
  if (std::isinf(x)) return x < 0 ? "-infinity" : "infinity";
  constexpr float wholeInFull = 0x1p53F;
  if (x == std::trunc(x) && std::fabs(x) < wholeInFull)
    return fmt::format("{:.0f}", static_cast<double>(x));
  return fmt::format("{}", x);
}

/// "0x3F800000 (1)", with the kind of a number that is a special one.
std::string BitsAndNumber(float x) {
  return fmt::format("0x{:08X} ({}{})", BitsOf(x), NumberOf(x), IsDenormal(x) ? ", denormal" : "");
}

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

std::string WordsOf(Rounding rounding) {
  return rounding == Rounding::toNearest ? "to nearest" : "toward zero";
}

/// "a[2]", or "a" where there is one lane only.
std::string LaneOf(const Row& row, std::string_view member, int lane) {
  return row.shape == Shape::scalar ? std::string(member) : fmt::format("{}[{}]", member, lane);
}

/// One lane of a record, with all that belongs to it.
struct LanePlace {
  const Row& row;
  const Device& device;
  const FloatMode& mode;  // of the device under the row's build options
  const Repetition& repetition;
  int number;  // of the repetition, from 1
  int element;
  int lane;

  std::span<const std::uint8_t> Of(const Bytes& bytes) const {
    return std::span(bytes).subspan(row.stride * static_cast<std::size_t>(element), row.stride);
  }
  std::int64_t A() const { return IntegerLane(row, Of(repetition.inputA), lane); }
  float B() const { return FloatLane(Of(repetition.inputB), lane); }
  float Answer() const { return FloatLane(Of(repetition.result), lane); }
  int Exponent() const { return ExponentOf(row, element, lane); }
  LanePlace At(int otherElement, int otherLane) const {
    return {row, device, mode, repetition, number, otherElement, otherLane};
  }
};

/// The mode that the suite puts the host in for the device.
Rounding HostModeOf(const Device& device) {
  const bool toNearest = (device.singleFpConfig & CL_FP_ROUND_TO_NEAREST) != 0;
  return toNearest ? Rounding::toNearest : Rounding::towardZero;
}

/// The float operand as the row's reference takes it.
float OperandB(const LanePlace& place) {
  return place.row.shape == Shape::scalar ? Unflushed(place.B()) : FlushDenormal(place.B());
}

/// What the suite holds the answer against.
float ReferenceOf(const LanePlace& place) {
  const Rounding rounding = HostModeOf(place.device);
  const float a = Converted(place.A(), rounding);
  switch (place.row.operation) {
    case Operation::add:
      return Sum(a, OperandB(place), rounding);
    case Operation::multiply:
      return Product(a, OperandB(place), rounding);
    case Operation::power: {
      const HostRounding host(rounding);
      return SuitesPower(a, place.Exponent());
    }
    default:
      return a;
  }
}

std::vector<std::string> StepsOf(const LanePlace& place) {
  const Row& row = place.row;
  const Rounding rounding = HostModeOf(place.device);
  const std::string words = WordsOf(rounding);
  const float a = Converted(place.A(), rounding);
  const bool isExact = static_cast<std::int64_t>(a) == place.A();
  std::vector<std::string> steps = {
      fmt::format("{} converted to float, {}: {}", LaneOf(row, "a", place.lane),
                  isExact ? "exactly" : "rounded " + words, BitsAndNumber(a))};
  if (row.twoInputs) {
    const std::string b = LaneOf(row, "b", place.lane);
    if (IsDenormal(place.B())) {
      steps.push_back(BitsOf(OperandB(place)) == BitsOf(place.B())
                          ? fmt::format("{} is denormal, and this row's reference keeps it", b)
                          : fmt::format("{} is denormal, and the reference takes it as zero", b));
    }
  }
  const std::string reference = BitsAndNumber(ReferenceOf(place));
  switch (row.operation) {
    case Operation::add:
      steps.push_back(fmt::format("their sum, rounded {}: {}", words, reference));
      break;
    case Operation::multiply:
      steps.push_back(fmt::format("their product, rounded {}: {}", words, reference));
      break;
    case Operation::power:
      steps.push_back(fmt::format("to the power of {} by the host's powf, which rounds {}: {}",
                                  place.Exponent(), words, reference));
      break;
    case Operation::floor:
      steps.emplace_back("no floor: a whole number has nothing to round away");
      break;
    case Operation::copy:
      break;
  }
  return steps;
}

bool ComparesAnyLane(const Row& row) {
  return (row.operation == Operation::copy || row.operation == Operation::floor) &&
         row.shape != Shape::arrays && row.shape != Shape::scalar;
}

/// What the suite's rule makes of a lane, if it looks at it.
struct Ruling {
  bool rejects;
  std::string words;
};

Ruling RuleOn(const LanePlace& place) {
  const Row& row = place.row;
  const float c = ReferenceOf(place);
  const float d = place.Answer();
  if (ComparesAnyLane(row)) {
    for (int lane = 0; lane < row.lanes; ++lane) {
      const LanePlace other = place.At(place.element, lane);
      if (other.Answer() == ReferenceOf(other))
        return {false, fmt::format("lane {} of the element is equal to its reference, and one such "
                                   "lane is enough",
                                   lane)};
    }
    return {true, "no lane of the element is equal to its reference"};
  }
  if (!row.twoInputs && row.operation != Operation::power) {
    if (c == d) return {false, "the answer is equal to the reference"};
    return {true, "the answer is not equal to the reference"};
  }
  if (!std::isfinite(c)) return {false, "where the reference is not finite, any answer passes"};
  const std::uint32_t tolerance = FactsOf(row.name)->tolerance;
  if (row.operation == Operation::power && !std::isfinite(d))
    return {false, "an answer that is not finite passes"};
  if (std::isnan(d)) return {false, "a NaN lies within any bounds"};
  const std::string units = Counted(UlpsBetween(std::fabs(c), std::fabs(d)), "unit");
  if (WithinUlps(c, d, tolerance))
    return {false, fmt::format("{} in the last place from the reference in magnitude, and {} pass; "
                               "signs are not compared",
                               units, tolerance)};
  return {true, fmt::format("{} in the last place from the reference in magnitude, where {} pass",
                            units, tolerance)};
}

/// The first lane that the rule rejects. The suite's check ends there.
std::optional<LanePlace> FirstRejected(const LanePlace& place) {
  for (int element = 0; element < elementsOfRow; ++element) {
    for (int lane = 0; lane < place.row.lanes; ++lane) {
      const LanePlace at = place.At(element, lane);
      if (RuleOn(at).rejects) return at;
    }
  }
  return std::nullopt;
}

std::string SuiteRuleOn(const LanePlace& place) {
  const Ruling ruling = RuleOn(place);
  if (FoundMismatch(place.repetition)) {
    const std::optional<LanePlace> first = FirstRejected(place);
    const auto order = [](const LanePlace& one) { return one.element * one.row.lanes + one.lane; };
    if (first && order(*first) < order(place) &&
        !(ComparesAnyLane(place.row) && first->element == place.element)) {
      return fmt::format(
          "not looked at: the check ended at element {}, lane {} ({} all the same: {})",
          first->element, first->lane, ruling.rejects ? "rejected" : "passed", ruling.words);
    }
  } else if (ruling.rejects) {
    return "not looked at: the row leaves this element out (else rejected: " + ruling.words + ")";
  }
  return (ruling.rejects ? "rejected: " : "passed: ") + ruling.words;
}

std::string OpenClRuleOn(const LanePlace& place) {
  const FloatMode& mode = place.mode;
  const Row& row = place.row;
  const RightAnswers answers =
      RightAnswersOf(row, place.repetition, place.element, place.lane, mode);
  std::vector<std::string> allowed;
  bool isDenormal = row.twoInputs && IsDenormal(place.B());
  bool isSpan = false;
  for (const RightAnswer& answer : answers.Floats()) {
    isDenormal = isDenormal || IsDenormal(answer.value);
    if (answer.first == answer.last) {
      allowed.push_back(BitsAndNumber(answer.value));
    } else {
      isSpan = true;
      allowed.push_back(fmt::format("{} to {}", BitsAndNumber(FloatAt(answer.first)),
                                    BitsAndNumber(FloatAt(answer.last))));
    }
  }
  if (answers.HaveAnyNan()) allowed.emplace_back("any NaN");
  std::string text =
      fmt::format("{}: {} {} right", answers.Allow(place.Answer()) ? "right" : "wrong",
                  fmt::join(allowed, ", "), allowed.size() == 1 && !isSpan ? "is" : "are");
  switch (row.operation) {
    case Operation::copy:
    case Operation::floor:
      if (mode.unsafeMath) break;
      text += fmt::format("; a conversion is correctly rounded, here {}", WordsOf(mode.conversion));
      break;
    case Operation::add:
    case Operation::multiply:
      if (mode.unsafeMath) break;
      text += fmt::format("; conversion and {} are correctly rounded, here {}",
                          row.operation == Operation::add ? "sum" : "product",
                          WordsOf(mode.arithmetic));
      break;
    case Operation::power:
      if (mode.unsafeMath) break;
      text += fmt::format("; pow is within {} units in the last place of the exact result",
                          ulpsOfPower);
      break;
  }
  if (mode.unsafeMath)
    text += "; with the build options of this run, OpenCL sets no bound to an error";
  if (isDenormal && mode.results == Denormals::kept) {
    text += "; the device reports CL_FP_DENORM, so nothing may be flushed";
  } else if (isDenormal) {
    const bool reported = (place.device.singleFpConfig & CL_FP_DENORM) != 0;
    text += fmt::format(
        "; {}, so a denormal may become a zero of either sign",
        reported ? "the build options permit it" : "the device does not report CL_FP_DENORM");
  }
  return text;
}

/// The stores into one union of two members, in their order, and the last one into every byte.
struct Stores {
  std::vector<std::string> lines;
  std::vector<StoredByte> bytes;
};

Stores StoresInto(const LanePlace& place, const Bytes& input, std::string_view elementMember,
                  std::string_view floatMember) {
  const Row& row = place.row;
  Stores stores;
  for (const std::uint8_t byte : place.Of(input)) stores.bytes.push_back({byte, ""});
  const auto store = [&](std::string_view member, std::size_t width, int lane) {
    const std::string name = LaneOf(row, member, lane);
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

WrongLane WrongLaneAt(const LanePlace& place) {
  const float answer = place.Answer();
  const float right =
      RightAnswersOf(place.row, place.repetition, place.element, place.lane, place.mode)
          .NearestTo(answer);
  std::optional<std::uint64_t> ulps;
  if (!std::isnan(answer) && !std::isnan(right)) ulps = UlpsBetween(answer, right);
  return {place.number, place.element, place.lane, answer, right, ulps};
}

ExplainedLane ExplainLane(const LanePlace& place) {
  const Row& row = place.row;
  const std::string_view type = typeNames[static_cast<std::size_t>(row.elementType)];
  ExplainedLane explained;
  explained.lane = WrongLaneAt(place);

  Stores stores = StoresInto(place, place.repetition.inputA, "a", "h");
  explained.storesA = std::move(stores.lines);
  explained.bytesA = std::move(stores.bytes);
  const auto as = [&](std::string_view member, std::string_view what) {
    return fmt::format("{} as {}", LaneOf(row, member, place.lane), what);
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
  return explained;
}

/// How far the answer is from a right one.
std::string DistanceOf(const WrongLane& lane) {
  if (!lane.ulps) return std::isnan(lane.answer) ? "a NaN" : "not a NaN";
  if (*lane.ulps == 0) return "a zero of the other sign";
  return Counted(*lane.ulps, "unit") + " in the last place off";
}

std::string WhereOf(int repetition, int element, int lane) {
  return fmt::format("repetition {}, element {}, lane {}", repetition, element, lane);
}

/// The lanes to be told of: those that are wrong, or where none is, those that the suite rejects.
std::vector<LanePlace> LanesToExplain(const Row& row, const Record& record, const Device& device,
                                      const FloatMode& mode, const Opinion& opinion,
                                      Category category) {
  std::vector<LanePlace> lanes;
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
        const LanePlace place{row, device, mode, repetition, number, element, lane};
        if (RuleOn(place).rejects) lanes.push_back(place);
      }
    }
  }
  return lanes;
}

std::string OtherLane(const LanePlace& place, Category category) {
  const std::string where = WhereOf(place.number, place.element, place.lane);
  if (category == Category::failedRight) {
    return fmt::format("{}: {}, the reference {}", where, BitsAndNumber(place.Answer()),
                       BitsAndNumber(ReferenceOf(place)));
  }
  const WrongLane lane = WrongLaneAt(place);
  return fmt::format("{}: {} in place of {}{}", where, BitsAndNumber(lane.answer),
                     BitsAndNumber(lane.right), lane.ulps ? ", " + DistanceOf(lane) : "");
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
    const std::vector<LanePlace> lanes =
        LanesToExplain(*row, record, device, mode, explanation.opinion, explanation.category);
    for (const LanePlace& place : lanes) {
      if (explanation.first.empty()) {
        explanation.first.push_back(ExplainLane(place));
      } else {
        explanation.others.push_back(OtherLane(place, explanation.category));
      }
    }
  }
  for (const NamedSuspect& suspect : suspects.Of(record.row))
    explanation.suspects.push_back(suspect.name + ": " + suspect.meaning);
  return explanation;
}

namespace {

using Out = std::back_insert_iterator<std::string>;

void WriteOpinion(Out out, const Explanation& explanation) {
  const Opinion& opinion = explanation.opinion;
  const auto lanes = static_cast<std::uint64_t>(opinion.lanes);
  const char* cameBack = IsJudged(explanation.category) ? "" : " that came back";
  switch (opinion.verdict) {
    case Opinion::Verdict::unseen:
      fmt::format_to(out, "  no result came back\n");
      return;
    case Opinion::Verdict::right:
      fmt::format_to(out, "  right by OpenCL's rules in all {}{}", Counted(lanes, "lane"),
                     cameBack);
      break;
    case Opinion::Verdict::wrong:
      fmt::format_to(out, "  wrong by OpenCL's rules in {} of {}{}", opinion.wrong.size(),
                     Counted(lanes, "lane"), cameBack);
      if (opinion.greatestUlps > 0) {
        fmt::format_to(out, ", by up to {} in the last place",
                       Counted(opinion.greatestUlps, "unit"));
      }
      break;
  }
  if (IsJudged(explanation.category))
    fmt::format_to(out, "; {}", TraitsOf(explanation.category).name);
  fmt::format_to(out, "\n");
}

void WriteStores(Out out, std::string_view name, const std::vector<std::string>& stores,
                 const std::vector<StoredByte>& bytes, std::size_t first, std::size_t size) {
  if (stores.empty()) return;
  fmt::format_to(out, "  Stores into {}, in this order:\n", name);
  std::string line;
  for (const std::string& store : stores) {
    constexpr std::size_t longest = 90;
    if (line.size() + store.size() > longest)
      fmt::format_to(out, "     {}\n", std::exchange(line, ""));
    line += fmt::format(" {}{}", store, &store == &stores.back() ? "" : ",");
  }
  fmt::format_to(out, "     {}\n", line);
  fmt::format_to(out, "  Bytes of {}, and the last store into each (> is read):\n", name);
  const auto isRead = [&](std::size_t at) { return at >= first && at < first + size; };
  for (std::size_t at = 0; at < bytes.size();) {
    std::size_t end = at;
    std::string values;
    while (end < bytes.size() && bytes[end].store == bytes[at].store && isRead(end) == isRead(at))
      values += fmt::format(" {:02X}", bytes[end++].value);
    const std::string& store = bytes[at].store;
    const std::string where =
        end == at + 1 ? fmt::format("{}", at) : fmt::format("{} to {}", at, end - 1);
    if (store.empty() && !isRead(at)) {
      fmt::format_to(out, "      {:<9} no store\n", where);
    } else {
      fmt::format_to(out, "    {} {:<9}{:<13} {}\n", isRead(at) ? '>' : ' ', where, values,
                     store.empty() ? "no store" : store);
    }
    at = end;
  }
}

void WriteLane(Out out, const Row& row, const ExplainedLane& lane, Category category) {
  const WrongLane& wrong = lane.lane;
  const auto index = static_cast<std::size_t>(wrong.lane);
  fmt::format_to(out, "\n  The first {}: {}\n",
                 category == Category::failedRight ? "lane that the suite rejects" : "wrong lane",
                 WhereOf(wrong.repetition, wrong.element, wrong.lane));
  WriteStores(out, "A", lane.storesA, lane.bytesA, row.width * index, row.width);
  WriteStores(out, "B", lane.storesB, lane.bytesB, sizeof(float) * index, sizeof(float));

  std::size_t widths[3] = {};
  for (const NamedValue& value : lane.values) {
    const std::string* const parts[] = {&value.what, &value.bits, &value.value};
    for (std::size_t n = 0; n < std::size(widths); ++n)
      widths[n] = std::max(widths[n], parts[n]->size());
  }
  fmt::format_to(out, "  Values:\n");
  for (const NamedValue& value : lane.values) {
    std::string line =
        fmt::format("    {:<{}}  {:<{}}  {:>{}}  {} {}", value.what, widths[0], value.bits,
                    widths[1], value.value, widths[2], value.hex, value.kind);
    line.erase(line.find_last_not_of(' ') + 1);
    fmt::format_to(out, "{}\n", line);
  }
  fmt::format_to(out, "  The reference:\n");
  for (const std::string& step : lane.reference) fmt::format_to(out, "    {}\n", step);
  fmt::format_to(out, "  The answer: {}\n",
                 category == Category::failedRight ? "right" : DistanceOf(wrong));
  fmt::format_to(out, "  The suite's rule: {}\n  OpenCL's rule: {}\n", lane.suiteRule,
                 lane.openClRule);
}

}  // namespace

std::string TextOf(const Explanation& explanation, std::size_t mostOthers) {
  std::string text;
  const Out out(text);
  fmt::format_to(out, "{}: {}\n", explanation.row, explanation.status);
  WriteOpinion(out, explanation);
  for (const std::string& note : explanation.notes) fmt::format_to(out, "  {}\n", note);
  const std::optional<Row> row = RowNamed(explanation.row);
  for (const ExplainedLane& lane : explanation.first)
    WriteLane(out, row.value(), lane, explanation.category);
  if (!explanation.others.empty()) {
    fmt::format_to(out, "\n  {}:\n",
                   explanation.category == Category::failedRight
                       ? "Others that the suite's rule rejects"
                       : "Other wrong lanes");
    const std::size_t shown = std::min(explanation.others.size(), mostOthers);
    for (std::size_t n = 0; n < shown; ++n) fmt::format_to(out, "    {}\n", explanation.others[n]);
    if (shown < explanation.others.size())
      fmt::format_to(out, "    {} more (--all)\n", explanation.others.size() - shown);
  }
  if (!explanation.suspects.empty()) {
    fmt::format_to(out, "\n  Suspects:\n");
    for (const std::string& suspect : explanation.suspects)
      fmt::format_to(out, "    {}\n", suspect);
  }
  return text;
}

}  // namespace diagnosis
