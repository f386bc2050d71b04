#include "multiply/multiply_case.h"

namespace {
const char* kernelSource = KernelText<Operation::multiply, Shape::vector2, ElementType::char_>;
constexpr char announcement[] = "Running test multiply_union_vector2_5...";
}  // namespace

class TestCase_multiply_union_vector2_5 : public MultiplyCase<Vector2<cl_char>> {
 public:
  using MultiplyCase::MultiplyCase;

  bool Run() override {
    Fill();
    Reference(FlushDenormal);
    RoundTrip();
    return CheckUlps(2);
  }
};

int RunTest_multiply_union_vector2_5() {
  return RunTest<TestCase_multiply_union_vector2_5>(kernelSource, announcement, Cumulative(10));
}
