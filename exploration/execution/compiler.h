#pragma once

#include <string>

#include "common/workers/runner.h"

namespace exploration {

/// Gives the text to a shell's command, to which the file's name is added, and tells its status. It
/// is started in a folder of its own, which takes what it writes. Whoever kills this process's
/// group ends it too.
void Compile(const std::string& command, const std::string& text, workers::SharedBytes& answer);

/// The text as SPIR-V, by Clang and llvm-spirv. Empty if they are not installed or refuse it, which
/// is told.
std::string Translated(const std::string& text, const std::string& buildOptions,
                       workers::SharedBytes& answer);

}  // namespace exploration
