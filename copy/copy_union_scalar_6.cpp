#include "copy/copy_case.h"

class TestCase_copy_union_scalar_6 : public CopyCase<Scalar<cl_uchar>> {
 public:
  using CopyCase::CopyCase;

  static inline const char* kernelSource = KernelText<Operation::copy, Layout>;
  static constexpr char announcement[] = "Running test copy_union_scalar_6...";

  bool Run() override {
    Fill();
    Reference();
    RoundTrip();
    return CheckEveryLane("c:");
  }
};

int RunTest_copy_union_scalar_6() { return RunTest<TestCase_copy_union_scalar_6>(OneRun(10)); }
