#include "floor/floor_case.h"

namespace {
const char* kernelSource = KernelText<Operation::floor, Shape::vector3, ElementType::short_>;
constexpr char announcement[] = "Running test floor_union_vector3_3...";
}  // namespace

class TestCase_floor_union_vector3_3 : public FloorCase<Vector3<cl_short>> {
 public:
  using FloorCase::FloorCase;

  bool Run() override {
    Fill();
    Reference();
    RoundTrip();
    return CheckAnyLane("c:");
  }
};

int RunTest_floor_union_vector3_3() {
  return RunTest<TestCase_floor_union_vector3_3>(kernelSource, announcement, Cumulative(10));
}
