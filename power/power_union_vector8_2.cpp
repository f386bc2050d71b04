#include "power/power_case.h"

namespace {
const char* kernelSource = KernelText<Operation::power, Shape::vector8, ElementType::uint_>;
constexpr char announcement[] = "Running test power_union_vector8_2...";
}  // namespace

class TestCase_power_union_vector8_2 : public PowerCase<Vector8<cl_uint>> {
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

int RunTest_power_union_vector8_2() {
  return RunTest<TestCase_power_union_vector8_2>(kernelSource, announcement, PerRepetition(10));
}
