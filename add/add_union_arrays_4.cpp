#include "add/add_case.h"

namespace {
const char* kernelSource = KernelText<Operation::add, Shape::arrays, ElementType::ushort_>;
constexpr char announcement[] = "Running test add_union_arrays_4...";
}  // namespace

class TestCase_add_union_arrays_4 : public AddCase<Arrays<cl_ushort>> {
 public:
  using AddCase::AddCase;

  bool Run() override {
    Fill();
    Reference(FlushDenormal);
    RoundTrip();
    return CheckUlps(2);
  }
};

int RunTest_add_union_arrays_4() {
  return RunTest<TestCase_add_union_arrays_4>(kernelSource, announcement, Cumulative(10));
}
