#include "floor/floor_case.h"

namespace {
const char* kernelSource = KernelText<Operation::floor, Shape::arrays, ElementType::short_>;
constexpr char announcement[] = "Running test floor_union_arrays_3...";
}  // namespace

class TestCase_floor_union_arrays_3 : public FloorCase<Arrays<cl_short>> {
 public:
  using FloorCase::FloorCase;

  bool Run() override {
    Fill();
    Reference();
    RoundTrip();
    return CheckEveryLane("  c:");
  }
};

int RunTest_floor_union_arrays_3() {
  return RunTest<TestCase_floor_union_arrays_3>(kernelSource, announcement, Cumulative(10));
}
