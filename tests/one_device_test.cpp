// The layer that shows one device, over platforms that are made up here.

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "layers/layer.h"

namespace {

// Platforms by their devices' types; a device's handle is the address of its type, a platform's
// that of its list.
std::vector<cl_device_type> platforms[] = {{CL_DEVICE_TYPE_CPU},
                                           {CL_DEVICE_TYPE_GPU, CL_DEVICE_TYPE_CPU}};
std::vector<cl_device_id> ofContext;

cl_platform_id Platform(std::size_t index) {
  return reinterpret_cast<cl_platform_id>(&platforms[index]);
}
cl_device_id Device(std::size_t platform, std::size_t device) {
  return reinterpret_cast<cl_device_id>(&platforms[platform][device]);
}

cl_int CL_API_CALL GetPlatformIDs(cl_uint wanted, cl_platform_id* found, cl_uint* count) {
  for (cl_uint i = 0; found != nullptr && i < wanted && i < 2; ++i) found[i] = Platform(i);
  if (count != nullptr) *count = 2;
  return CL_SUCCESS;
}

cl_int CL_API_CALL GetDeviceIDs(cl_platform_id platform, cl_device_type type, cl_uint wanted,
                                cl_device_id* found, cl_uint* count) {
  cl_uint matching = 0;
  for (cl_device_type& device : *reinterpret_cast<std::vector<cl_device_type>*>(platform)) {
    if ((device & type) == 0) continue;
    if (found != nullptr && matching < wanted)
      found[matching] = reinterpret_cast<cl_device_id>(&device);
    ++matching;
  }
  if (count != nullptr) *count = matching;
  return matching > 0 ? CL_SUCCESS : CL_DEVICE_NOT_FOUND;
}

cl_int CL_API_CALL GetDeviceInfo(cl_device_id device, cl_device_info name, size_t, void* value,
                                 size_t*) {
  if (name != CL_DEVICE_TYPE) return CL_INVALID_VALUE;
  std::memcpy(value, device, sizeof(cl_device_type));
  return CL_SUCCESS;
}

cl_context CL_API_CALL CreateContext(const cl_context_properties*, cl_uint count,
                                     const cl_device_id* devices,
                                     void(CL_CALLBACK*)(const char*, const void*, size_t, void*),
                                     void*, cl_int* error) {
  ofContext.assign(devices, devices + count);
  *error = CL_SUCCESS;
  return reinterpret_cast<cl_context>(&ofContext);
}

// The layer asks once for its device, which the environment names.
TEST(OneDevice, ShowsTheDeviceThatIsNamedAndNoOther) {
  setenv("ONE_DEVICE", "1:1", 1);
  cl_icd_dispatch below{};
  below.clGetPlatformIDs = GetPlatformIDs;
  below.clGetDeviceIDs = GetDeviceIDs;
  below.clGetDeviceInfo = GetDeviceInfo;
  below.clCreateContext = CreateContext;
  const cl_icd_dispatch* calls = nullptr;
  cl_uint count = 0;
  ASSERT_EQ(clInitLayer(sizeof below / sizeof(void*), &below, &count, &calls), CL_SUCCESS);

  cl_platform_id platform[2] = {};
  ASSERT_EQ(calls->clGetPlatformIDs(2, platform, &count), CL_SUCCESS);
  EXPECT_EQ(count, 1U);
  EXPECT_EQ(platform[0], Platform(1));
  EXPECT_EQ(platform[1], nullptr);
  EXPECT_EQ(calls->clGetPlatformIDs(0, platform, nullptr), CL_INVALID_VALUE);
  EXPECT_EQ(calls->clGetPlatformIDs(0, nullptr, nullptr), CL_INVALID_VALUE);

  const struct {
    cl_device_type asked;
    bool isFound;
  } cases[] = {{CL_DEVICE_TYPE_CPU, true},     {CL_DEVICE_TYPE_ALL, true},
               {CL_DEVICE_TYPE_DEFAULT, true}, {CL_DEVICE_TYPE_GPU | CL_DEVICE_TYPE_CPU, true},
               {CL_DEVICE_TYPE_GPU, false},    {CL_DEVICE_TYPE_ACCELERATOR, false}};
  for (const auto& [asked, isFound] : cases) {
    SCOPED_TRACE(asked);
    cl_device_id device[2] = {};
    EXPECT_EQ(calls->clGetDeviceIDs(Platform(1), asked, 2, device, &count),
              isFound ? CL_SUCCESS : CL_DEVICE_NOT_FOUND);
    EXPECT_EQ(count, isFound ? 1U : 0U);
    EXPECT_EQ(device[0], isFound ? Device(1, 1) : nullptr);
    EXPECT_EQ(device[1], nullptr);

    ofContext.clear();
    cl_int error = 1;
    EXPECT_EQ(calls->clCreateContextFromType(nullptr, asked, nullptr, nullptr, &error) != nullptr,
              isFound);
    EXPECT_EQ(error, isFound ? CL_SUCCESS : CL_DEVICE_NOT_FOUND);
    EXPECT_EQ(ofContext, isFound ? std::vector{Device(1, 1)} : std::vector<cl_device_id>());
  }
  EXPECT_EQ(calls->clGetDeviceIDs(Platform(0), CL_DEVICE_TYPE_ALL, 0, nullptr, &count),
            CL_INVALID_PLATFORM);
}

}  // namespace
