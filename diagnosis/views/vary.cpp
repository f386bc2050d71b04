#include "diagnosis/views/vary.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <string_view>

#include "common/text/text.h"
#include "diagnosis/verdict/row_result.h"

namespace diagnosis {

namespace {

struct BuiltIn {
  const char* name;
  const char* buildOptions = "";
  std::uint64_t localSize = 0;
  int passes = 1;
};

constexpr BuiltIn builtIn[] = {
    {"as it is"},
    {"-cl-opt-disable", "-cl-opt-disable"},
    {"-cl-denorms-are-zero", "-cl-denorms-are-zero"},
    {"-cl-std=CL1.2", "-cl-std=CL1.2"},
    {"-cl-mad-enable", "-cl-mad-enable"},
    {"-cl-fast-relaxed-math", "-cl-fast-relaxed-math"},
    {"local size 1", "", 1},
    {"local size 2", "", 2},
    {"local size 64", "", 64},
    {"local size 256", "", 256},
    {"a second time", "", 0, 2},
};

bool IsGood(const RowResult& seen) { return seen.category == Category::passedRight; }

// Of what was not reached nothing is known.
bool IsRun(const RowResult& seen) { return seen.status != Status::missing; }

// What a driver's maker asks first: does it go away?
std::string VerdictOn(const std::vector<Variation>& variations,
                      const std::vector<RowResult>& seen) {
  if (std::ranges::none_of(seen, IsRun)) return "was not run";
  if (!IsRun(seen[0])) return "was not run as it is";
  std::string names;
  std::string notRun;
  for (std::size_t i = 1; i < variations.size(); ++i) {
    if (IsRun(seen[i]) && IsGood(seen[i]) == IsGood(seen[0])) continue;
    std::string& list = IsRun(seen[i]) ? names : notRun;
    list += list.empty() ? "" : ", ";
    list += variations[i].name;
  }
  const bool isGood = IsGood(seen[0]);
  std::string verdict = isGood ? "goes wrong with: " + names : "goes away with: " + names;
  if (names.empty())
    verdict = fmt::format("{} in {}", isGood ? "right" : "stays",
                          notRun.empty() ? "all of them" : "all that were run");
  return notRun.empty() ? verdict : verdict + "; not run with: " + notRun;
}

}  // namespace

std::vector<Variation> Variations(const std::vector<std::string>& buildOptions,
                                  const std::vector<std::string>& environments) {
  std::vector<Variation> variations;
  for (const BuiltIn& one : builtIn)
    variations.push_back({one.name, one.buildOptions, one.localSize, one.passes});
  for (const std::string& options : buildOptions) variations.push_back({options, options});
  for (const std::string& environment : environments)
    variations.push_back({.name = environment, .environment = environment});
  return variations;
}

std::string TableOfVariations(const std::vector<Variation>& variations, const Run& run) {
  // A record among those of its row.
  const std::size_t count = variations.size();
  std::vector<std::string> names;
  std::size_t width = 24;
  for (const Variation& variation : variations) {
    names.push_back(text::PrintableLine(variation.name, 60));
    width = std::max(width, names.back().size() + 2);
  }
  std::string table =
      fmt::format("  {:<{}}{:<12}{:<9}{}\n", "", width, "status", "opinion", "wrong lanes");
  const auto out = std::back_inserter(table);
  std::vector<RowResult> seen;
  for (std::size_t i = 0; i < run.records.size(); ++i) {
    const Record& record = run.records[i];
    if (i % count == 0) {
      seen.clear();
      fmt::format_to(out, "{}\n", record.row);
    }
    const RowResult& now = seen.emplace_back(ResultOf(record, run.info.device, {}));
    const bool isSeen = now.opinion.verdict != Opinion::Verdict::unseen;
    const std::string lanes =
        isSeen ? fmt::format("{} of {}", now.opinion.wrong.size(), now.opinion.lanes) : "";
    const std::string detail = now.status == Status::fail ? "" : DetailOf(record);
    std::string line = fmt::format("  {:<{}}{:<12}{:<9}{:<14}{}", names[i % count], width,
                                   NameOf(now.status), NameOf(now.opinion.verdict), lanes, detail);
    line.resize(line.find_last_not_of(' ') + 1);
    fmt::format_to(out, "{}\n", line);
    if (i % count == count - 1) fmt::format_to(out, "  {}\n", VerdictOn(variations, seen));
  }
  return table;
}

}  // namespace diagnosis
