#include "copy/copy_case.h"

namespace {
const char* kernelSource = KernelText<Operation::copy, Shape::vector4, ElementType::uint_>;
constexpr char announcement[] = "Running test copy_union_vector4_2...";
}  // namespace

class TestCase_copy_union_vector4_2 : public CopyCase<Vector4<cl_uint>> {
 public:
  using CopyCase::CopyCase;

  bool Run() override {
    Fill();
    Reference();
    RoundTrip();
    return CheckAnyLane("c:");
  }
};

int RunTest_copy_union_vector4_2() {
  return RunTest<TestCase_copy_union_vector4_2>(kernelSource, announcement, Cumulative(10));
}
