#include "multiply/multiply_case.h"

namespace {
const char* kernelSource = KernelText<Operation::multiply, Shape::arrays, ElementType::uchar_>;
constexpr char announcement[] = "Running test multiply_union_arrays_6..";
}  // namespace

class TestCase_multiply_union_arrays_6 : public MultiplyCase<Arrays<cl_uchar>> {
 public:
  using MultiplyCase::MultiplyCase;

  bool Run() override {
    Fill();
    Reference(FlushDenormal);
    RoundTrip();
    return CheckUlps(2);
  }
};

int RunTest_multiply_union_arrays_6() {
  return RunTest<TestCase_multiply_union_arrays_6>(kernelSource, announcement, Cumulative(10));
}
