#include "common/command_line/program.h"
#include "common/workers/worker.h"
#include "diagnosis/commands/command.h"

namespace {

#define TAKE(name) &diagnosis::commands::name,
constexpr const command_line::Command* commands[] = {COMMANDS(TAKE)};
#undef TAKE

constexpr command_line::Section sections[] = {
    {"EXIT STATUS",
     "0 if every selected row passed or ended as the baseline says; 1 if not; 2 for bad use or a "
     "bad\n"
     "file; 3 if there is no GPU device, or the loader has not taken a layer of OPENCL_LAYERS.\n"},
    {"ENVIRONMENT",
     "The OpenCL loader takes the driver from OCL_ICD_VENDORS and layers from OPENCL_LAYERS.\n"
     "NO_COLOR turns colour off.\n"},
    {"FILES",
     "/usr/share/@package@/baselines: what to expect of drivers that Debian packages.\n"
     "\n"
     "/usr/@CMAKE_INSTALL_LIBDIR@/@package@/libbroken_compiler.so: a layer that breaks a device's\n"
     "compiler in the way that BROKEN_COMPILER names; with help it lists the ways.\n"
     "\n"
     "/usr/@CMAKE_INSTALL_LIBDIR@/@package@/libone_device.so: a layer that shows one device alone, "
     "which\n"
     "ONE_DEVICE names as PLATFORM:DEVICE, by the platform's index and the device's in it.\n"},
};

constexpr command_line::Program triage = {
    .name = "triage",
    .binary = "union_triage",
    .version = SUITE_VERSION,
    .purpose = "account for every row of the union suite, and explain what a device does wrong",
    .description =
        "Runs the rows of the union conformance suite and says what became of each.\n"
        "Without a command, 'run' is meant: 'triage ROW...' is 'triage run ROW...'.",
    .commands = commands,
    .usualCommand = "run",
    .worker = diagnosis::WorkerMain,
    .sections = sections,
};

}  // namespace

int main(int argc, char** argv) { return command_line::Main(triage, argc, argv); }
