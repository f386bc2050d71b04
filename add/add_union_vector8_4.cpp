#include "add/add_case.h"

class TestCase_add_union_vector8_4 : public AddCase<Vector8<cl_ushort>> {
 public:
  using AddCase::AddCase;

  static inline const char* kernelSource = KernelText<Operation::add, Layout>;
  static constexpr char announcement[] = "Running test add_union_vector8_4...";

  bool Run() override {
    Fill();
    Reference(FlushDenormal);
    RoundTrip();
    return CheckUlps(2);
  }
};

int RunTest_add_union_vector8_4() { return RunTest<TestCase_add_union_vector8_4>(Cumulative(10)); }
