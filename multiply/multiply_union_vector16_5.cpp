#include "multiply/multiply_case.h"

class TestCase_multiply_union_vector16_5 : public MultiplyCase<Vector16<cl_char>> {
 public:
  using MultiplyCase::MultiplyCase;

  static inline const char* kernelSource = KernelText<Operation::multiply, Layout>;
  static constexpr char announcement[] = "Running test multiply_union_vector16_5...";

  bool Run() override {
    Fill();
    Reference(FlushDenormal);
    RoundTrip();
    return CheckUlps(2);
  }
};

int RunTest_multiply_union_vector16_5() {
  return RunTest<TestCase_multiply_union_vector16_5>(Cumulative(10));
}
