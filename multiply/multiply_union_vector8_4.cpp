#include "multiply/multiply_case.h"

class TestCase_multiply_union_vector8_4 : public MultiplyCase<Vector8<cl_ushort>> {
 public:
  using MultiplyCase::MultiplyCase;

  static inline const char* kernelSource = KernelText<Operation::multiply, Layout>;
  static constexpr char announcement[] = "Running test multiply_union_vector8_4...";

  bool Run() override {
    Fill();
    Reference(FlushDenormal);
    RoundTrip();
    return CheckUlps(2);
  }
};

int RunTest_multiply_union_vector8_4() {
  return RunTest<TestCase_multiply_union_vector8_4>(Cumulative(10));
}
