#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <optional>
#include <string_view>
#include <utility>

#include "common/text/text.h"
#include "diagnosis/record/row.h"
#include "diagnosis/views/explain.h"

namespace diagnosis {

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
      fmt::format_to(out, "  right by OpenCL's rules in all {}{}", text::Counted(lanes, "lane"),
                     cameBack);
      break;
    case Opinion::Verdict::wrong:
      fmt::format_to(out, "  wrong by OpenCL's rules in {} of {}{}", opinion.wrong.size(),
                     text::Counted(lanes, "lane"), cameBack);
      if (opinion.greatestUlps > 0) {
        fmt::format_to(out, ", by up to {} in the last place",
                       text::Counted(opinion.greatestUlps, "unit"));
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

void WriteLane(Out out, const Row& row, const ExplainedLane& lane) {
  const WrongLane& wrong = lane.lane;
  const auto index = static_cast<std::size_t>(wrong.lane);
  fmt::format_to(out, "\n  The {}: {}\n", lane.title,
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
  fmt::format_to(out, "  The answer: {}\n", lane.isRight ? "right" : DistanceOf(wrong));
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
  for (const ExplainedLane& lane : explanation.first) WriteLane(out, row.value(), lane);
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
  if (!explanation.experiments.empty()) fmt::format_to(out, "\n  Experiments:\n");
  for (const std::string& line : explanation.experiments) fmt::format_to(out, "    {}\n", line);
  return text;
}

}  // namespace diagnosis
