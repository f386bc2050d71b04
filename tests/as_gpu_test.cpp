// The layer that presents other devices as GPUs, over a platform that is made up here.

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <vector>

#include "layers/layer.h"

namespace {

constexpr cl_device_type cpu = CL_DEVICE_TYPE_CPU;
constexpr cl_device_type gpu = CL_DEVICE_TYPE_GPU;
constexpr cl_device_type accelerator = CL_DEVICE_TYPE_ACCELERATOR;
constexpr cl_device_type isDefault = CL_DEVICE_TYPE_DEFAULT;

// The platform's devices; a device's handle is the address of its type.
std::vector<cl_device_type> devices;
cl_device_type contextType = 0;
const auto platform = reinterpret_cast<cl_platform_id>(&devices);

cl_int CL_API_CALL GetDeviceIDs(cl_platform_id, cl_device_type type, cl_uint wanted,
                                cl_device_id* found, cl_uint* count) {
  cl_uint matching = 0;
  for (cl_device_type& device : devices) {
    if ((device & type) == 0) continue;
    if (found != nullptr && matching < wanted)
      found[matching] = reinterpret_cast<cl_device_id>(&device);
    ++matching;
  }
  if (count != nullptr) *count = matching;
  return matching > 0 ? CL_SUCCESS : CL_DEVICE_NOT_FOUND;
}

cl_int CL_API_CALL GetDeviceInfo(cl_device_id device, cl_device_info name, size_t size, void* value,
                                 size_t* sizeReturned) {
  const void* answer = name == CL_DEVICE_PLATFORM ? static_cast<const void*>(&platform) : device;
  if (value != nullptr && size < sizeof(cl_device_type)) return CL_INVALID_VALUE;
  if (value != nullptr) std::memcpy(value, answer, sizeof(cl_device_type));
  if (sizeReturned != nullptr) *sizeReturned = sizeof(cl_device_type);
  return CL_SUCCESS;
}

cl_context CL_API_CALL CreateContextFromType(const cl_context_properties*, cl_device_type type,
                                             void(CL_CALLBACK*)(const char*, const void*, size_t,
                                                                void*),
                                             void*, cl_int*) {
  contextType = type;
  return nullptr;
}

cl_icd_dispatch MadeUpPlatform() {
  cl_icd_dispatch calls{};
  calls.clGetDeviceIDs = GetDeviceIDs;
  calls.clGetDeviceInfo = GetDeviceInfo;
  calls.clCreateContextFromType = CreateContextFromType;
  return calls;
}

class AsGpu : public testing::Test {
 protected:
  AsGpu() {
    cl_uint entries = 0;
    EXPECT_EQ(clInitLayer(sizeof below / sizeof(void*), &below, &entries, &calls), CL_SUCCESS);
    EXPECT_EQ(entries, sizeof below / sizeof(void*));
  }
  const cl_icd_dispatch below = MadeUpPlatform();
  const cl_icd_dispatch* calls = nullptr;
};

TEST_F(AsGpu, PresentsOtherDevicesWhereThereIsNoGpu) {
  const struct {
    const char* description;
    std::vector<cl_device_type> devices;
    cl_device_type asked;
    cl_uint found;
    std::vector<cl_device_type> types;  // of all devices, as the program sees them
  } cases[] = {
      {"a processor", {cpu}, gpu, 1, {gpu}},
      {"an accelerator", {accelerator}, gpu, 1, {gpu}},
      {"both", {cpu | isDefault, accelerator}, gpu, 2, {gpu | isDefault, gpu}},
      {"all", {cpu}, CL_DEVICE_TYPE_ALL, 1, {gpu}},
      {"the default", {cpu | isDefault, accelerator}, isDefault, 1, {gpu | isDefault, gpu}},
      {"no processors are left", {cpu, accelerator}, cpu | accelerator, 0, {gpu, gpu}},
      {"but the default is",
       {cpu, accelerator | isDefault},
       cpu | isDefault,
       1,
       {gpu, gpu | isDefault}},
      {"what is neither stays", {CL_DEVICE_TYPE_CUSTOM}, gpu, 0, {CL_DEVICE_TYPE_CUSTOM}},
      {"a GPU of its own", {cpu, gpu}, gpu, 1, {cpu, gpu}},
      {"the processor beside it", {cpu, gpu}, cpu, 1, {cpu, gpu}},
      {"nothing", {}, gpu, 0, {}},
  };
  for (const auto& [description, present, asked, found, types] : cases) {
    SCOPED_TRACE(description);
    devices = present;
    cl_uint count = 99;
    EXPECT_EQ(calls->clGetDeviceIDs(platform, asked, 0, nullptr, &count),
              found > 0 ? CL_SUCCESS : CL_DEVICE_NOT_FOUND);
    EXPECT_EQ(count, found);

    calls->clCreateContextFromType(nullptr, asked, nullptr, nullptr, nullptr);
    EXPECT_EQ(GetDeviceIDs(platform, contextType, 0, nullptr, &count) == CL_SUCCESS, found > 0);
    EXPECT_EQ(count, found);

    for (std::size_t i = 0; i < types.size(); ++i) {
      auto* const device = reinterpret_cast<cl_device_id>(&devices[i]);
      cl_device_type type = 0;
      std::size_t size = 0;
      EXPECT_EQ(calls->clGetDeviceInfo(device, CL_DEVICE_TYPE, sizeof type, &type, &size),
                CL_SUCCESS);
      EXPECT_EQ(type, types[i]);
      EXPECT_EQ(size, sizeof type);
      type = cpu;
      EXPECT_EQ(calls->clGetDeviceInfo(device, CL_DEVICE_TYPE, sizeof type - 1, &type, nullptr),
                CL_INVALID_VALUE);
      EXPECT_EQ(type, cpu);
      EXPECT_EQ(calls->clGetDeviceInfo(device, CL_DEVICE_TYPE, 0, nullptr, &size), CL_SUCCESS);
    }
  }
}

TEST_F(AsGpu, LooksForAContextsGpusOnItsPlatform) {
  static cl_platform_id asked;
  auto noDevices = MadeUpPlatform();
  noDevices.clGetDeviceIDs = [](cl_platform_id where, cl_device_type, cl_uint, cl_device_id*,
                                cl_uint*) {
    asked = where;
    return CL_DEVICE_NOT_FOUND;
  };
  layer::below = &noDevices;
  const cl_context_properties properties[] = {CL_CONTEXT_INTEROP_USER_SYNC, CL_FALSE,
                                              CL_CONTEXT_PLATFORM,
                                              reinterpret_cast<cl_context_properties>(platform), 0};
  layer::hooks.clCreateContextFromType(properties, gpu, nullptr, nullptr, nullptr);
  EXPECT_EQ(asked, platform);
  EXPECT_EQ(contextType, cpu | gpu | accelerator);
}

}  // namespace
