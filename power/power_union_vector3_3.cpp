#include "power/power_case.h"

class TestCase_power_union_vector3_3 : public PowerCase<Vector3<cl_short>> {
 public:
  using PowerCase::PowerCase;

  static inline const char* kernelSource = KernelText<Operation::power, Layout>;
  static constexpr char announcement[] = "Running test power_union_vector3_3...";

  bool Run() override {
    Fill();
    Reference(ElementIndex);
    RoundTrip();
    return Check({
        .ulpTolerance = 128,
        .elements = numElements_ - 1,
        .xLabel = "  x: ",
        .yLabel = "  y: ",
    });
  }
};

int RunTest_power_union_vector3_3() {
  return RunTest<TestCase_power_union_vector3_3>(PerRepetition(10));
}
