#include "floor/floor_case.h"

class TestCase_floor_union_vector4_4 : public FloorCase<Vector4<cl_ushort>> {
 public:
  using FloorCase::FloorCase;

  static inline const char* kernelSource = KernelText<Operation::floor, Layout>;
  static constexpr char announcement[] = "Running test floor_union_vector4_4...";

  bool Run() override {
    Fill();
    Reference();
    RoundTrip();
    return CheckAnyLane("c:");
  }
};

int RunTest_floor_union_vector4_4() {
  return RunTest<TestCase_floor_union_vector4_4>(Cumulative(10));
}
