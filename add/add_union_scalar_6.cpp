#include "add/add_case.h"

class TestCase_add_union_scalar_6 : public AddCase<Scalar<cl_uchar>> {
 public:
  using AddCase::AddCase;

  static inline const char* kernelSource = KernelText<Operation::add, Layout>;
  static constexpr char announcement[] = "Running test add_union_scalar_6...";

  bool Run() override {
    Fill();
    Reference(Unflushed);
    RoundTrip();
    return CheckUlps(2);
  }
};

int RunTest_add_union_scalar_6() { return RunTest<TestCase_add_union_scalar_6>(Cumulative(10)); }
