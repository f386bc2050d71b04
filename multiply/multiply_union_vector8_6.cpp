#include "multiply/multiply_case.h"

class TestCase_multiply_union_vector8_6 : public MultiplyCase<Vector8<cl_uchar>> {
 public:
  using MultiplyCase::MultiplyCase;

  static inline const char* kernelSource = KernelText<Operation::multiply, Layout>;
  static constexpr char announcement[] = "Running test multiply_union_vector8_6...";

  bool Run() override {
    Fill();
    Reference(FlushDenormal);
    RoundTrip();
    return CheckUlps(2);
  }
};

int RunTest_multiply_union_vector8_6() {
  return RunTest<TestCase_multiply_union_vector8_6>(Cumulative(10));
}
