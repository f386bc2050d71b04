#include "harness/host_floating_point.h"

#include <cfenv>
#include <cfloat>
#include <cmath>
#include <cstdlib>

namespace {

// One row for each kind of data type, one column for each mode code.
constexpr int roundingModes[2][5] = {
    {FE_TOWARDZERO, FE_TONEAREST, FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO},
    {FE_TONEAREST, FE_TONEAREST, FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO},
};

}  // namespace

int SetHostRounding(int mode, int dataType) {
  const int previous = std::fegetround();
  const bool nearestByDefault = dataType == 6 || dataType == 7;
  std::fesetround(roundingModes[nearestByDefault ? 1 : 0][mode]);
  switch (previous) {
    case FE_TONEAREST:
      return 1;
    case FE_UPWARD:
      return 2;
    case FE_DOWNWARD:
      return 3;
    case FE_TOWARDZERO:
      return 4;
    default:
      std::abort();
  }
}

int ForceFlushToZero() { return 0; }

float FlushDenormal(float x) { return std::fabs(x) < FLT_MIN ? 0.0F : x; }
