#include "add/add_case.h"

class TestCase_add_union_arrays_4 : public AddCase<Arrays<cl_ushort>> {
 public:
  using AddCase::AddCase;

  static inline const char* kernelSource = KernelText<Operation::add, Layout>;
  static constexpr char announcement[] = "Running test add_union_arrays_4...";

  bool Run() override {
    Fill();
    Reference(FlushDenormal);
    RoundTrip();
    return CheckUlps(2);
  }
};

int RunTest_add_union_arrays_4() { return RunTest<TestCase_add_union_arrays_4>(Cumulative(10)); }
