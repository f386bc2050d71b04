#include <CLI/CLI.hpp>
#include <memory>
#include <string>

#include "diagnosis/commands/command.h"
#include "diagnosis/record/row_facts.h"
#include "diagnosis/record/select.h"

namespace diagnosis {
namespace {

void AddTo(CLI::App& app, Call&) {
  const auto row = std::make_shared<std::string>();
  app.add_option("ROW", *row, "Name of a row")->required();
  app.callback([row] { Print(KernelTextOf(FactsOfRows()[RowCalled(*row)].row)); });
}

}  // namespace

const Command commands::source = {"source", "Print a row's kernel text as the device gets it",
                                  AddTo};

}  // namespace diagnosis
