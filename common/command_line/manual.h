#pragma once

#include <string>
#include <vector>

#include "common/command_line/program.h"

namespace command_line {

/// The program's manual page in roff, of what help says too: `app` has all its commands, and `said`
/// what each says behind its options. The version is left to the build, as "@PROJECT_VERSION@".
std::string ManualOf(const Program& program, const CLI::App& app,
                     const std::vector<std::string>& said);

/// A command's examples, a line each.
std::vector<std::string> LinesOfExamples(const Command& command);

}  // namespace command_line
