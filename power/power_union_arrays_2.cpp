#include "power/power_case.h"

class TestCase_power_union_arrays_2 : public PowerCase<Arrays<cl_uint>> {
 public:
  using PowerCase::PowerCase;

  static inline const char* kernelSource = KernelText<Operation::power, Layout>;
  static constexpr char announcement[] = "Running test power_union_arrays_2...";

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

int RunTest_power_union_arrays_2() {
  return RunTest<TestCase_power_union_arrays_2>(PerRepetition(10));
}
