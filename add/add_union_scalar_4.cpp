#include "add/add_case.h"

namespace {
const char* kernelSource = KernelText<Operation::add, Shape::scalar, ElementType::ushort_>;
constexpr char announcement[] = "Running test add_union_scalar_4...";
}  // namespace

class TestCase_add_union_scalar_4 : public AddCase<Scalar<cl_ushort>> {
 public:
  using AddCase::AddCase;

  bool Run() override {
    Fill();
    Reference(Unflushed);
    RoundTrip();
    return CheckUlps(2);
  }
};

int RunTest_add_union_scalar_4() {
  return RunTest<TestCase_add_union_scalar_4>(kernelSource, announcement, Cumulative(10));
}
