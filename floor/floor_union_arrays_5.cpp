#include "floor/floor_case.h"

namespace {
const char* kernelSource = KernelText<Operation::floor, Shape::arrays, ElementType::char_>;
constexpr char announcement[] = "Running test floor_union_arrays_5...";
}  // namespace

class TestCase_floor_union_arrays_5 : public FloorCase<Arrays<cl_char>> {
 public:
  using FloorCase::FloorCase;

  bool Run() override {
    Fill();
    Reference();
    RoundTrip();
    return CheckEveryLane("  c:");
  }
};

int RunTest_floor_union_arrays_5() {
  return RunTest<TestCase_floor_union_arrays_5>(kernelSource, announcement, Cumulative(10));
}
