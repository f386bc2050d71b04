#include "copy/copy_case.h"

class TestCase_copy_union_vector8_2 : public CopyCase<Vector8<cl_uint>> {
 public:
  using CopyCase::CopyCase;

  static inline const char* kernelSource = KernelText<Operation::copy, Layout>;
  static constexpr char announcement[] = "Running test copy_union_vector8_2...";

  bool Run() override {
    Fill();
    Reference();
    RoundTrip();
    return CheckAnyLane("c:");
  }
};

int RunTest_copy_union_vector8_2() {
  return RunTest<TestCase_copy_union_vector8_2>(Cumulative(10));
}
