// A vendor's own libOpenCL: no loader, but its one driver's calls, and nothing that reads
// OPENCL_LAYERS. The driver is the simulated GPU, linked in.

#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "layers/layer.h"

namespace {

struct Driver {
  cl_platform_id platform = nullptr;
  cl_icd_dispatch calls{};
};

// What the interpreting driver does, and in its place what the simulated GPU does.
Driver Loaded() {
  Driver driver;
  void* const library = dlopen(INTERPRETING_DRIVER, RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) {
    std::fprintf(stderr, "%s\n", dlerror());
    std::abort();
  }
  using GetExtension = void*(CL_API_CALL*)(const char*);
  const auto getExtension =
      reinterpret_cast<GetExtension>(dlsym(library, "clGetExtensionFunctionAddress"));
  const auto getPlatforms =
      reinterpret_cast<clIcdGetPlatformIDsKHR_fn>(getExtension("clIcdGetPlatformIDsKHR"));
  getPlatforms(1, &driver.platform, nullptr);
  static const cl_icd_dispatch* below = nullptr;
  std::memcpy(&below, driver.platform, sizeof below);
  driver.calls = *below;

  constexpr cl_uint entries = sizeof(cl_icd_dispatch) / sizeof(void*);
  const cl_icd_dispatch* above = nullptr;
  cl_uint count = 0;
  clInitLayer(entries, below, &count, &above);
  void* hooks[entries];
  std::memcpy(hooks, above, sizeof hooks);
  for (cl_uint i = 0; i < entries; ++i)
    if (hooks[i] != nullptr)
      std::memcpy(reinterpret_cast<char*>(&driver.calls) + i * sizeof(void*), &hooks[i],
                  sizeof(void*));
  return driver;
}

const Driver& TheDriver() {
  static const Driver driver = Loaded();
  return driver;
}

}  // namespace

cl_int CL_API_CALL clGetPlatformIDs(cl_uint wanted, cl_platform_id* platforms, cl_uint* count) {
  if (wanted > 0 && platforms != nullptr) *platforms = TheDriver().platform;
  if (count != nullptr) *count = 1;
  return CL_SUCCESS;
}

#define HAND_ON(result, name, parameters, arguments) \
  result CL_API_CALL name parameters { return TheDriver().calls.name arguments; }
#define HAND_ON_OBJECT(name, Object) HAND_ON(cl_int, name, (Object object), (object))

HAND_ON_OBJECT(clRetainCommandQueue, cl_command_queue)
HAND_ON_OBJECT(clReleaseCommandQueue, cl_command_queue)
HAND_ON_OBJECT(clRetainContext, cl_context)
HAND_ON_OBJECT(clReleaseContext, cl_context)
HAND_ON_OBJECT(clRetainDevice, cl_device_id)
HAND_ON_OBJECT(clReleaseDevice, cl_device_id)
HAND_ON_OBJECT(clRetainKernel, cl_kernel)
HAND_ON_OBJECT(clReleaseKernel, cl_kernel)
HAND_ON_OBJECT(clRetainMemObject, cl_mem)
HAND_ON_OBJECT(clReleaseMemObject, cl_mem)
HAND_ON_OBJECT(clRetainProgram, cl_program)
HAND_ON_OBJECT(clReleaseProgram, cl_program)
HAND_ON(cl_int, clGetPlatformInfo,
        (cl_platform_id of, cl_platform_info name, size_t size, void* value, size_t* returned),
        (of, name, size, value, returned))
HAND_ON(cl_int, clGetDeviceIDs,
        (cl_platform_id of, cl_device_type type, cl_uint wanted, cl_device_id* devices,
         cl_uint* count),
        (of, type, wanted, devices, count))
HAND_ON(cl_int, clGetDeviceInfo,
        (cl_device_id of, cl_device_info name, size_t size, void* value, size_t* returned),
        (of, name, size, value, returned))
HAND_ON(cl_context, clCreateContextFromType,
        (const cl_context_properties* properties, cl_device_type type,
         void(CL_CALLBACK* notify)(const char*, const void*, size_t, void*), void* data,
         cl_int* error),
        (properties, type, notify, data, error))
HAND_ON(cl_int, clGetContextInfo,
        (cl_context of, cl_context_info name, size_t size, void* value, size_t* returned),
        (of, name, size, value, returned))
HAND_ON(cl_command_queue, clCreateCommandQueue,
        (cl_context context, cl_device_id device, cl_command_queue_properties properties,
         cl_int* error),
        (context, device, properties, error))
HAND_ON(cl_program, clCreateProgramWithSource,
        (cl_context context, cl_uint count, const char** texts, const size_t* lengths,
         cl_int* error),
        (context, count, texts, lengths, error))
HAND_ON(cl_int, clBuildProgram,
        (cl_program program, cl_uint count, const cl_device_id* devices, const char* options,
         void(CL_CALLBACK* notify)(cl_program, void*), void* data),
        (program, count, devices, options, notify, data))
HAND_ON(cl_int, clGetProgramBuildInfo,
        (cl_program of, cl_device_id device, cl_program_build_info name, size_t size, void* value,
         size_t* returned),
        (of, device, name, size, value, returned))
HAND_ON(cl_kernel, clCreateKernel, (cl_program program, const char* name, cl_int* error),
        (program, name, error))
HAND_ON(cl_int, clSetKernelArg, (cl_kernel kernel, cl_uint index, size_t size, const void* value),
        (kernel, index, size, value))
HAND_ON(cl_mem, clCreateBuffer,
        (cl_context context, cl_mem_flags flags, size_t size, void* memory, cl_int* error),
        (context, flags, size, memory, error))
HAND_ON(cl_int, clEnqueueWriteBuffer,
        (cl_command_queue queue, cl_mem buffer, cl_bool blocks, size_t offset, size_t size,
         const void* from, cl_uint count, const cl_event* events, cl_event* event),
        (queue, buffer, blocks, offset, size, from, count, events, event))
HAND_ON(cl_int, clEnqueueReadBuffer,
        (cl_command_queue queue, cl_mem buffer, cl_bool blocks, size_t offset, size_t size,
         void* into, cl_uint count, const cl_event* events, cl_event* event),
        (queue, buffer, blocks, offset, size, into, count, events, event))
HAND_ON(cl_int, clEnqueueNDRangeKernel,
        (cl_command_queue queue, cl_kernel kernel, cl_uint dimensions, const size_t* offset,
         const size_t* global, const size_t* local, cl_uint count, const cl_event* events,
         cl_event* event),
        (queue, kernel, dimensions, offset, global, local, count, events, event))
