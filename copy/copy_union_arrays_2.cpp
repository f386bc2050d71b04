#include "copy/copy_case.h"

namespace {
const char* kernelSource = KernelText<Operation::copy, Shape::arrays, ElementType::uint_>;
constexpr char announcement[] = "Running test copy_union_arrays_2...";
}  // namespace

class TestCase_copy_union_arrays_2 : public CopyCase<Arrays<cl_uint>> {
 public:
  using CopyCase::CopyCase;

  bool Run() override {
    Fill();
    Reference();
    RoundTrip();
    return CheckEveryLane("c:");
  }
};

int RunTest_copy_union_arrays_2() {
  return RunTest<TestCase_copy_union_arrays_2>(kernelSource, announcement, Cumulative(10));
}
