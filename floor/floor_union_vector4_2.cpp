#include "floor/floor_case.h"

namespace {
const char* kernelSource = KernelText<Operation::floor, Shape::vector4, ElementType::uint_>;
constexpr char announcement[] = "Running test floor_union_vector4_2...";
}  // namespace

class TestCase_floor_union_vector4_2 : public FloorCase<Vector4<cl_uint>> {
 public:
  using FloorCase::FloorCase;

  bool Run() override {
    Fill();
    Reference();
    RoundTrip();
    return CheckAnyLane("c:");
  }
};

int RunTest_floor_union_vector4_2() {
  return RunTest<TestCase_floor_union_vector4_2>(kernelSource, announcement, Cumulative(10));
}
