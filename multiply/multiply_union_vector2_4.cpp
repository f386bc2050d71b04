#include "multiply/multiply_case.h"

namespace {
const char* kernelSource = KernelText<Operation::multiply, Shape::vector2, ElementType::ushort_>;
constexpr char announcement[] = "Running test multiply_union_vector2_4...";
}  // namespace

class TestCase_multiply_union_vector2_4 : public MultiplyCase<Vector2<cl_ushort>> {
 public:
  using MultiplyCase::MultiplyCase;

  bool Run() override {
    Fill();
    Reference(FlushDenormal);
    RoundTrip();
    return CheckUlps(2);
  }
};

int RunTest_multiply_union_vector2_4() {
  return RunTest<TestCase_multiply_union_vector2_4>(kernelSource, announcement, Cumulative(10));
}
