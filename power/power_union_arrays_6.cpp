#include "power/power_case.h"

namespace {
const char* kernelSource = KernelText<Operation::power, Shape::arrays, ElementType::uchar_>;
constexpr char announcement[] = "Running test power_union_arrays_6...";
}  // namespace

class TestCase_power_union_arrays_6 : public PowerCase<Arrays<cl_uchar>> {
 public:
  using PowerCase::PowerCase;

  bool Run() override {
    Fill();
    Reference(LaneIndex);
    RoundTrip();
    return Check({
        .ulpTolerance = 128,
        .elements = numElements_,
        .xLabel = "  x: ",
        .yLabel = "  y: ",
    });
  }
};

int RunTest_power_union_arrays_6() {
  return RunTest<TestCase_power_union_arrays_6>(kernelSource, announcement, PerRepetition(10));
}
