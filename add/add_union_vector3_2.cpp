#include "add/add_case.h"

class TestCase_add_union_vector3_2 : public AddCase<Vector3<cl_uint>> {
 public:
  using AddCase::AddCase;

  static inline const char* kernelSource = KernelText<Operation::add, Layout>;
  static constexpr char announcement[] = "Running test add_union_vector3_2...";

  bool Run() override {
    Fill();
    Reference(FlushDenormal);
    RoundTrip();
    return CheckUlps(2);
  }
};

int RunTest_add_union_vector3_2() { return RunTest<TestCase_add_union_vector3_2>(Cumulative(10)); }
