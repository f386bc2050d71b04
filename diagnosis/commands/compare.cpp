#include "diagnosis/views/compare.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <string>
#include <vector>

#include "diagnosis/commands/command.h"

namespace diagnosis {

namespace {

std::string before;
std::string after;

void CompareRuns() {
  const std::vector<NamedRun> runs = ReadRuns({before, after});
  const std::vector<ComparedRow> compared = Compare(runs);
  Print(DifferencesOf(runs, compared));
  if (std::ranges::find(compared, Comparison::worse, &ComparedRow::comparison) != compared.end())
    EndWith(1);
}

const Command command(
    "compare", "Say what differs between two runs; ends with 1 if a row is worse in the second",
    [](CLI::App& app) {
      app.add_option("A", before, "Folder that the first run was written into")->required();
      app.add_option("B", after, "Folder that the second run was written into")->required();
      app.callback(CompareRuns);
    });

}  // namespace

}  // namespace diagnosis
