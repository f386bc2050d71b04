#include "copy/copy_case.h"

namespace {
const char* kernelSource = KernelText<Operation::copy, Shape::scalar, ElementType::int_>;
constexpr char announcement[] = "Running test copy_union_scalar_1...";
}  // namespace

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
  return RunTest<TestCase_copy_union_scalar_1>(kernelSource, announcement, OneRun(10));
}
