#include "exploration/features/features.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iterator>
#include <string>

#include "exploration/commands/command.h"

namespace exploration {
namespace {

int List() {
  std::size_t longest = 0;
  for (const Feature* feature : Features()) longest = std::max(longest, feature->name.size());
  std::string lines;
  for (const Feature* feature : Features())
    fmt::format_to(std::back_inserter(lines), "{:<{}}  {}\n", feature->name, longest,
                   feature->says);
  command_line::Print(lines);
  return 0;
}

void AddTo(CLI::App& app, command_line::Call& call) {
  app.callback([&call] { call.status = List(); });
}

}  // namespace

const command_line::Command commands::features = {
    "features", "List what programs may use, by the names that --only and --without take", AddTo,
    "explore features"};

}  // namespace exploration
