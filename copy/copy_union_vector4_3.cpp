#include "copy/copy_case.h"

namespace {
const char* kernelSource = KernelText<Operation::copy, Shape::vector4, ElementType::short_>;
constexpr char announcement[] = "Running test copy_union_vector4_3...";
}  // namespace

class TestCase_copy_union_vector4_3 : public CopyCase<Vector4<cl_short>> {
 public:
  using CopyCase::CopyCase;

  bool Run() override {
    Fill();
    Reference();
    RoundTrip();
    return CheckAnyLane("c:");
  }
};

int RunTest_copy_union_vector4_3() {
  return RunTest<TestCase_copy_union_vector4_3>(kernelSource, announcement, Cumulative(10));
}
