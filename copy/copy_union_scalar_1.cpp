#include "copy/copy_case.h"

namespace {
const char* kernelSource = KernelText<Operation::copy, Shape::scalar, Element::int_>;
}

class TestCase_copy_union_scalar_1 : public CopyCase<Scalar<cl_int>> {
 public:
  using CopyCase::CopyCase;

  bool Run() override {
    Fill();
    Reference();
    RoundTrip();
    return CheckEveryLane("c:");
  }
};

int RunTest_copy_union_scalar_1() {
  return RunTest<TestCase_copy_union_scalar_1>(kernelSource, "Running test copy_union_scalar_1...",
                                               OneRun(10));
}
