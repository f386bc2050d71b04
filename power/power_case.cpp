#include "power/power_case.h"

#include <iostream>

#include "harness/host_floating_point.h"

float PowerReference(float x, int exponent) {
  return ::powf(FlushDenormal(x), FlushDenormal(static_cast<float>(exponent)));
}

bool PowerMismatch(const PowerCheck& check, float x, int element, float c, float d) {
  std::cout << check.xLabel << double{x} << check.yLabel << element << "  c:" << double{c}
            << " ocl:" << double{d} << std::endl;
  return false;
}
