#include <CLI/CLI.hpp>
#include <string>

#include "diagnosis/capture/rehearsal.h"
#include "diagnosis/commands/command.h"
#include "diagnosis/record/select.h"

namespace diagnosis {

namespace {

std::string row;

const Command command("source", "Print a row's kernel text as the device gets it",
                      [](CLI::App& app) {
                        app.add_option("ROW", row, "Name of a row")->required();
                        app.callback([] { Print(Rehearsal()[RowCalled(row)].source); });
                      });

}  // namespace

}  // namespace diagnosis
