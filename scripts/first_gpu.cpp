// Says by its status whether the machine's first OpenCL platform has a GPU device.

#include <CL/cl.h>

int main() {
  cl_platform_id platform = nullptr;
  if (clGetPlatformIDs(1, &platform, nullptr) != CL_SUCCESS) return 1;
  cl_device_id device = nullptr;
  return clGetDeviceIDs(platform, CL_DEVICE_TYPE_GPU, 1, &device, nullptr) == CL_SUCCESS ? 0 : 1;
}
