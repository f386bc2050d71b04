#include "power/power_case.h"

class TestCase_power_union_vector16_3 : public PowerCase<Vector16<cl_short>> {
 public:
  using PowerCase::PowerCase;

  static inline const char* kernelSource = KernelText<Operation::power, Layout>;
  static constexpr char announcement[] = "Running test power_union_vector16_3...";

  bool Run() override {
    Fill();
    Reference(ElementIndex);
    RoundTrip();
    return Check({
        .ulpTolerance = 256,
        .elements = numElements_,
        .xLabel = "  x: ",
        .yLabel = "  y: ",
    });
  }
};

int RunTest_power_union_vector16_3() {
  return RunTest<TestCase_power_union_vector16_3>(PerRepetition(10));
}
