#include "copy/copy_case.h"

namespace {
const char* kernelSource = KernelText<Operation::copy, Shape::vector2, ElementType::uchar_>;
constexpr char announcement[] = "Running test copy_union_vector2_6...";
}  // namespace

class TestCase_copy_union_vector2_6 : public CopyCase<Vector2<cl_uchar>> {
 public:
  using CopyCase::CopyCase;

  bool Run() override {
    Fill();
    Reference();
    RoundTrip();
    return CheckAnyLane("c:");
  }
};

int RunTest_copy_union_vector2_6() {
  return RunTest<TestCase_copy_union_vector2_6>(kernelSource, announcement, Cumulative(10));
}
