// An OpenCL driver that does nothing and says that it worked: what a run on it costs is the suite's
// own. It has one platform with one device, a GPU, and every object that it gives out is the same.

#include <CL/cl_icd.h>

#include <cstring>
#include <string_view>

#ifndef NULL_DEVICE_TYPE
#define NULL_DEVICE_TYPE CL_DEVICE_TYPE_GPU
#endif

namespace {

struct Object {
  const cl_icd_dispatch* dispatch;
};
extern Object object;

template <class Handle>
Handle AnyHandle() {
  return reinterpret_cast<Handle>(&object);
}

cl_int Answer(const void* answer, size_t answerSize, size_t size, void* value, size_t* returned) {
  if (returned != nullptr) *returned = answerSize;
  if (value == nullptr) return CL_SUCCESS;
  if (size < answerSize) return CL_INVALID_VALUE;
  std::memcpy(value, answer, answerSize);
  return CL_SUCCESS;
}

template <class Handle>
cl_int GiveOut(cl_uint wanted, Handle* handles, cl_uint* count) {
  if (handles != nullptr && wanted > 0) handles[0] = AnyHandle<Handle>();
  if (count != nullptr) *count = 1;
  return CL_SUCCESS;
}

template <class Handle>
Handle Created(cl_int* error) {
  if (error != nullptr) *error = CL_SUCCESS;
  return AnyHandle<Handle>();
}

// A call without any effect.
template <class... Arguments>
cl_int CL_API_CALL Nothing(Arguments...) {
  return CL_SUCCESS;
}

cl_int CL_API_CALL GetPlatformInfo(cl_platform_id, cl_platform_info name, size_t size, void* value,
                                   size_t* returned) {
  const std::string_view text = name == CL_PLATFORM_EXTENSIONS       ? "cl_khr_icd"
                                : name == CL_PLATFORM_ICD_SUFFIX_KHR ? "NULL"
                                : name == CL_PLATFORM_VERSION        ? "OpenCL 1.2 null"
                                                                     : "null";
  return Answer(text.data(), text.size() + 1, size, value, returned);
}

cl_int CL_API_CALL GetDeviceIDs(cl_platform_id, cl_device_type type, cl_uint wanted,
                                cl_device_id* devices, cl_uint* count) {
  if ((type & NULL_DEVICE_TYPE) == 0) return CL_DEVICE_NOT_FOUND;
  return GiveOut(wanted, devices, count);
}

cl_int CL_API_CALL GetDeviceInfo(cl_device_id, cl_device_info name, size_t size, void* value,
                                 size_t* returned) {
  const auto* const platform = AnyHandle<cl_platform_id>();
  const cl_device_fp_config config = CL_FP_ROUND_TO_NEAREST | CL_FP_DENORM;
  const cl_device_type type = NULL_DEVICE_TYPE;
  const cl_bool yes = CL_TRUE;
  const std::string_view text = "null";
  switch (name) {
    case CL_DEVICE_TYPE:
      return Answer(&type, sizeof type, size, value, returned);
    case CL_DEVICE_AVAILABLE:
    case CL_DEVICE_COMPILER_AVAILABLE:
      return Answer(&yes, sizeof yes, size, value, returned);
    case CL_DEVICE_PLATFORM:
      return Answer(&platform, sizeof platform, size, value, returned);
    case CL_DEVICE_SINGLE_FP_CONFIG:
      return Answer(&config, sizeof config, size, value, returned);
    case CL_DEVICE_NAME:
    case CL_DEVICE_VERSION:
    case CL_DRIVER_VERSION:
      return Answer(text.data(), text.size() + 1, size, value, returned);
    default:
      return CL_INVALID_VALUE;
  }
}

cl_int CL_API_CALL GetContextInfo(cl_context, cl_context_info name, size_t size, void* value,
                                  size_t* returned) {
  if (name != CL_CONTEXT_DEVICES) return CL_INVALID_VALUE;
  auto* const device = AnyHandle<cl_device_id>();
  return Answer(&device, sizeof device, size, value, returned);
}

consteval cl_icd_dispatch EntryPoints() {
  cl_icd_dispatch calls{};
  calls.clGetPlatformInfo = GetPlatformInfo;
  calls.clGetDeviceIDs = GetDeviceIDs;
  calls.clGetDeviceInfo = GetDeviceInfo;
  calls.clGetContextInfo = GetContextInfo;
  calls.clCreateContext = [](const cl_context_properties*, cl_uint, const cl_device_id*,
                             void(CL_CALLBACK*)(const char*, const void*, size_t, void*), void*,
                             cl_int* error) { return Created<cl_context>(error); };
  calls.clCreateContextFromType = [](const cl_context_properties*, cl_device_type,
                                     void(CL_CALLBACK*)(const char*, const void*, size_t, void*),
                                     void*, cl_int* error) { return Created<cl_context>(error); };
  calls.clCreateProgramWithSource = [](cl_context, cl_uint, const char**, const size_t*,
                                       cl_int* error) { return Created<cl_program>(error); };
  calls.clCreateKernel = [](cl_program, const char*, cl_int* error) {
    return Created<cl_kernel>(error);
  };
  calls.clCreateBuffer = [](cl_context, cl_mem_flags, size_t, void*, cl_int* error) {
    return Created<cl_mem>(error);
  };
  calls.clCreateCommandQueue = [](cl_context, cl_device_id, cl_command_queue_properties,
                                  cl_int* error) { return Created<cl_command_queue>(error); };
  calls.clBuildProgram = Nothing;
  calls.clSetKernelArg = Nothing;
  calls.clEnqueueWriteBuffer = Nothing;
  calls.clEnqueueNDRangeKernel = Nothing;
  calls.clEnqueueReadBuffer = Nothing;
  calls.clRetainDevice = Nothing;
  calls.clReleaseDevice = Nothing;
  calls.clRetainContext = Nothing;
  calls.clReleaseContext = Nothing;
  calls.clRetainProgram = Nothing;
  calls.clReleaseProgram = Nothing;
  calls.clRetainKernel = Nothing;
  calls.clReleaseKernel = Nothing;
  calls.clRetainMemObject = Nothing;
  calls.clReleaseMemObject = Nothing;
  calls.clRetainCommandQueue = Nothing;
  calls.clReleaseCommandQueue = Nothing;
  return calls;
}

constexpr cl_icd_dispatch entryPoints = EntryPoints();
Object object{&entryPoints};

cl_int CL_API_CALL IcdGetPlatformIDs(cl_uint wanted, cl_platform_id* platforms, cl_uint* count) {
  return GiveOut(wanted, platforms, count);
}

}  // namespace

// The loader asks for these by name.
extern "C" {
CL_API_ENTRY cl_int CL_API_CALL clGetPlatformInfo(cl_platform_id platform, cl_platform_info name,
                                                  size_t size, void* value, size_t* returned) {
  return GetPlatformInfo(platform, name, size, value, returned);
}

CL_API_ENTRY void* CL_API_CALL clGetExtensionFunctionAddress(const char* name) {
  const std::string_view wanted = name;
  if (wanted == "clIcdGetPlatformIDsKHR") return reinterpret_cast<void*>(&IcdGetPlatformIDs);
  if (wanted == "clGetPlatformInfo") return reinterpret_cast<void*>(&GetPlatformInfo);
  return nullptr;
}
}
