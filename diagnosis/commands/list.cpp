#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "diagnosis/commands/command.h"
#include "diagnosis/record/listing.h"
#include "diagnosis/record/select.h"

namespace diagnosis {

namespace {

struct {
  std::vector<std::string> patterns;
  bool isLong = false;
} options;

const Command command("list", "Name the rows, one a line", [](CLI::App& app) {
  AddRows(app, options.patterns);
  app.add_flag("--long", options.isLong, "As a table with what is particular to each row");
  app.callback([] {
    const std::vector<std::size_t> selected = Select(options.patterns);
    Print(options.isLong ? TableOf(selected) : NamesOf(selected));
  });
});

}  // namespace

}  // namespace diagnosis
