// Runs rows on the device at hand and says in one line how many of them the suite fails, how many
// wrong ones it passes, and which suspects are named over the run; with --rows also those of each
// row that is wrong.

#include <fmt/format.h>

#include <cstdio>
#include <exception>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "diagnosis/opinion.h"
#include "diagnosis/run_now.h"
#include "diagnosis/select.h"
#include "diagnosis/suspects.h"
#include "diagnosis/worker.h"

namespace {

using namespace diagnosis;

std::string Joined(const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names) text += (text.empty() ? "" : " or ") + name;
  return text;
}

void Name(const std::vector<std::string>& patterns, bool byRow) {
  std::vector<std::size_t> selected = Select(patterns);
  const Run run = RunOf(selected, "", {});
  std::map<Kind, int> kinds;
  for (const Record& record : run.records)
    ++kinds[KindOf(record, OpinionOf(record, run.info.device))];
  const Suspects suspects = SuspectsOf(run);
  std::string names;
  for (const Suspect& suspect : suspects.fewest) {
    std::vector<std::string> alike = suspect.alike;
    alike.insert(alike.begin(), suspect.name);
    names += fmt::format("{}{} {}", names.empty() ? "" : ", ", Joined(alike), suspect.rows.size());
  }
  fmt::print("{:>4} {:>4} {:>4} {:>4}  {}\n", kinds[Kind::failedWrong], kinds[Kind::passedWrong],
             kinds[Kind::failedRight], kinds[Kind::neither], names);
  if (!byRow) return;
  for (const auto& [row, named] : suspects.byRow) fmt::print("    {}: {}\n", row, Joined(named));
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<std::string> patterns(argv + 1, argv + argc);
  if (patterns == std::vector<std::string>{"worker"}) return WorkerMain();
  const bool byRow = std::erase(patterns, "--rows") > 0;
  try {
    Name(patterns, byRow);
    return 0;
  } catch (const std::exception& error) {
    fmt::print(stderr, "{}\n", error.what());
    return 1;
  }
}
