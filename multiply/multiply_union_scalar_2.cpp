#include "multiply/multiply_case.h"

class TestCase_multiply_union_scalar_2 : public MultiplyCase<Scalar<cl_uint>> {
 public:
  using MultiplyCase::MultiplyCase;

  static inline const char* kernelSource = KernelText<Operation::multiply, Layout>;
  static constexpr char announcement[] = "Running test multiply_union_scalar_2...";

  bool Run() override {
    Fill();
    Reference(Unflushed);
    RoundTrip();
    return CheckUlps(2);
  }
};

int RunTest_multiply_union_scalar_2() {
  return RunTest<TestCase_multiply_union_scalar_2>(Cumulative(10));
}
