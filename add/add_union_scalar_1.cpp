#include "add/add_case.h"

class TestCase_add_union_scalar_1 : public AddCase<Scalar<cl_int>> {
 public:
  using AddCase::AddCase;

  static inline const char* kernelSource = KernelText<Operation::add, Layout>;
  static constexpr char announcement[] = "Running test add_union_scalar_1...";

  bool Run() override {
    Fill();
    Reference(Unflushed);
    RoundTrip();
    return CheckUlps(2);
  }
};

int RunTest_add_union_scalar_1() { return RunTest<TestCase_add_union_scalar_1>(Cumulative(10)); }
