#include "add/add_case.h"

namespace {
const char* kernelSource = KernelText<Operation::add, Shape::scalar, Element::ushort_>;
}

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
  return RunTest<TestCase_add_union_scalar_4>(kernelSource, "Running test add_union_scalar_4...",
                                              Cumulative(10));
}
