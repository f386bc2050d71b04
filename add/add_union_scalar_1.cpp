#include "add/add_case.h"

namespace {
const char* kernelSource = KernelText<Operation::add, Shape::scalar, ElementType::int_>;
constexpr char announcement[] = "Running test add_union_scalar_1...";
}  // namespace

class TestCase_add_union_scalar_1 : public AddCase<Scalar<cl_int>> {
 public:
  using AddCase::AddCase;

  bool Run() override {
    Fill();
    Reference(Unflushed);
    RoundTrip();
    return CheckUlps(2);
  }
};

int RunTest_add_union_scalar_1() {
  return RunTest<TestCase_add_union_scalar_1>(kernelSource, announcement, Cumulative(10));
}
