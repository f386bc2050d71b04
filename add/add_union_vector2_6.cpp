#include "add/add_case.h"

namespace {
const char* kernelSource = KernelText<Operation::add, Shape::vector2, ElementType::uchar_>;
constexpr char announcement[] = "Running test add_union_vector2_6...";
}  // namespace

class TestCase_add_union_vector2_6 : public AddCase<Vector2<cl_uchar>> {
 public:
  using AddCase::AddCase;

  bool Run() override {
    Fill();
    Reference(FlushDenormal);
    RoundTrip();
    return CheckUlps(2);
  }
};

int RunTest_add_union_vector2_6() {
  return RunTest<TestCase_add_union_vector2_6>(kernelSource, announcement, Cumulative(10));
}
