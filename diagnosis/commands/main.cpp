#include <fmt/format.h>

#include <cstddef>
#include <iterator>
#include <string>
#include <vector>

#include "common/command_line/program.h"
#include "common/workers/runner.h"
#include "diagnosis/commands/command.h"
#include "diagnosis/execution/run_rows.h"
#include "diagnosis/verdict/ledger.h"

namespace {

#define TAKE(name) &diagnosis::commands::name,
constexpr const command_line::Command* commands[] = {COMMANDS(TAKE)};
#undef TAKE

std::string StatusesOfRows() {
  std::string text = "  The row\n";
  for (std::size_t i = 0; i < diagnosis::statuses; ++i) {
    const auto status = static_cast<diagnosis::Status>(i);
    fmt::format_to(std::back_inserter(text), "  {:<16}{}\n", diagnosis::NameOf(status),
                   diagnosis::MeaningOf(status));
  }
  return text;
}

std::vector<command_line::Section> Sections() {
  return {
      {"STATUSES", StatusesOfRows(), true},
      {"EXIT STATUS",
       "  0  every selected row passed, ended as the baseline says, was skipped or is a flake\n"
       "  1  one did not, or passed against the baseline; compare: a row is worse in the second "
       "run\n"
       "  2  bad use, or a bad file\n"
       "  3  there is no GPU device, or the loader has not taken a layer of OPENCL_LAYERS\n"
       "  4  something could not be written\n"
       "  128 and the number of the signal that ended a run\n",
       true},
      {"ENVIRONMENT",
       "The OpenCL loader takes the driver from OCL_ICD_VENDORS and layers from OPENCL_LAYERS.\n"
       "NO_COLOR turns colour off.\n"},
      {"FILES",
       "/usr/share/@package@/baselines: what to expect of drivers that Debian packages.\n"
       "\n"
       "/usr/@CMAKE_INSTALL_LIBDIR@/@package@/libbroken_compiler.so: a layer that breaks a "
       "device's\n"
       "compiler in the way that BROKEN_COMPILER names; with help it lists the ways.\n"
       "\n"
       "/usr/@CMAKE_INSTALL_LIBDIR@/@package@/libone_device.so: a layer that shows one device "
       "alone,\n"
       "which ONE_DEVICE names as PLATFORM:DEVICE, by the platform's index and the device's in "
       "it.\n"},
  };
}

constexpr command_line::WorkerWord workerWords[] = {
    {"worker", [] { return workers::WorkerMain(diagnosis::rowRunner); }}};

command_line::Program Triage(const std::vector<command_line::Section>& sections) {
  return {
      .name = "triage",
      .binary = "union_triage",
      .version = SUITE_VERSION,
      .purpose = "account for every row of the union suite, and explain what a device does wrong",
      .description =
          "Runs the rows of the union conformance suite and says what became of each.\n"
          "Without a command, 'run' is meant: 'triage ROW...' is 'triage run ROW...'.",
      .commands = commands,
      .usualCommand = "run",
      .workers = workerWords,
      .sections = sections,
  };
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<command_line::Section> sections = Sections();
  return command_line::Main(Triage(sections), argc, argv);
}
