#pragma once

#include <cmath>
#include <cstdint>

#include "harness/one_input_case.h"
#include "harness/run_test.h"
#include "harness/ulp.h"
#include "kernels/kernel_text.h"
#include "kernels/unions.h"

/// `x` to the power of `exponent` by the C library's powf, both operands flushed.
float PowerReference(float x, int exponent);

/// What a power row's check leaves to the row.
struct PowerCheck {
  std::uint32_t ulpTolerance;
  int elements;        // how many are looked at
  const char* xLabel;  // opens the mismatch line, before the base
  const char* yLabel;  // before the element index
};

/// Writes the mismatch line of base `x` in `element`, with reference `c` and device value `d`.
void WritePowerMismatch(const PowerCheck& check, float x, int element, float c, float d);

// The exponents of a row.
constexpr int LaneIndex(int /*element*/, int lane) { return lane; }
constexpr int ElementIndex(int element, int /*lane*/) { return element; }

/// The rows of kernel `power`: the integer view of A, converted to float, to a small power.
template <class Unions>
class PowerCase : public OneInputCase<Unions> {
 public:
  using OneInputCase<Unions>::OneInputCase;

  void Setup() override { this->SetupKernel("power"); }

 protected:
  /// `passes` draws and stores over the one lane of each element, each over the one before.
  void FillRepeatedly(int passes) {
    for (int i = 0; i < this->numElements_; ++i) {
      for (int pass = 0; pass < passes; ++pass) this->FillLane(i, 0);
    }
  }

  /// The powers, with the exponent that `exponent`, LaneIndex or ElementIndex, gives.
  void Reference(int (*exponent)(int element, int lane)) {
    for (int i = 0; i < this->numElements_; ++i) {
      for (int j = 0; j < Unions::lanes; ++j) {
        this->reference_[i].r[j] = PowerReference(Base(i, j), exponent(i, j));
      }
    }
  }

  /// Every lane of the elements looked at within the tolerance. Where the reference or the answer
  /// is not finite, the lane passes.
  bool Check(const PowerCheck& check) const {
    for (int i = 0; i < check.elements; ++i) {
      for (int j = 0; j < Unions::lanes; ++j) {
        const float c = this->reference_[i].r[j];
        const float d = this->deviceResult_[i].r[j];
        if (!WithinUlps(c, d, check.ulpTolerance) && std::isfinite(c) && std::isfinite(d)) {
          WritePowerMismatch(check, Base(i, j), i, c, d);
          return false;
        }
      }
    }
    return true;
  }

 private:
  float Base(int i, int j) const { return static_cast<float>(this->inputA_[i].a[j]); }
};
