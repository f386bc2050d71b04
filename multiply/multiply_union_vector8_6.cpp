#include "multiply/multiply_case.h"

namespace {
const char* kernelSource = KernelText<Operation::multiply, Shape::vector8, ElementType::uchar_>;
constexpr char announcement[] = "Running test multiply_union_vector8_6...";
}  // namespace

class TestCase_multiply_union_vector8_6 : public MultiplyCase<Vector8<cl_uchar>> {
 public:
  using MultiplyCase::MultiplyCase;

  bool Run() override {
    Fill();
    Reference(FlushDenormal);
    RoundTrip();
    return CheckUlps(2);
  }
};

int RunTest_multiply_union_vector8_6() {
  return RunTest<TestCase_multiply_union_vector8_6>(kernelSource, announcement, Cumulative(10));
}
