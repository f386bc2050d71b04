#include "power/power_case.h"

class TestCase_power_union_vector3_4 : public PowerCase<Vector3<cl_ushort>> {
 public:
  using PowerCase::PowerCase;

  static inline const char* kernelSource = KernelText<Operation::power, Layout>;
  static constexpr char announcement[] = "Running test power_union_vector3_4...";

  bool Run() override {
    Fill();
    Reference(ElementIndex);
    RoundTrip();
    return Check({
        .ulpTolerance = 512,
        .elements = numElements_,
        .xLabel = "  x: ",
        .yLabel = "  y: ",
    });
  }
};

int RunTest_power_union_vector3_4() {
  return RunTest<TestCase_power_union_vector3_4>(PerRepetition(9));
}
