#include "copy/copy_case.h"

namespace {
const char* kernelSource = KernelText<Operation::copy, Shape::scalar, ElementType::char_>;
constexpr char announcement[] = "Running test copy_union_scalar_5...";
}  // namespace

class TestCase_copy_union_scalar_5 : public CopyCase<Scalar<cl_char>> {
 public:
  using CopyCase::CopyCase;

  bool Run() override {
    Fill();
    Reference();
    RoundTrip();
    return CheckEveryLane("c:");
  }
};

int RunTest_copy_union_scalar_5() {
  return RunTest<TestCase_copy_union_scalar_5>(kernelSource, announcement, OneRun(10));
}
