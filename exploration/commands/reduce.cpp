#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "exploration/commands/command.h"
#include "exploration/views/told.h"

namespace exploration {
namespace {

struct ReduceOptions {
  std::vector<Name> names;
  Options drawing;
  WorkOptions work;
};

int Reduce(const ReduceOptions& options) {
  std::optional<Candidate> drawn = Drawn(options.names.front(), options.drawing);
  const std::string name = NameOf(drawn->program);
  std::string told = fmt::format("{} was not run\n", name);
  bool isRight = false;
  CampaignListener listener;
  listener.device = [&](const Device& device) {
    const std::string missing = MissingOn(device, drawn->runnable);
    if (missing.empty()) return;
    told = fmt::format("{}  {}\n", name, missing);
    drawn.reset();
  };
  listener.next = [&drawn] { return std::exchange(drawn, std::nullopt); };
  listener.ended = [&](const Candidate&, const Outcome& outcome) {
    isRight = outcome.kind == Outcome::Kind::right;
    told = fmt::format("{}  {}\n", name, Told(outcome));
    return true;
  };
  listener.concluded = [&told, &name](const Finding& finding, const Fault* fault) {
    told = fault != nullptr ? FaultTold(*fault)
                            : fmt::format("{}: {}, but right when it was run again\n", name,
                                          Told(finding.outcome));
  };
  const CampaignEnd end = Explore(options.work, listener);
  RefuseNoDevice(end.pool);
  command_line::Print(told);
  if (end.pool.kind == workers::PoolEnd::Kind::interrupted) return 128 + end.pool.signal;
  return isRight ? 0 : 1;
}

void AddTo(CLI::App& app, command_line::Call& call) {
  const auto options = std::make_shared<ReduceOptions>();
  AddNames(app, options->names, 1);
  AddDrawing(app, options->drawing);
  AddWork(app, call, options->work);
  app.parse_complete_callback([options] { Draw(1, 1, options->drawing); });
  app.callback([options, &call] { call.status = Reduce(*options); });
}

}  // namespace

const command_line::Command commands::reduce = {
    "reduce", "Make a program that goes wrong as small as it can be", AddTo, "explore reduce 1:22"};

}  // namespace exploration
