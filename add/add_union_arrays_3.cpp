#include "add/add_case.h"

class TestCase_add_union_arrays_3 : public AddCase<Arrays<cl_short>> {
 public:
  using AddCase::AddCase;

  static inline const char* kernelSource = KernelText<Operation::add, Layout>;
  static constexpr char announcement[] = "Running test add_union_arrays_3...";

  bool Run() override {
    Fill();
    Reference(FlushDenormal);
    RoundTrip();
    return CheckUlps(2);
  }
};

int RunTest_add_union_arrays_3() { return RunTest<TestCase_add_union_arrays_3>(Cumulative(10)); }
