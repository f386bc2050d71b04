#include "power/power_case.h"

namespace {
const char* kernelSource = KernelText<Operation::power, Shape::vector16, ElementType::uchar_>;
constexpr char announcement[] = "Running test power_union_vector16_6...";
}  // namespace

class TestCase_power_union_vector16_6 : public PowerCase<Vector16<cl_uchar>> {
 public:
  using PowerCase::PowerCase;

  bool Run() override {
    Fill();
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

int RunTest_power_union_vector16_6() {
  return RunTest<TestCase_power_union_vector16_6>(kernelSource, announcement, PerRepetition(10));
}
