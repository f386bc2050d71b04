#include <CLI/CLI.hpp>
#include <memory>
#include <string>

#include "diagnosis/commands/command.h"
#include "diagnosis/record/row_facts.h"
#include "diagnosis/record/select.h"

namespace diagnosis {
namespace {

void AddTo(CLI::App& app, command_line::Call&) {
  const auto row = std::make_shared<std::string>();
  app.add_option("ROW", *row, "Name of a row")->required();
  app.callback([row] { command_line::Print(KernelTextOf(FactsOfRows()[RowCalled(*row)].row)); });
}

}  // namespace

const command_line::Command commands::source = {"source",
                                                "Print a row's kernel text as the device gets it",
                                                AddTo, "triage source power_union_vector3_4"};

}  // namespace diagnosis
