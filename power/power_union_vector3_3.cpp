#include "power/power_case.h"

namespace {
const char* kernelSource = KernelText<Operation::power, Shape::vector3, ElementType::short_>;
constexpr char announcement[] = "Running test power_union_vector3_3...";
}  // namespace

class TestCase_power_union_vector3_3 : public PowerCase<Vector3<cl_short>> {
 public:
  using PowerCase::PowerCase;

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
  return RunTest<TestCase_power_union_vector3_3>(kernelSource, announcement, PerRepetition(10));
}
