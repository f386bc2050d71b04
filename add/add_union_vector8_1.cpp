#include "add/add_case.h"

namespace {
const char* kernelSource = KernelText<Operation::add, Shape::vector8, ElementType::int_>;
constexpr char announcement[] = "Running test add_union_vector8_1...";
}  // namespace

class TestCase_add_union_vector8_1 : public AddCase<Vector8<cl_int>> {
 public:
  using AddCase::AddCase;

  bool Run() override {
    Fill();
    Reference(FlushDenormal);
    RoundTrip();
    return CheckUlps(2);
  }
};

int RunTest_add_union_vector8_1() {
  return RunTest<TestCase_add_union_vector8_1>(kernelSource, announcement, Cumulative(10));
}
