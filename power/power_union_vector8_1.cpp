#include "power/power_case.h"

namespace {
const char* kernelSource = KernelText<Operation::power, Shape::vector8, ElementType::int_>;
constexpr char announcement[] = "Running test power_union_vector8_1...";
}  // namespace

class TestCase_power_union_vector8_1 : public PowerCase<Vector8<cl_int>> {
 public:
  using PowerCase::PowerCase;

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
  return RunTest<TestCase_power_union_vector8_1>(kernelSource, announcement, PerRepetition(10));
}
