#include "copy/copy_case.h"

namespace {
const char* kernelSource = KernelText<Operation::copy, Shape::scalar, Element::uint_>;
}

class TestCase_copy_union_scalar_2 : public CopyCase<Scalar<cl_uint>> {
 public:
  using CopyCase::CopyCase;

  bool Run() override {
    Fill();
    Reference();
    RoundTrip();
    return CheckEveryLane("c:");
  }
};

int RunTest_copy_union_scalar_2() {
  return RunTest<TestCase_copy_union_scalar_2>(kernelSource, "Running test copy_union_scalar_2...",
                                               Cumulative(10));
}
