#include "copy/copy_case.h"

namespace {
const char* kernelSource = KernelText<Operation::copy, Shape::vector16, ElementType::uint_>;
constexpr char announcement[] = "Running test copy_union_vector16_2...";
}  // namespace

class TestCase_copy_union_vector16_2 : public CopyCase<Vector16<cl_uint>> {
 public:
  using CopyCase::CopyCase;

  bool Run() override {
    Fill();
    Reference();
    RoundTrip();
    return CheckAnyLane("c:");
  }
};

int RunTest_copy_union_vector16_2() {
  return RunTest<TestCase_copy_union_vector16_2>(kernelSource, announcement, Cumulative(10));
}
