#pragma once

#include "harness/run_test.h"
#include "harness/two_input_case.h"
#include "kernels/kernel_text.h"
#include "kernels/unions.h"

/// The rows of kernel `multiply`: the integer view of A times the float view of B.
template <class Unions>
class MultiplyCase : public TwoInputCase<Unions> {
 public:
  using TwoInputCase<Unions>::TwoInputCase;

  void Setup() override { this->SetupKernel("multiply"); }

 protected:
  /// The products, with `flush`, FlushDenormal or Unflushed, on the float operand.
  void Reference(float (*flush)(float)) {
    this->ReferenceBy([flush](float a, float b) { return a * flush(b); });
  }
};
