#include "power/power_case.h"

class TestCase_power_union_vector8_1 : public PowerCase<Vector8<cl_int>> {
 public:
  using PowerCase::PowerCase;

  static inline const char* kernelSource = KernelText<Operation::power, Layout>;
  static constexpr char announcement[] = "Running test power_union_vector8_1...";

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

int RunTest_power_union_vector8_1() {
  return RunTest<TestCase_power_union_vector8_1>(PerRepetition(10));
}
