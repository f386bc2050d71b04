#include "copy/copy_case.h"

namespace {
const char* kernelSource = KernelText<Operation::copy, Shape::vector16, ElementType::int_>;
constexpr char announcement[] = "Running test copy_union_vector16_1...";
}  // namespace

class TestCase_copy_union_vector16_1 : public CopyCase<Vector16<cl_int>> {
 public:
  using CopyCase::CopyCase;

  bool Run() override {
    Fill();
    Reference();
    RoundTrip();
    return CheckAnyLane("c:");
  }
};

int RunTest_copy_union_vector16_1() {
  return RunTest<TestCase_copy_union_vector16_1>(kernelSource, announcement, Cumulative(10));
}
