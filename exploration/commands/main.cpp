#include "common/command_line/program.h"
#include "common/workers/runner.h"
#include "exploration/commands/command.h"
#include "exploration/execution/runner.h"

namespace {

#define TAKE(name) &exploration::commands::name,
constexpr const command_line::Command* commands[] = {COMMANDS(TAKE)};
#undef TAKE

constexpr command_line::WorkerWord workerWords[] = {
    {"worker", [] { return workers::WorkerMain(exploration::deviceRunner); }},
    {exploration::compilerWord, [] { return workers::WorkerMain(exploration::compilerRunner); }}};

const command_line::Section sections[] = {
    {"EXIT STATUS",
     "  0    nothing was found; replay: every program ended as it was expected to\n"
     "  1    something was found\n"
     "  2    bad use, or a bad file\n"
     "  3    there is no GPU device, the loader has not taken a layer of OPENCL_LAYERS, or the\n"
     "       compiler of --compiler does not compile the plainest kernel\n"
     "  4    something could not be written\n"
     "  128  and a signal's number: the run was interrupted by it\n",
     true},
    {"ENVIRONMENT",
     "The OpenCL loader takes the driver from OCL_ICD_VENDORS and layers from OPENCL_LAYERS.\n"},
    {"FILES",
     "/usr/share/@package@/corpus: the programs that 'explore replay' runs.\n"
     "\n"
     "/usr/share/@package@/baselines/replay: what to expect of drivers that Debian packages.\n"},
};

constexpr command_line::Program explore = {
    .name = "explore",
    .binary = "union_explore",
    .version = SUITE_VERSION,
    .purpose = "find the programs with unions that an OpenCL driver gets wrong",
    .description =
        "Runs programs with unions, drawn at random, whose answers OpenCL C's rules determine,\n"
        "makes those that go wrong as small as they can be, and tells the faults apart.\n"
        "Without a command, 'run' is meant.",
    .commands = commands,
    .usualCommand = "run",
    .workers = workerWords,
    .sections = sections,
};

}  // namespace

int main(int argc, char** argv) { return command_line::Main(explore, argc, argv); }
