#include "multiply/multiply_case.h"

namespace {
const char* kernelSource = KernelText<Operation::multiply, Shape::vector16, ElementType::uint_>;
constexpr char announcement[] = "Running test multiply_union_vector16_2...";
}  // namespace

class TestCase_multiply_union_vector16_2 : public MultiplyCase<Vector16<cl_uint>> {
 public:
  using MultiplyCase::MultiplyCase;

  bool Run() override {
    Fill();
    Reference(FlushDenormal);
    RoundTrip();
    return CheckUlps(2);
  }
};

int RunTest_multiply_union_vector16_2() {
  return RunTest<TestCase_multiply_union_vector16_2>(kernelSource, announcement, Cumulative(10));
}
