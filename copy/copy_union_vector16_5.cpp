#include "copy/copy_case.h"

namespace {
const char* kernelSource = KernelText<Operation::copy, Shape::vector16, ElementType::char_>;
constexpr char announcement[] = "Running test copy_union_vector16_5...";
}  // namespace

class TestCase_copy_union_vector16_5 : public CopyCase<Vector16<cl_char>> {
 public:
  using CopyCase::CopyCase;

  bool Run() override {
    Fill();
    Reference();
    RoundTrip();
    return CheckAnyLane("c:");
  }
};

int RunTest_copy_union_vector16_5() {
  return RunTest<TestCase_copy_union_vector16_5>(kernelSource, announcement, Cumulative(10));
}
