#include "copy/copy_case.h"

namespace {
const char* kernelSource = KernelText<Operation::copy, Shape::arrays, ElementType::uchar_>;
constexpr char announcement[] = "Running test copy_union_arrays_6...";
}  // namespace

class TestCase_copy_union_arrays_6 : public CopyCase<Arrays<cl_uchar>> {
 public:
  using CopyCase::CopyCase;

  bool Run() override {
    Fill();
    Reference();
    RoundTrip();
    return CheckEveryLane("c:");
  }
};

int RunTest_copy_union_arrays_6() {
  return RunTest<TestCase_copy_union_arrays_6>(kernelSource, announcement, Cumulative(10));
}
