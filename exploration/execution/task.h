#pragma once

#include <string>
#include <string_view>

#include "exploration/program/runnable.h"

namespace exploration {

/// What a worker is told to do.
struct Task {
  /// Its text, buffers and sizes; what it must answer stays here.
  RunnableProgram program;
  std::string buildOptions;
  /// A command that compiles program.text, in place of the device. Its last word is added: the
  /// file.
  std::string compiler;
  /// The device is given what Clang and llvm-spirv made of the text.
  bool throughIl = false;
  double seconds = 60;  ///< That it may take.
};

/// As the task of a workers::Job.
std::string Packed(const Task& task);
/// Throws std::runtime_error if it is no task.
Task TaskFrom(std::string_view packed);

}  // namespace exploration
