#pragma once

#include "harness/one_input_case.h"
#include "harness/run_test.h"
#include "kernels/kernel_text.h"
#include "kernels/unions.h"

/// The rows of kernel `copy`: the integer view of A, converted to float.
template <class Unions>
class CopyCase : public OneInputCase<Unions> {
 public:
  using OneInputCase<Unions>::OneInputCase;

  void Setup() override { this->SetupKernel("copy"); }
};
