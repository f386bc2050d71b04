// An OpenCL layer that presents a platform's processors and accelerators as GPUs, so that their
// drivers can be tested too. A platform that has a GPU of its own is left as it is.

#include <bit>

#include "layers/layer.h"

namespace {

cl_int CL_API_CALL GetDeviceIDs(cl_platform_id, cl_device_type, cl_uint, cl_device_id*, cl_uint*);
cl_context CL_API_CALL CreateContextFromType(const cl_context_properties*, cl_device_type,
                                             void(CL_CALLBACK*)(const char*, const void*, size_t,
                                                                void*),
                                             void*, cl_int*);
cl_int CL_API_CALL GetDeviceInfo(cl_device_id, cl_device_info, size_t, void*, size_t*);

consteval cl_icd_dispatch Hooks() {
  cl_icd_dispatch hooks{};

  // Who asks for GPUs is given the other devices, and who asks for those finds none.
  hooks.clGetDeviceIDs = GetDeviceIDs;
  hooks.clCreateContextFromType = CreateContextFromType;

  // A device that was given out as a GPU says that it is one.
  hooks.clGetDeviceInfo = GetDeviceInfo;
  return hooks;
}

constexpr cl_device_type others = CL_DEVICE_TYPE_CPU | CL_DEVICE_TYPE_ACCELERATOR;

bool HasGpu(cl_platform_id platform) {
  cl_uint count = 0;
  return layer::below->clGetDeviceIDs(platform, CL_DEVICE_TYPE_GPU, 0, nullptr, &count) ==
             CL_SUCCESS &&
         count > 0;
}

// The type to ask a platform without GPUs for, where the program asks for this one.
cl_device_type TypeBelow(cl_device_type type) {
  if ((type & CL_DEVICE_TYPE_GPU) != 0) return type | others;
  // Of processors and accelerators alone there are none left; neither has the driver any GPUs.
  if (type != 0 && (type & ~others) == 0) return CL_DEVICE_TYPE_GPU;
  return type & ~others;
}

cl_int CL_API_CALL GetDeviceIDs(cl_platform_id platform, cl_device_type type, cl_uint wanted,
                                cl_device_id* devices, cl_uint* count) {
  return layer::below->clGetDeviceIDs(platform, HasGpu(platform) ? type : TypeBelow(type), wanted,
                                      devices, count);
}

cl_context CL_API_CALL CreateContextFromType(const cl_context_properties* properties,
                                             cl_device_type type,
                                             void(CL_CALLBACK* notify)(const char*, const void*,
                                                                       size_t, void*),
                                             void* userData, cl_int* error) {
  // Without the property, the platform is the loader's choice, as it is for a null platform.
  cl_platform_id platform = nullptr;
  for (const auto* property = properties; property != nullptr && *property != 0; property += 2)
    if (*property == CL_CONTEXT_PLATFORM) platform = std::bit_cast<cl_platform_id>(property[1]);
  return layer::below->clCreateContextFromType(
      properties, HasGpu(platform) ? type : TypeBelow(type), notify, userData, error);
}

cl_int CL_API_CALL GetDeviceInfo(cl_device_id device, cl_device_info name, size_t size, void* value,
                                 size_t* sizeReturned) {
  const cl_int code = layer::below->clGetDeviceInfo(device, name, size, value, sizeReturned);
  if (code != CL_SUCCESS || name != CL_DEVICE_TYPE || value == nullptr) return code;
  auto& type = *static_cast<cl_device_type*>(value);
  cl_platform_id platform = nullptr;
  if ((type & others) == 0 ||
      layer::below->clGetDeviceInfo(device, CL_DEVICE_PLATFORM, sizeof platform, &platform,
                                    nullptr) != CL_SUCCESS ||
      HasGpu(platform))
    return code;
  type = (type & ~others) | CL_DEVICE_TYPE_GPU;
  return code;
}

}  // namespace

const char* const layer::name = "as GPU";
constinit const cl_icd_dispatch layer::hooks = Hooks();
void layer::Start() {}
