#include "add/add_case.h"

class TestCase_add_union_vector2_3 : public AddCase<Vector2<cl_short>> {
 public:
  using AddCase::AddCase;

  static inline const char* kernelSource = KernelText<Operation::add, Layout>;
  static constexpr char announcement[] = "Running test add_union_vector2_3...";

  bool Run() override {
    Fill();
    Reference(FlushDenormal);
    RoundTrip();
    return CheckUlps(2);
  }
};

int RunTest_add_union_vector2_3() { return RunTest<TestCase_add_union_vector2_3>(Cumulative(10)); }
