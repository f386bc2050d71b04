#include "multiply/multiply_case.h"

namespace {
const char* kernelSource = KernelText<Operation::multiply, Shape::scalar, ElementType::ushort_>;
constexpr char announcement[] = "Running test multiply_union_scalar_4...";
}  // namespace

class TestCase_multiply_union_scalar_4 : public MultiplyCase<Scalar<cl_ushort>> {
 public:
  using MultiplyCase::MultiplyCase;

  bool Run() override {
    Fill();
    Reference(Unflushed);
    RoundTrip();
    return CheckUlps(2);
  }
};

int RunTest_multiply_union_scalar_4() {
  return RunTest<TestCase_multiply_union_scalar_4>(kernelSource, announcement, Cumulative(10));
}
