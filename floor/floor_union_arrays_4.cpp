#include "floor/floor_case.h"

namespace {
const char* kernelSource = KernelText<Operation::floor, Shape::arrays, ElementType::ushort_>;
constexpr char announcement[] = "Running test floor_union_arrays_4...";
}  // namespace

class TestCase_floor_union_arrays_4 : public FloorCase<Arrays<cl_ushort>> {
 public:
  using FloorCase::FloorCase;

  bool Run() override {
    Fill();
    Reference();
    RoundTrip();
    return CheckEveryLane("  c:");
  }
};

int RunTest_floor_union_arrays_4() {
  return RunTest<TestCase_floor_union_arrays_4>(kernelSource, announcement, Cumulative(10));
}
