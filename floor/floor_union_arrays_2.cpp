#include "floor/floor_case.h"

namespace {
const char* kernelSource = KernelText<Operation::floor, Shape::arrays, ElementType::uint_>;
constexpr char announcement[] = "Running test floor_union_arrays_2...";
}  // namespace

class TestCase_floor_union_arrays_2 : public FloorCase<Arrays<cl_uint>> {
 public:
  using FloorCase::FloorCase;

  bool Run() override {
    Fill();
    Reference();
    RoundTrip();
    return CheckEveryLane("  c:");
  }
};

int RunTest_floor_union_arrays_2() {
  return RunTest<TestCase_floor_union_arrays_2>(kernelSource, announcement, Cumulative(10));
}
