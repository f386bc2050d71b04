#include "power/power_case.h"

class TestCase_power_union_vector8_2 : public PowerCase<Vector8<cl_uint>> {
 public:
  using PowerCase::PowerCase;

  static inline const char* kernelSource = KernelText<Operation::power, Layout>;
  static constexpr char announcement[] = "Running test power_union_vector8_2...";

  bool Run() override {
    Fill();
    Reference(ElementIndex);
    RoundTrip();
    return Check({
        .ulpTolerance = 128,
        .elements = numElements_,
        .xLabel = "  x:",
        .yLabel = "  y:",
    });
  }
};

int RunTest_power_union_vector8_2() {
  return RunTest<TestCase_power_union_vector8_2>(PerRepetition(10));
}
