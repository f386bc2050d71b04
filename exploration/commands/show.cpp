#include <CLI/CLI.hpp>
#include <memory>
#include <string>
#include <vector>

#include "exploration/commands/command.h"
#include "exploration/program/program_file.h"

namespace exploration {
namespace {

struct ShowOptions {
  std::vector<Name> names;
  Options drawing;
};

void AddTo(CLI::App& app, command_line::Call& call) {
  const auto options = std::make_shared<ShowOptions>();
  AddNames(app, options->names, 1);
  AddDrawing(app, options->drawing);
  app.parse_complete_callback([options] { Draw(1, 1, options->drawing); });
  app.callback([options, &call] {
    command_line::Print(FileOf(Drawn(options->names.front(), options->drawing).runnable));
    call.status = 0;
  });
}

}  // namespace

const command_line::Command commands::show = {
    "show", "Show a program: its text, its inputs, and the answers that it must give", AddTo,
    "explore show 1:17"};

}  // namespace exploration
