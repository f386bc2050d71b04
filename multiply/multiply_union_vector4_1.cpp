#include "multiply/multiply_case.h"

namespace {
const char* kernelSource = KernelText<Operation::multiply, Shape::vector4, ElementType::int_>;
constexpr char announcement[] = "Running test multiply_union_vector4_1...";
}  // namespace

class TestCase_multiply_union_vector4_1 : public MultiplyCase<Vector4<cl_int>> {
 public:
  using MultiplyCase::MultiplyCase;

  bool Run() override {
    Fill();
    Reference(FlushDenormal);
    RoundTrip();
    return CheckUlps(2);
  }
};

int RunTest_multiply_union_vector4_1() {
  return RunTest<TestCase_multiply_union_vector4_1>(kernelSource, announcement, Cumulative(10));
}
