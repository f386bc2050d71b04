#include "floor/floor_case.h"

class TestCase_floor_union_vector16_5 : public FloorCase<Vector16<cl_char>> {
 public:
  using FloorCase::FloorCase;

  static inline const char* kernelSource = KernelText<Operation::floor, Layout>;
  static constexpr char announcement[] = "Running test floor_union_vector16_5...";

  bool Run() override {
    Fill();
    Reference();
    RoundTrip();
    return CheckAnyLane("c:");
  }
};

int RunTest_floor_union_vector16_5() {
  return RunTest<TestCase_floor_union_vector16_5>(Cumulative(10));
}
