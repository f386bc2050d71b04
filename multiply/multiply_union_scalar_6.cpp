#include "multiply/multiply_case.h"

class TestCase_multiply_union_scalar_6 : public MultiplyCase<Scalar<cl_uchar>> {
 public:
  using MultiplyCase::MultiplyCase;

  static inline const char* kernelSource = KernelText<Operation::multiply, Layout>;
  static constexpr char announcement[] = "Running test multiply_union_scalar_6...";

  bool Run() override {
    Fill();
    Reference(Unflushed);
    RoundTrip();
    return CheckUlps(2);
  }
};

int RunTest_multiply_union_scalar_6() {
  return RunTest<TestCase_multiply_union_scalar_6>(Cumulative(10));
}
