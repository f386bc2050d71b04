#include "power/power_case.h"

class TestCase_power_union_scalar_5 : public PowerCase<Scalar<cl_char>> {
 public:
  using PowerCase::PowerCase;

  static inline const char* kernelSource = KernelText<Operation::power, Layout>;
  static constexpr char announcement[] = "Running test power_union_scalar_5...";

  bool Run() override {
    FillRepeatedly(4);
    Reference(ElementIndex);
    RoundTrip();
    return Check({
        .ulpTolerance = 128,
        .elements = numElements_,
        .xLabel = "  x: ",
        .yLabel = "  y: ",
    });
  }
};

int RunTest_power_union_scalar_5() {
  return RunTest<TestCase_power_union_scalar_5>(PerRepetition(10));
}
