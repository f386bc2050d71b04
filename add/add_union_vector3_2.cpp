#include "add/add_case.h"

namespace {
const char* kernelSource = KernelText<Operation::add, Shape::vector3, ElementType::uint_>;
constexpr char announcement[] = "Running test add_union_vector3_2...";
}  // namespace

class TestCase_add_union_vector3_2 : public AddCase<Vector3<cl_uint>> {
 public:
  using AddCase::AddCase;

  bool Run() override {
    Fill();
    Reference(FlushDenormal);
    RoundTrip();
    return CheckUlps(2);
  }
};

int RunTest_add_union_vector3_2() {
  return RunTest<TestCase_add_union_vector3_2>(kernelSource, announcement, Cumulative(10));
}
