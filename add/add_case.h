#pragma once

#include "harness/host_floating_point.h"
#include "harness/run_test.h"
#include "harness/two_input_case.h"
#include "kernels/kernel_text.h"
#include "kernels/unions.h"

/// The rows of kernel `sum`: the integer view of A plus the float view of B.
template <class Unions>
class AddCase : public TwoInputCase<Unions> {
 public:
  using TwoInputCase<Unions>::TwoInputCase;

  void Setup() override { this->SetupKernel("sum"); }

 protected:
  /// The sums, with `flush` applied to the float operand: FlushDenormal or Unflushed.
  template <class Flush>
  void Reference(Flush flush) {
    for (int i = 0; i < this->numElements_; ++i) {
      for (int j = 0; j < Unions::lanes; ++j) {
        this->reference_[i].r[j] =
            static_cast<float>(this->inputA_[i].a[j]) + flush(this->inputB_[i].b[j]);
      }
    }
  }
};
