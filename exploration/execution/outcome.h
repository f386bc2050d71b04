#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "common/workers/jobs.h"
#include "exploration/execution/task.h"

namespace exploration {

/// What became of a program.
struct Outcome {
  enum class Kind : std::uint8_t {
    right,
    wrongAnswer,
    unsteady,    ///< Two runs of one program answered differently.
    refused,     ///< The build of a valid program failed.
    callFailed,  ///< Another call did.
    crashed,     ///< The driver ended its process, or the compiler crashed.
    hung,
    notRun  ///< The worker was lost, or never had.
  };
  Kind kind = Kind::notRun;
  std::string call;  ///< In which it ended: "clBuildProgram"; "the compiler". Empty if it is right.
  int code = 0;      ///< Of the call; the signal or, negative, the exit status of a crash.
  std::string text;  ///< The build's log, or what the driver or compiler printed, or why not run.
  /// Of each buffer that is an answer what the first run left; empty where it came to none.
  std::vector<std::vector<std::uint8_t>> answers;
  double seconds = 0;

  bool IsFinding() const { return kind != Kind::right && kind != Kind::notRun; }
};

/// "wrong answer", "build refused", ...
std::string_view NameOf(Outcome::Kind kind);
/// "clBuildProgram fails with CL_INVALID_BINARY (-42)", "a crash (SIGSEGV) in clBuildProgram": what
/// it is in a few words.
std::string Told(const Outcome& outcome);

/// The judgement on what a worker answered.
Outcome Judged(const Task& task, const workers::Answer& answer);

/// A byte of an answer that is not as it must be.
struct Difference {
  std::size_t buffer;  ///< Which of those that are answers.
  std::size_t offset;
  std::uint8_t expected;
  std::uint8_t actual;
};
/// Of the known bytes; with `customary`, of the customary ones, which nobody has promised.
std::vector<Difference> DifferencesOf(const RunnableProgram& program, const Outcome& outcome,
                                      bool customary = false);

}  // namespace exploration
