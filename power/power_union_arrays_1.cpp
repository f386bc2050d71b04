#include "power/power_case.h"

class TestCase_power_union_arrays_1 : public PowerCase<Arrays<cl_int>> {
 public:
  using PowerCase::PowerCase;

  static inline const char* kernelSource = KernelText<Operation::power, Layout>;
  static constexpr char announcement[] = "Running test power_union_arrays_1...";

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
  return RunTest<TestCase_power_union_arrays_1>(PerRepetition(10));
}
