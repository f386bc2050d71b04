#include "copy/copy_case.h"

class TestCase_copy_union_scalar_4 : public CopyCase<Scalar<cl_ushort>> {
 public:
  using CopyCase::CopyCase;

  static inline const char* kernelSource = KernelText<Operation::copy, Layout>;
  static constexpr char announcement[] = "Running test copy_union_scalar_4...";

  bool Run() override {
    Fill();
    Reference();
    RoundTrip();
    return CheckEveryLane("c:");
  }
};

int RunTest_copy_union_scalar_4() { return RunTest<TestCase_copy_union_scalar_4>(OneRun(10)); }
