#include "copy/copy_case.h"

class TestCase_copy_union_arrays_3 : public CopyCase<Arrays<cl_short>> {
 public:
  using CopyCase::CopyCase;

  static inline const char* kernelSource = KernelText<Operation::copy, Layout>;
  static constexpr char announcement[] = "Running test copy_union_arrays_3...";

  bool Run() override {
    Fill();
    Reference();
    RoundTrip();
    return CheckEveryLane("c:");
  }
};

int RunTest_copy_union_arrays_3() { return RunTest<TestCase_copy_union_arrays_3>(Cumulative(10)); }
