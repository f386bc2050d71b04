#include "power/power_case.h"

namespace {
const char* kernelSource = KernelText<Operation::power, Shape::vector8, ElementType::uchar_>;
constexpr char announcement[] = "Running test power_union_vector8_6...";
}  // namespace

class TestCase_power_union_vector8_6 : public PowerCase<Vector8<cl_uchar>> {
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

int RunTest_power_union_vector8_6() {
  return RunTest<TestCase_power_union_vector8_6>(kernelSource, announcement, PerRepetition(10));
}
