#include "multiply/multiply_case.h"

namespace {
const char* kernelSource = KernelText<Operation::multiply, Shape::vector8, ElementType::ushort_>;
constexpr char announcement[] = "Running test multiply_union_vector8_4...";
}  // namespace

class TestCase_multiply_union_vector8_4 : public MultiplyCase<Vector8<cl_ushort>> {
 public:
  using MultiplyCase::MultiplyCase;

  bool Run() override {
    Fill();
    Reference(FlushDenormal);
    RoundTrip();
    return CheckUlps(2);
  }
};

int RunTest_multiply_union_vector8_4() {
  return RunTest<TestCase_multiply_union_vector8_4>(kernelSource, announcement, Cumulative(10));
}
