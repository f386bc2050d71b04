#include "add/add_case.h"

namespace {
const char* kernelSource = KernelText<Operation::add, Shape::vector16, ElementType::ushort_>;
constexpr char announcement[] = "Running test add_union_vector16_4...";
}  // namespace

class TestCase_add_union_vector16_4 : public AddCase<Vector16<cl_ushort>> {
 public:
  using AddCase::AddCase;

  bool Run() override {
    Fill();
    Reference(FlushDenormal);
    RoundTrip();
    return CheckUlps(2);
  }
};

int RunTest_add_union_vector16_4() {
  return RunTest<TestCase_add_union_vector16_4>(kernelSource, announcement, Cumulative(10));
}
