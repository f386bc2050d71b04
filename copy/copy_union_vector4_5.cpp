#include "copy/copy_case.h"

class TestCase_copy_union_vector4_5 : public CopyCase<Vector4<cl_char>> {
 public:
  using CopyCase::CopyCase;

  static inline const char* kernelSource = KernelText<Operation::copy, Layout>;
  static constexpr char announcement[] = "Running test copy_union_vector4_5...";

  bool Run() override {
    Fill();
    Reference();
    RoundTrip();
    return CheckAnyLane("c:");
  }
};

int RunTest_copy_union_vector4_5() {
  return RunTest<TestCase_copy_union_vector4_5>(Cumulative(10));
}
