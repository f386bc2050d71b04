#include "common/command_line/program.h"
#include "common/workers/runner.h"
#include "exploration/commands/command.h"
#include "exploration/execution/runner.h"

namespace {

#define TAKE(name) &exploration::commands::name,
constexpr const command_line::Command* commands[] = {COMMANDS(TAKE)};
#undef TAKE

const command_line::Section sections[] = {
    {"EXIT STATUS",
     "  0    nothing was found\n"
     "  1    something was found\n"
     "  2    bad use, or a bad file\n"
     "  3    there is no GPU device, or the loader has not taken a layer of OPENCL_LAYERS\n"
     "  4    something could not be written\n"
     "  128  and a signal's number: the run was interrupted by it\n",
     true},
    {"ENVIRONMENT",
     "The OpenCL loader takes the driver from OCL_ICD_VENDORS and layers from OPENCL_LAYERS.\n"},
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
    .worker = [] { return workers::WorkerMain(exploration::deviceRunner); },
    .sections = sections,
};

}  // namespace

int main(int argc, char** argv) { return command_line::Main(explore, argc, argv); }
