#include "multiply/multiply_case.h"

class TestCase_multiply_union_vector16_3 : public MultiplyCase<Vector16<cl_short>> {
 public:
  using MultiplyCase::MultiplyCase;

  static inline const char* kernelSource = KernelText<Operation::multiply, Layout>;
  static constexpr char announcement[] = "Running test multiply_union_vector16_3...";

  bool Run() override {
    Fill();
    Reference(FlushDenormal);
    RoundTrip();
    return CheckUlps(2);
  }
};

int RunTest_multiply_union_vector16_3() {
  return RunTest<TestCase_multiply_union_vector16_3>(Cumulative(10));
}
