#include "copy/copy_case.h"

class TestCase_copy_union_arrays_5 : public CopyCase<Arrays<cl_char>> {
 public:
  using CopyCase::CopyCase;

  static inline const char* kernelSource = KernelText<Operation::copy, Layout>;
  static constexpr char announcement[] = "Running test copy_union_arrays_5...";

  bool Run() override {
    Fill();
    Reference();
    RoundTrip();
    return CheckEveryLane("c:");
  }
};

int RunTest_copy_union_arrays_5() { return RunTest<TestCase_copy_union_arrays_5>(Cumulative(10)); }
