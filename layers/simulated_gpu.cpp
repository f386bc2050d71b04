// An OpenCL layer that makes a GPU of an interpreting driver: a device with a floating-point mode
// of its own, in a process whose floating-point mode and random numbers stay the host's.
//
// The device has no denormals: it takes them as zero and flushes them. With
// SIMULATED_GPU_KEEP_DENORMALS set to anything but the empty string, it keeps them.

#include <cstdint>
#include <cstdlib>

#include "layers/layer.h"

namespace {

struct PrivateRandom;
struct DeviceFloats;
template <class Scope, auto entryPoint, class Return, class... Arguments>
Return CL_API_CALL Within(Arguments... arguments);
cl_int CL_API_CALL GetDeviceInfo(cl_device_id, cl_device_info, size_t, void*, size_t*);
cl_mem CL_API_CALL CreateBuffer(cl_context, cl_mem_flags, size_t, void*, cl_int*);

consteval cl_icd_dispatch Hooks() {
  using Entry = cl_icd_dispatch;
  cl_icd_dispatch hooks{};

  // The device says of itself whether it has denormals.
  hooks.clGetDeviceInfo = GetDeviceInfo;

  // Its fresh memory is zero, where the driver's is whatever the process had there.
  hooks.clCreateBuffer = CreateBuffer;

  // The driver draws names for what it builds from rand, after a call of srand.
  hooks.clBuildProgram = Within<PrivateRandom, &Entry::clBuildProgram>;
  hooks.clCompileProgram = Within<PrivateRandom, &Entry::clCompileProgram>;
  hooks.clLinkProgram = Within<PrivateRandom, &Entry::clLinkProgram>;

  // The driver executes a queue when somebody waits for it, which each of these calls can do.
  hooks.clFinish = Within<DeviceFloats, &Entry::clFinish>;
  hooks.clWaitForEvents = Within<DeviceFloats, &Entry::clWaitForEvents>;
  hooks.clReleaseCommandQueue = Within<DeviceFloats, &Entry::clReleaseCommandQueue>;
  hooks.clEnqueueReadBuffer = Within<DeviceFloats, &Entry::clEnqueueReadBuffer>;
  hooks.clEnqueueWriteBuffer = Within<DeviceFloats, &Entry::clEnqueueWriteBuffer>;
  hooks.clEnqueueMapBuffer = Within<DeviceFloats, &Entry::clEnqueueMapBuffer>;
  return hooks;
}

bool keepsDenormals = false;

// Calls the driver while a Scope lives.
template <class Scope, auto entryPoint, class Return, class... Arguments>
Return CL_API_CALL Within(Arguments... arguments) {
  const Scope scope;
  return (layer::below->*entryPoint)(arguments...);
}

// Gives rand, which shares its state with random, numbers of its own, and the host's state back.
struct PrivateRandom {
  PrivateRandom() : host(initstate(1, state, sizeof state)) {}
  ~PrivateRandom() { setstate(host); }
  char state[256];
  char* host;
};

// Puts the thread into the device's floating-point mode, which rounds to nearest whatever the host
// does, and back into the host's. The threads that the driver starts for a kernel inherit it.
struct DeviceFloats {
#if defined(__x86_64__)
  using Register = std::uint32_t;
  // MXCSR as a process finds it; flush to zero, and denormals are zero.
  static constexpr Register initial = 0x1F80;
  static constexpr Register flush = 0x8040;
  static Register Get() { return __builtin_ia32_stmxcsr(); }
  static void Set(Register mode) { __builtin_ia32_ldmxcsr(mode); }
#elif defined(__aarch64__)
  using Register = std::uint64_t;
  // FPCR as a process finds it; flush to zero, of operands and results.
  static constexpr Register initial = 0;
  static constexpr Register flush = 1U << 24;
  static Register Get() {
    Register mode;
    asm volatile("mrs %0, fpcr" : "=r"(mode));
    return mode;
  }
  static void Set(Register mode) { asm volatile("msr fpcr, %0" : : "r"(mode)); }
#else
#error "this processor's floating-point mode is unknown"
#endif
  DeviceFloats() : host(Get()) { Set(keepsDenormals ? initial : initial | flush); }
  ~DeviceFloats() { Set(host); }
  Register host;
};

cl_mem CL_API_CALL CreateBuffer(cl_context context, cl_mem_flags flags, size_t size, void* host,
                                cl_int* code) {
  constexpr cl_mem_flags fromHost = CL_MEM_USE_HOST_PTR | CL_MEM_COPY_HOST_PTR;
  void* const zeros = host == nullptr && (flags & fromHost) == 0 ? std::calloc(1, size) : nullptr;
  cl_mem made = zeros == nullptr ? layer::below->clCreateBuffer(context, flags, size, host, code)
                                 : layer::below->clCreateBuffer(
                                       context, flags | CL_MEM_COPY_HOST_PTR, size, zeros, code);
  std::free(zeros);
  return made;
}

cl_int CL_API_CALL GetDeviceInfo(cl_device_id device, cl_device_info name, size_t size, void* value,
                                 size_t* sizeReturned) {
  const cl_int code = layer::below->clGetDeviceInfo(device, name, size, value, sizeReturned);
  if (code == CL_SUCCESS && name == CL_DEVICE_SINGLE_FP_CONFIG && value != nullptr) {
    auto& config = *static_cast<cl_device_fp_config*>(value);
    const cl_device_fp_config denormals = CL_FP_DENORM;
    config = keepsDenormals ? config | denormals : config & ~denormals;
  }
  return code;
}

}  // namespace

const char* const layer::name = "simulated GPU";
constinit const cl_icd_dispatch layer::hooks = Hooks();

void layer::Start() {
  const char* keep = std::getenv("SIMULATED_GPU_KEEP_DENORMALS");
  keepsDenormals = keep != nullptr && *keep != '\0';
}
