#include "multiply/multiply_case.h"

class TestCase_multiply_union_vector8_1 : public MultiplyCase<Vector8<cl_int>> {
 public:
  using MultiplyCase::MultiplyCase;

  static inline const char* kernelSource = KernelText<Operation::multiply, Layout>;
  static constexpr char announcement[] = "Running test multiply_union_vector8_1...";

  bool Run() override {
    Fill();
    Reference(FlushDenormal);
    RoundTrip();
    return CheckUlps(2);
  }
};

int RunTest_multiply_union_vector8_1() {
  return RunTest<TestCase_multiply_union_vector8_1>(Cumulative(10));
}
