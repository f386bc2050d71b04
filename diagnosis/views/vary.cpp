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

// What a driver's maker asks first: does it go away?
std::string VerdictOn(const std::vector<Variation>& variations,
                      const std::vector<RowResult>& seen) {
  std::string names;
  for (std::size_t i = 1; i < variations.size(); ++i) {
    if (IsGood(seen[i]) == IsGood(seen[0])) continue;
    names += names.empty() ? "" : ", ";
    names += variations[i].name;
  }
  if (IsGood(seen[0])) return names.empty() ? "right in all of them" : "goes wrong with: " + names;
  return names.empty() ? "stays in all of them" : "goes away with: " + names;
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
