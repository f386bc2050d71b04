#include "floor/floor_case.h"

namespace {
const char* kernelSource = KernelText<Operation::floor, Shape::vector4, ElementType::int_>;
constexpr char announcement[] = "Running test floor_union_vector4_1...";
}  // namespace

class TestCase_floor_union_vector4_1 : public FloorCase<Vector4<cl_int>> {
 public:
  using FloorCase::FloorCase;

  bool Run() override {
    Fill();
    Reference();
    RoundTrip();
    return CheckAnyLane("c:");
  }
};

int RunTest_floor_union_vector4_1() {
  return RunTest<TestCase_floor_union_vector4_1>(kernelSource, announcement, Cumulative(10));
}
