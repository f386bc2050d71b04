#include "multiply/multiply_case.h"

namespace {
const char* kernelSource = KernelText<Operation::multiply, Shape::vector16, ElementType::short_>;
constexpr char announcement[] = "Running test multiply_union_vector16_3...";
}  // namespace

class TestCase_multiply_union_vector16_3 : public MultiplyCase<Vector16<cl_short>> {
 public:
  using MultiplyCase::MultiplyCase;

  bool Run() override {
    Fill();
    Reference(FlushDenormal);
    RoundTrip();
    return CheckUlps(2);
  }
};

int RunTest_multiply_union_vector16_3() {
  return RunTest<TestCase_multiply_union_vector16_3>(kernelSource, announcement, Cumulative(10));
}
