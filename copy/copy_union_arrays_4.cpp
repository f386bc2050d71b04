#include "copy/copy_case.h"

namespace {
const char* kernelSource = KernelText<Operation::copy, Shape::arrays, ElementType::ushort_>;
constexpr char announcement[] = "Running test copy_union_arrays_4...";
}  // namespace

class TestCase_copy_union_arrays_4 : public CopyCase<Arrays<cl_ushort>> {
 public:
  using CopyCase::CopyCase;

  bool Run() override {
    Fill();
    Reference();
    RoundTrip();
    return CheckEveryLane("c:");
  }
};

int RunTest_copy_union_arrays_4() {
  return RunTest<TestCase_copy_union_arrays_4>(kernelSource, announcement, Cumulative(10));
}
