#include "copy/copy_case.h"

namespace {
const char* kernelSource = KernelText<Operation::copy, Shape::arrays, ElementType::short_>;
constexpr char announcement[] = "Running test copy_union_arrays_3...";
}  // namespace

class TestCase_copy_union_arrays_3 : public CopyCase<Arrays<cl_short>> {
 public:
  using CopyCase::CopyCase;

  bool Run() override {
    Fill();
    Reference();
    RoundTrip();
    return CheckEveryLane("c:");
  }
};

int RunTest_copy_union_arrays_3() {
  return RunTest<TestCase_copy_union_arrays_3>(kernelSource, announcement, Cumulative(10));
}
