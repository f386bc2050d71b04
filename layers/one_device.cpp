// An OpenCL layer that shows one of a driver's devices and no other: the one that ONE_DEVICE names
// as "PLATFORM:DEVICE", the platform's index and the device's among all of its platform. The suite
// takes no argument and runs on the first GPU that it sees. Without such a device there is no
// platform.

#include <charconv>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "layers/layer.h"

namespace {

cl_int CL_API_CALL GetPlatformIDs(cl_uint, cl_platform_id*, cl_uint*);
cl_int CL_API_CALL GetDeviceIDs(cl_platform_id, cl_device_type, cl_uint, cl_device_id*, cl_uint*);
cl_context CL_API_CALL CreateContextFromType(const cl_context_properties*, cl_device_type,
                                             void(CL_CALLBACK*)(const char*, const void*, size_t,
                                                                void*),
                                             void*, cl_int*);

consteval cl_icd_dispatch Hooks() {
  cl_icd_dispatch hooks{};

  // Who asks for platforms and devices is given the one.
  hooks.clGetPlatformIDs = GetPlatformIDs;
  hooks.clGetDeviceIDs = GetDeviceIDs;

  // A context of a type would hold the platform's other devices too.
  hooks.clCreateContextFromType = CreateContextFromType;
  return hooks;
}

// -1001, of an extension that the core headers do not know.
constexpr cl_int platformNotFound = -1001;

struct Shown {
  cl_platform_id platform = nullptr;
  cl_device_id device = nullptr;
};

// The number at the front of `text`, which moves behind it; beyond every list if there is none.
std::size_t TakeIndex(const char*& text) {
  auto index = static_cast<std::size_t>(-1);
  text = std::from_chars(text, text + std::strlen(text), index).ptr;
  return index;
}

Shown Find() {
  const char* indices = std::getenv("ONE_DEVICE");
  if (indices == nullptr) return {};
  const std::size_t platformIndex = TakeIndex(indices);
  if (*indices++ != ':') return {};
  const std::size_t deviceIndex = TakeIndex(indices);

  cl_uint count = 0;
  if (layer::below->clGetPlatformIDs(0, nullptr, &count) != CL_SUCCESS || platformIndex >= count)
    return {};
  std::vector<cl_platform_id> platforms(count);
  layer::below->clGetPlatformIDs(count, platforms.data(), nullptr);
  cl_platform_id platform = platforms[platformIndex];
  if (layer::below->clGetDeviceIDs(platform, CL_DEVICE_TYPE_ALL, 0, nullptr, &count) !=
          CL_SUCCESS ||
      deviceIndex >= count)
    return {};
  std::vector<cl_device_id> devices(count);
  layer::below->clGetDeviceIDs(platform, CL_DEVICE_TYPE_ALL, count, devices.data(), nullptr);
  return {platform, devices[deviceIndex]};
}

const Shown& TheOne() {
  static const Shown shown = Find();
  return shown;
}

// Whether the device is one of those that a program asks for. It is the platform's default.
bool IsOf(cl_device_type asked) {
  cl_device_type type = 0;
  return TheOne().device != nullptr &&
         layer::below->clGetDeviceInfo(TheOne().device, CL_DEVICE_TYPE, sizeof type, &type,
                                       nullptr) == CL_SUCCESS &&
         ((type | CL_DEVICE_TYPE_DEFAULT) & asked) != 0;
}

cl_int CL_API_CALL GetPlatformIDs(cl_uint wanted, cl_platform_id* platforms, cl_uint* count) {
  if ((platforms == nullptr && count == nullptr) || (platforms != nullptr && wanted == 0))
    return CL_INVALID_VALUE;
  const bool isThere = TheOne().device != nullptr;
  if (count != nullptr) *count = isThere ? 1 : 0;
  if (!isThere) return platformNotFound;
  if (platforms != nullptr) *platforms = TheOne().platform;
  return CL_SUCCESS;
}

cl_int CL_API_CALL GetDeviceIDs(cl_platform_id platform, cl_device_type type, cl_uint wanted,
                                cl_device_id* devices, cl_uint* count) {
  if ((devices == nullptr && count == nullptr) || (devices != nullptr && wanted == 0))
    return CL_INVALID_VALUE;
  if (platform != nullptr && platform != TheOne().platform) return CL_INVALID_PLATFORM;
  const bool isOne = IsOf(type);
  if (count != nullptr) *count = isOne ? 1 : 0;
  if (!isOne) return CL_DEVICE_NOT_FOUND;
  if (devices != nullptr) *devices = TheOne().device;
  return CL_SUCCESS;
}

cl_context CL_API_CALL CreateContextFromType(const cl_context_properties* properties,
                                             cl_device_type type,
                                             void(CL_CALLBACK* notify)(const char*, const void*,
                                                                       size_t, void*),
                                             void* userData, cl_int* error) {
  if (!IsOf(type)) {
    if (error != nullptr) *error = CL_DEVICE_NOT_FOUND;
    return nullptr;
  }
  return layer::below->clCreateContext(properties, 1, &TheOne().device, notify, userData, error);
}

}  // namespace

const char* const layer::name = "one device";
constinit const cl_icd_dispatch layer::hooks = Hooks();
void layer::Start() {}
