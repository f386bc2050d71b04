#pragma once

#include <vector>

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

/// Constructs a row's test object and has it repeated, as Repeat does. It dies before the call
/// returns.
using ConstructAndRepeat = void (*)(const cl::Program& program, const cl::Context& context,
                                    std::vector<cl::Device>* devices, Repetitions repetitions,
                                    int& result);

/// RunTest but for the test object's class.
int RunTestOf(ConstructAndRepeat constructAndRepeat, const char* const& kernelSource,
              const char* announcement, Repetitions repetitions);

/// The whole life of one test: brings OpenCL up for the GPU devices of the first platform, builds
/// `kernelSource`, writes the line `announcement`, and repeats a `Test` of ten elements. Nothing
/// OpenCL outlives the call.
///
/// Returns 1, or 0 if a repetition found a mismatch, there is no platform or `kernelSource` is
/// null, which is read only when its turn comes. A failing OpenCL call writes its name and code as
/// an "ERROR: " line on standard error and does not by itself make the result 0. Exceptions other
/// than cl::Error pass through.
template <class Test>
int RunTest(const char* const& kernelSource, const char* announcement, Repetitions repetitions) {
  const auto constructAndRepeat = [](const cl::Program& program, const cl::Context& context,
                                     std::vector<cl::Device>* devices, Repetitions form,
                                     int& result) {
    Test test(program, context, devices, 10);
    Repeat(test, form, result);
  };
  return RunTestOf(constructAndRepeat, kernelSource, announcement, repetitions);
}
