#include "floor/floor_case.h"

namespace {
const char* kernelSource = KernelText<Operation::floor, Shape::arrays, ElementType::uchar_>;
constexpr char announcement[] = "Running test floor_union_arrays_6...";
}  // namespace

class TestCase_floor_union_arrays_6 : public FloorCase<Arrays<cl_uchar>> {
 public:
  using FloorCase::FloorCase;

  bool Run() override {
    Fill();
    Reference();
    RoundTrip();
    return CheckEveryLane("  c:");
  }
};

int RunTest_floor_union_arrays_6() {
  return RunTest<TestCase_floor_union_arrays_6>(kernelSource, announcement, Cumulative(10));
}
