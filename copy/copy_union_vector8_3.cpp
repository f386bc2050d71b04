#include "copy/copy_case.h"

namespace {
const char* kernelSource = KernelText<Operation::copy, Shape::vector8, ElementType::short_>;
constexpr char announcement[] = "Running test copy_union_vector8_3...";
}  // namespace

class TestCase_copy_union_vector8_3 : public CopyCase<Vector8<cl_short>> {
 public:
  using CopyCase::CopyCase;

  bool Run() override {
    Fill();
    Reference();
    RoundTrip();
    return CheckAnyLane("c:");
  }
};

int RunTest_copy_union_vector8_3() {
  return RunTest<TestCase_copy_union_vector8_3>(kernelSource, announcement, Cumulative(10));
}
