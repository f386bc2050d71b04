#pragma once

#include <vector>

#include "harness/rows.h"  // declares the runners: a row that is not on the list does not compile
#include "harness/test_case.h"

/// How a runner repeats its test, and what its RUN lines say.
struct Repetitions {
  enum class Form { cumulative, perRepetition, oneRun };
  Form form;
  int count;
};

/// `count` repetitions; once one has failed, its line and all later ones say "FAILED!".
constexpr Repetitions Cumulative(int count) { return {Repetitions::Form::cumulative, count}; }

/// `count` repetitions; each line tells that repetition's own result.
constexpr Repetitions PerRepetition(int count) { return {Repetitions::Form::perRepetition, count}; }

/// A single repetition, whose result `count` lines tell.
constexpr Repetitions OneRun(int count) { return {Repetitions::Form::oneRun, count}; }

/// Sets `test` up, repeats it, writes the RUN lines on standard output and cleans up. `result` goes
/// to 0 as soon as a repetition fails, so that it holds even if a later call throws.
void Repeat(TestCase& test, Repetitions repetitions, int& result);

/// A test whose program is built: what its object is made of, and what becomes of it.
struct BuiltTest {
  const cl::Program& program;
  const cl::Context& context;
  std::vector<cl::Device>* devices;
  Repetitions repetitions;
  int& result;
};

/// RunTest but for the test object's class: `constructAndRepeat` makes the object, has it repeated,
/// as Repeat does, and lets it die.
int RunTestOf(void (*constructAndRepeat)(const BuiltTest&), const char* const& kernelSource,
              const char* announcement, Repetitions repetitions);

/// The whole life of one test: brings OpenCL up for the GPU devices of the first platform, builds
/// `Test::kernelSource`, writes the line `Test::announcement`, and repeats a `Test` of ten
/// elements. Nothing OpenCL outlives the call.
///
/// Returns 1, or 0 if a repetition found a mismatch, there is no platform or the text is null. A
/// failing OpenCL call writes its name and code as an "ERROR: " line on standard error and does not
/// by itself make the result 0. Exceptions other than cl::Error pass through.
///
/// The text's pointer goes by reference because its turn to be read comes late: of a null text
/// nothing is said before the context and its devices are there, and nothing at all if they fail.
template <class Test>
int RunTest(Repetitions repetitions) {
  const auto constructAndRepeat = [](const BuiltTest& built) {
    Test test(built.program, built.context, built.devices, 10);
    Repeat(test, built.repetitions, built.result);
  };
  return RunTestOf(constructAndRepeat, Test::kernelSource, Test::announcement, repetitions);
}
