#include "add/add_case.h"

namespace {
const char* kernelSource = KernelText<Operation::add, Shape::vector4, ElementType::ushort_>;
constexpr char announcement[] = "Running test add_union_vector4_4...";
}  // namespace

class TestCase_add_union_vector4_4 : public AddCase<Vector4<cl_ushort>> {
 public:
  using AddCase::AddCase;

  bool Run() override {
    Fill();
    Reference(FlushDenormal);
    RoundTrip();
    return CheckUlps(2);
  }
};

int RunTest_add_union_vector4_4() {
  return RunTest<TestCase_add_union_vector4_4>(kernelSource, announcement, Cumulative(10));
}
