#include "power/power_case.h"

#include <iostream>

#include "harness/host_floating_point.h"

float PowerReference(float x, int exponent) {
  // Volatile, or the compiler, where it knows the exponent, puts a product for the call.
  const volatile float y = FlushDenormal(static_cast<float>(exponent));
  return ::powf(FlushDenormal(x), y);
}

void WritePowerMismatch(const PowerCheck& check, float x, int element, float c, float d) {
  std::cout << check.xLabel << double{x} << check.yLabel << element << "  c:" << double{c}
            << " ocl:" << double{d} << std::endl;
}
