#include "power/power_case.h"

namespace {
const char* kernelSource = KernelText<Operation::power, Shape::arrays, ElementType::int_>;
constexpr char announcement[] = "Running test power_union_arrays_1...";
}  // namespace

class TestCase_power_union_arrays_1 : public PowerCase<Arrays<cl_int>> {
 public:
  using PowerCase::PowerCase;

  bool Run() override {
    Fill();
    Reference(LaneIndex);
    RoundTrip();
    return Check({
        .ulpTolerance = 128,
        .elements = numElements_,
        .xLabel = "  x: ",
        .yLabel = "  y: ",
    });
  }
};

int RunTest_power_union_arrays_1() {
  return RunTest<TestCase_power_union_arrays_1>(kernelSource, announcement, PerRepetition(10));
}
