#include <CLI/CLI.hpp>
#include <memory>
#include <string>
#include <vector>

#include "diagnosis/commands/command.h"
#include "diagnosis/record/listing.h"
#include "diagnosis/record/select.h"
#include "diagnosis/views/as_json.h"

namespace diagnosis {
namespace {

void AddTo(CLI::App& app, command_line::Call&) {
  struct Options {
    std::vector<std::string> patterns;
    bool isLong = false;
    bool json = false;
  };
  const auto options = std::make_shared<Options>();
  AddRows(app, options->patterns);
  app.add_flag("--long", options->isLong, "As a table with what is particular to each row");
  AddJson(app, options->json);
  app.callback([options] {
    const std::vector<std::size_t> selected = Select(options->patterns);
    if (options->json) return command_line::Print(JsonOfRows(selected));
    command_line::Print(options->isLong ? TableOf(selected) : NamesOf(selected));
  });
}

}  // namespace

const command_line::Command commands::list = {"list", "Name the rows, one a line", AddTo,
                                              "triage list --long 'power_*_4'\n"
                                              "triage list --json"};

}  // namespace diagnosis
