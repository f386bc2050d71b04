#include "power/power_case.h"

namespace {
const char* kernelSource = KernelText<Operation::power, Shape::vector2, ElementType::uchar_>;
constexpr char announcement[] = "Running test power_union_vector2_6...";
}  // namespace

class TestCase_power_union_vector2_6 : public PowerCase<Vector2<cl_uchar>> {
 public:
  using PowerCase::PowerCase;

  bool Run() override {
    Fill();
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

int RunTest_power_union_vector2_6() {
  return RunTest<TestCase_power_union_vector2_6>(kernelSource, announcement, PerRepetition(10));
}
