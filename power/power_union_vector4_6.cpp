#include "power/power_case.h"

class TestCase_power_union_vector4_6 : public PowerCase<Vector4<cl_uchar>> {
 public:
  using PowerCase::PowerCase;

  static inline const char* kernelSource = KernelText<Operation::power, Layout>;
  static constexpr char announcement[] = "Running test power_union_vector4_6...";

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

int RunTest_power_union_vector4_6() {
  return RunTest<TestCase_power_union_vector4_6>(PerRepetition(10));
}
