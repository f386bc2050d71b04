#pragma once

#include "harness/one_input_case.h"
#include "harness/run_test.h"
#include "kernels/kernel_text.h"
#include "kernels/unions.h"

/// The rows of kernel `_floor`: the floor of the integer view of A, converted to float. A whole
/// number has nothing to round away, so the reference is the conversion alone.
template <class Unions>
class FloorCase : public OneInputCase<Unions> {
 public:
  using OneInputCase<Unions>::OneInputCase;

  void Setup() override { this->SetupKernel("_floor"); }
};
