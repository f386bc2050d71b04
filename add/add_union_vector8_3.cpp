#include "add/add_case.h"

namespace {
const char* kernelSource = KernelText<Operation::add, Shape::vector8, ElementType::short_>;
constexpr char announcement[] = "Running test add_union_vector8_3...";
}  // namespace

class TestCase_add_union_vector8_3 : public AddCase<Vector8<cl_short>> {
 public:
  using AddCase::AddCase;

  bool Run() override {
    Fill();
    Reference(FlushDenormal);
    RoundTrip();
    return CheckUlps(2);
  }
};

int RunTest_add_union_vector8_3() {
  return RunTest<TestCase_add_union_vector8_3>(kernelSource, announcement, Cumulative(10));
}
