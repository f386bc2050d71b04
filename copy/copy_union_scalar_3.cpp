#include "copy/copy_case.h"

namespace {
const char* kernelSource = KernelText<Operation::copy, Shape::scalar, ElementType::short_>;
constexpr char announcement[] = "Running test copy_union_scalar_3...";
}  // namespace

class TestCase_copy_union_scalar_3 : public CopyCase<Scalar<cl_short>> {
 public:
  using CopyCase::CopyCase;

  bool Run() override {
    Fill();
    Reference();
    RoundTrip();
    return CheckEveryLane("c:");
  }
};

int RunTest_copy_union_scalar_3() {
  return RunTest<TestCase_copy_union_scalar_3>(kernelSource, announcement, OneRun(10));
}
