// Runs rows on the device at hand and says in one line how many wrong ones of them the suite fails
// and how many it passes, how many right ones it fails, and which suspects are named over the run;
// before and after experiments; with --rows also those of each row. Rows or, behind --from, a
// folder with a run.

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <stdexcept>
#include <string>
#include <vector>

#include "common/workers/runner.h"
#include "diagnosis/commands/ask.h"
#include "diagnosis/execution/run_now.h"
#include "diagnosis/localization/analysis.h"
#include "diagnosis/record/select.h"

namespace {

using namespace diagnosis;

std::string Joined(const std::vector<std::string>& names) {
  return fmt::format("{}", fmt::join(names, " or "));
}

/// The suspect, and behind it those that explain the same rows. What does not explain a single row
/// is counted.
std::string NameOf(const Suspect& suspect) {
  if (suspect.name == unexplained) return fmt::format("{} {}", suspect.name, suspect.rows.size());
  std::vector<std::string> names = suspect.alike;
  names.insert(names.begin(), suspect.name);
  return Joined(names);
}

std::string NamesOf(const Suspects& suspects) {
  std::vector<std::string> names;
  for (const Suspect& suspect : suspects.fewest) names.push_back(NameOf(suspect));
  return fmt::format("{}", fmt::join(names, ", "));
}

void NameFaults(const std::vector<std::string>& patterns, const std::string& folder, bool byRow) {
  Run run = folder.empty() ? RunOf(Select(patterns), "", {}) : RunOf({}, folder, RowsOptions());
  Analysis analysis = AnalysisOf(run, {});
  const Totals& totals = analysis.totals;
  const auto unjudged = std::ranges::count_if(
      analysis.rows, [](const RowResult& row) { return !IsJudged(row.category); });
  if (unjudged > 0) throw std::runtime_error(fmt::format("{} rows came to no verdict", unjudged));
  const std::string before = NamesOf(analysis.suspects);
  std::size_t experiments = 0;
  if (folder.empty()) Ask(run, analysis, {}, [&experiments](const Record&) { ++experiments; });
  const std::string after = NamesOf(analysis.suspects);
  fmt::print("{:>3} {:>3} {:>3}  {}", totals.Of(Category::failedWrong),
             totals.Of(Category::passedWrong), totals.Of(Category::failedRight), before);
  // A column of its own for what experiments made of it.
  if (experiments > 0) fmt::print("  -> {} (asked {})", after, experiments);
  fmt::print("\n");
  std::vector<std::string> names;
  if (!byRow) return;
  for (const auto& [row, named] : analysis.suspects.byRow) {
    names.clear();
    for (const NamedSuspect& suspect : named) names.push_back(suspect.name);
    fmt::print("    {}: {}\n", row, Joined(names));
  }
}

}  // namespace

int main(int argc, char** argv) try {
  std::vector<std::string> arguments(argv + 1, argv + argc);
  if (arguments == std::vector<std::string>{"worker"}) return workers::WorkerMain(rowRunner);
  const bool byRow = std::erase(arguments, "--rows") > 0;
  const bool isThere = arguments.size() == 2 && arguments.front() == "--from";
  NameFaults(arguments, isThere ? arguments.back() : "", byRow);
  return 0;
} catch (const std::exception& error) {
  std::fprintf(stderr, "name_faults: %s\n", error.what());
  return 1;
}
