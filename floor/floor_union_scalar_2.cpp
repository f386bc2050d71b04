#include "floor/floor_case.h"

class TestCase_floor_union_scalar_2 : public FloorCase<Scalar<cl_uint>> {
 public:
  using FloorCase::FloorCase;

  static inline const char* kernelSource = KernelText<Operation::floor, Layout>;
  static constexpr char announcement[] = "Running test floor_union_scalar_2...";

  bool Run() override {
    Fill();
    Reference();
    RoundTrip();
    return CheckEveryLane("  c:");
  }
};

int RunTest_floor_union_scalar_2() {
  return RunTest<TestCase_floor_union_scalar_2>(Cumulative(10));
}
