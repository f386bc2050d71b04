#include "power/power_case.h"

namespace {
const char* kernelSource = KernelText<Operation::power, Shape::scalar, ElementType::short_>;
constexpr char announcement[] = "Running test power_union_scalar_3...";
}  // namespace

class TestCase_power_union_scalar_3 : public PowerCase<Scalar<cl_short>> {
 public:
  using PowerCase::PowerCase;

  bool Run() override {
    FillRepeatedly(4);
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

int RunTest_power_union_scalar_3() {
  return RunTest<TestCase_power_union_scalar_3>(kernelSource, announcement, PerRepetition(10));
}
