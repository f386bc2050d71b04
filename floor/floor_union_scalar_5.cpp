#include "floor/floor_case.h"

namespace {
const char* kernelSource = KernelText<Operation::floor, Shape::scalar, ElementType::char_>;
constexpr char announcement[] = "Running test floor_union_scalar_5...";
}  // namespace

class TestCase_floor_union_scalar_5 : public FloorCase<Scalar<cl_char>> {
 public:
  using FloorCase::FloorCase;

  bool Run() override {
    Fill();
    Reference();
    RoundTrip();
    return CheckEveryLane("  c:");
  }
};

int RunTest_floor_union_scalar_5() {
  return RunTest<TestCase_floor_union_scalar_5>(kernelSource, announcement, Cumulative(10));
}
