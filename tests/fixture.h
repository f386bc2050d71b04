#pragma once

#include <gtest/gtest.h>

#include <cfenv>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "tests/host_arrays.h"
#include "tests/scripted_opencl.h"
#include "tests/scripted_rand.h"

/// What a call returned, wrote, drew and left behind.
struct Outcome {
  int result = -1;
  std::string out;
  std::string err;
  int draws = 0;
  HostArrays hostArrays;
  int aliveAtError = -1;  // OpenCL objects when it first wrote "ERROR: "; -1 if it did not
};

/// A fresh machine, the random numbers from their start, and the host rounding to nearest.
class SuiteTest : public testing::Test {
 protected:
  SuiteTest();
  ~SuiteTest() override;

  /// Calls a runner, or the driver, and collects what it wrote. Every line must be flushed before
  /// the next thing is written.
  static Outcome Collect(const std::function<int()>& function);

  /// The same for a call that must end with std::bad_alloc.
  static Outcome CollectUntilBadAlloc(int (*function)());
};

/// "Running test ...", then one RUN line for each word.
std::string Lines(const std::string& announcement, const std::vector<std::string>& words);

/// `count` times the same word.
std::vector<std::string> Words(int count, const std::string& word);
