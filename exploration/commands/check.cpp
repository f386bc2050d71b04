#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "exploration/commands/command.h"
#include "exploration/views/told.h"

namespace exploration {
namespace {

struct CheckOptions {
  std::vector<Name> names;
  Options drawing;
  WorkOptions work;
};

// In the order in which they were named, whatever the order in which they end.
int Check(const CheckOptions& options) {
  std::vector<std::string> lines(options.names.size());
  std::vector<std::size_t> under;
  std::size_t next = 0;
  bool isRight = true;
  Device device;
  std::size_t told = 0;
  const auto tell = [&](std::size_t which, const std::string& line) {
    lines[which] = line;
    for (; told < lines.size() && !lines[told].empty(); ++told) command_line::Print(lines[told]);
  };
  const auto lineOf = [&options](std::size_t which, const std::string& what) {
    return fmt::format("{}:{}  {}\n", options.names[which].seed, options.names[which].number, what);
  };
  CampaignListener listener;
  listener.device = [&device](const Device& said) { device = said; };
  listener.next = [&]() -> std::optional<Candidate> {
    for (; next < options.names.size(); ++next) {
      Candidate drawn = Drawn(options.names[next], options.drawing);
      const std::string missing = MissingOn(device, drawn.runnable);
      if (missing.empty()) {
        under.push_back(next++);
        return drawn;
      }
      isRight = false;
      tell(next, lineOf(next, missing));
    }
    return std::nullopt;
  };
  listener.ended = [&](const Candidate& candidate, const Outcome& outcome) {
    const std::string name = NameOf(candidate.program);
    const auto which = std::find_if(under.begin(), under.end(), [&](std::size_t one) {
      return lineOf(one, "").starts_with(name + " ");
    });
    const std::size_t index = *which;
    under.erase(which);
    isRight = isRight && outcome.kind == Outcome::Kind::right;
    tell(index, lineOf(index, Told(outcome)) + DetailsTold(candidate.runnable, outcome));
    return false;
  };
  const CampaignEnd end = Explore(options.work, listener);
  RefuseNoDevice(end.pool);
  if (end.pool.kind == workers::PoolEnd::Kind::interrupted) return 128 + end.pool.signal;
  return isRight ? 0 : 1;
}

void AddTo(CLI::App& app, command_line::Call& call) {
  const auto options = std::make_shared<CheckOptions>();
  AddNames(app, options->names, 1'000'000);
  AddDrawing(app, options->drawing);
  AddWork(app, call, options->work);
  app.parse_complete_callback([options] { Draw(1, 1, options->drawing); });
  app.callback([options, &call] { call.status = Check(*options); });
}

}  // namespace

const command_line::Command commands::check = {
    "check", "Run some programs and say what becomes of each", AddTo, "explore check 1:17 1:18"};

}  // namespace exploration
