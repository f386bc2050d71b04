#include "floor/floor_case.h"

namespace {
const char* kernelSource = KernelText<Operation::floor, Shape::arrays, ElementType::int_>;
constexpr char announcement[] = "Running test floor_union_arrays_1...";
}  // namespace

class TestCase_floor_union_arrays_1 : public FloorCase<Arrays<cl_int>> {
 public:
  using FloorCase::FloorCase;

  bool Run() override {
    Fill();
    Reference();
    RoundTrip();
    return CheckEveryLane("  c:");
  }
};

int RunTest_floor_union_arrays_1() {
  return RunTest<TestCase_floor_union_arrays_1>(kernelSource, announcement, Cumulative(10));
}
