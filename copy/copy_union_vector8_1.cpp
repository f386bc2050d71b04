#include "copy/copy_case.h"

namespace {
const char* kernelSource = KernelText<Operation::copy, Shape::vector8, ElementType::int_>;
constexpr char announcement[] = "Running test copy_union_vector8_1...";
}  // namespace

class TestCase_copy_union_vector8_1 : public CopyCase<Vector8<cl_int>> {
 public:
  using CopyCase::CopyCase;

  bool Run() override {
    Fill();
    Reference();
    RoundTrip();
    return CheckAnyLane("c:");
  }
};

int RunTest_copy_union_vector8_1() {
  return RunTest<TestCase_copy_union_vector8_1>(kernelSource, announcement, Cumulative(10));
}
