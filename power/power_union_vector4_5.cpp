#include "power/power_case.h"

namespace {
const char* kernelSource = KernelText<Operation::power, Shape::vector4, ElementType::char_>;
constexpr char announcement[] = "Running test power_union_vector4_5...";
}  // namespace

class TestCase_power_union_vector4_5 : public PowerCase<Vector4<cl_char>> {
 public:
  using PowerCase::PowerCase;

  bool Run() override {
    Fill();
    Reference(ElementIndex);
    RoundTrip();
    return Check({
        .ulpTolerance = 256,
        .elements = numElements_,
        .xLabel = "  x:",
        .yLabel = "  y:",
    });
  }
};

int RunTest_power_union_vector4_5() {
  return RunTest<TestCase_power_union_vector4_5>(kernelSource, announcement, PerRepetition(10));
}
