#include "copy/copy_case.h"

namespace {
const char* kernelSource = KernelText<Operation::copy, Shape::arrays, ElementType::int_>;
constexpr char announcement[] = "Running test copy_union_arrays_1...";
}  // namespace

class TestCase_copy_union_arrays_1 : public CopyCase<Arrays<cl_int>> {
 public:
  using CopyCase::CopyCase;

  bool Run() override {
    Fill();
    Reference();
    RoundTrip();
    return CheckEveryLane("c:");
  }
};

int RunTest_copy_union_arrays_1() {
  return RunTest<TestCase_copy_union_arrays_1>(kernelSource, announcement, Cumulative(10));
}
