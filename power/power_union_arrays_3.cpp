#include "power/power_case.h"

namespace {
const char* kernelSource = KernelText<Operation::power, Shape::arrays, ElementType::short_>;
constexpr char announcement[] = "Running test power_union_arrays_3...";
}  // namespace

class TestCase_power_union_arrays_3 : public PowerCase<Arrays<cl_short>> {
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

int RunTest_power_union_arrays_3() {
  return RunTest<TestCase_power_union_arrays_3>(kernelSource, announcement, PerRepetition(10));
}
