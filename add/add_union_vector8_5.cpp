#include "add/add_case.h"

namespace {
const char* kernelSource = KernelText<Operation::add, Shape::vector8, ElementType::char_>;
constexpr char announcement[] = "Running test add_union_vector8_5...";
}  // namespace

class TestCase_add_union_vector8_5 : public AddCase<Vector8<cl_char>> {
 public:
  using AddCase::AddCase;

  bool Run() override {
    Fill();
    Reference(FlushDenormal);
    RoundTrip();
    return CheckUlps(2);
  }
};

int RunTest_add_union_vector8_5() {
  return RunTest<TestCase_add_union_vector8_5>(kernelSource, announcement, Cumulative(10));
}
