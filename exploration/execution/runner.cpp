#include "exploration/execution/runner.h"

#include <CL/cl.h>
#include <dlfcn.h>

#include <cstdlib>
#include <cstring>
#include <exception>
#include <string>
#include <vector>

#include "common/opencl/not_taken.h"
#include "exploration/execution/compiler.h"
#include "exploration/execution/device.h"
#include "exploration/execution/events.h"
#include "exploration/execution/task.h"

namespace exploration {
namespace {

// As OpenCL 2.1 names them: the headers are asked for 1.2, which the devices need no more than.
constexpr cl_device_info ilVersion = 0x105B;
using CreateWithIl = cl_program(CL_API_CALL*)(cl_context, const void*, std::size_t, cl_int*);

// One for the process, made by bringUp.
cl_device_id device = nullptr;
cl_context context = nullptr;
cl_command_queue queue = nullptr;

template <class Object>
std::string Text(cl_int (*query)(Object, cl_uint, std::size_t, void*, std::size_t*), Object object,
                 cl_uint name) {
  std::size_t size = 0;
  if (query(object, name, 0, nullptr, &size) != CL_SUCCESS) return "";
  std::string text(size, '\0');
  if (query(object, name, size, text.data(), nullptr) != CL_SUCCESS) return "";
  text.resize(strnlen(text.data(), text.size()));
  return text;
}

template <class Number>
Number NumberOf(cl_device_info name) {
  Number number{};
  return clGetDeviceInfo(device, name, sizeof number, &number, nullptr) == CL_SUCCESS ? number
                                                                                      : Number{};
}

Device Described(cl_platform_id platform) {
  Device described;
  described.platform = Text(clGetPlatformInfo, platform, CL_PLATFORM_NAME);
  described.name = Text(clGetDeviceInfo, device, CL_DEVICE_NAME);
  described.vendor = Text(clGetDeviceInfo, device, CL_DEVICE_VENDOR);
  described.version = Text(clGetDeviceInfo, device, CL_DEVICE_VERSION);
  described.cVersion = Text(clGetDeviceInfo, device, CL_DEVICE_OPENCL_C_VERSION);
  described.driverVersion = Text(clGetDeviceInfo, device, CL_DRIVER_VERSION);
  described.il = Text(clGetDeviceInfo, device, ilVersion);
  described.hasDouble = NumberOf<cl_device_fp_config>(CL_DEVICE_DOUBLE_FP_CONFIG) != 0;
  described.hasHalf =
      Text(clGetDeviceInfo, device, CL_DEVICE_EXTENSIONS).find("cl_khr_fp16") != std::string::npos;
  described.singleFpConfig = NumberOf<cl_device_fp_config>(CL_DEVICE_SINGLE_FP_CONFIG);
  described.maxWorkGroupSize = NumberOf<std::size_t>(CL_DEVICE_MAX_WORK_GROUP_SIZE);
  return described;
}

// The one that the suite takes: the first GPU device of the first platform.
workers::BroughtUp BringDeviceUp() {
  // A copy: the loader takes the variable's own text to pieces.
  const char* const names = std::getenv("OPENCL_LAYERS");
  const std::string layers(names != nullptr ? names : "");
  cl_platform_id platform = nullptr;
  if (clGetPlatformIDs(1, &platform, nullptr) == CL_SUCCESS) {
    const std::string layer = opencl::NotTaken(layers);
    if (!layer.empty()) return {false, "the OpenCL loader did not take the layer " + layer};
  }
  if (platform == nullptr ||
      clGetDeviceIDs(platform, CL_DEVICE_TYPE_GPU, 1, &device, nullptr) != CL_SUCCESS)
    return {false, "the first OpenCL platform has no GPU device, or there is none"};
  cl_int code = CL_SUCCESS;
  context = clCreateContext(nullptr, 1, &device, nullptr, nullptr, &code);
  if (code == CL_SUCCESS) queue = clCreateCommandQueue(context, device, 0, &code);
  if (code != CL_SUCCESS)
    return {false, "the device gives no context or queue: code " + std::to_string(code)};
  return {true, Packed(Described(platform))};
}

// What is left of a task that has failed: everything else was told when it happened.
struct Failed {};

/// Calls that are told before they are made, and end the task where they fail.
class Calls {
 public:
  explicit Calls(workers::SharedBytes& toAnswer) : answer(toAnswer) {}

  template <class... Parameters, class... Arguments>
  void Call(const char* name, cl_int (*function)(Parameters...), Arguments... arguments) {
    Tell(answer, Event::Kind::call, name);
    Check(function(arguments...));
  }
  template <class Object, class... Parameters, class... Arguments>
  Object Make(const char* name, Object (*function)(Parameters...), Arguments... arguments) {
    Tell(answer, Event::Kind::call, name);
    cl_int code = CL_SUCCESS;
    Object made = function(arguments..., &code);
    Check(code);
    return made;
  }
  void Check(cl_int code) {
    if (code == CL_SUCCESS) return;
    Tell(answer, Event::Kind::failed, code);
    throw Failed();
  }

  workers::SharedBytes& answer;
};
#define CALL(function, ...) Call(#function, function, __VA_ARGS__)
#define MAKE(function, ...) Make(#function, function, __VA_ARGS__)

/// The objects of one task, released at its end in the order of their making, turned round.
class Objects {
 public:
  explicit Objects(workers::SharedBytes& toAnswer) : answer(toAnswer) {}
  Objects(const Objects&) = delete;
  Objects& operator=(const Objects&) = delete;
  ~Objects() {
    Tell(answer, Event::Kind::call, "clReleaseMemObject");
    for (cl_mem buffer : buffers) clReleaseMemObject(buffer);
    Tell(answer, Event::Kind::call, "clReleaseKernel");
    if (kernel != nullptr) clReleaseKernel(kernel);
    Tell(answer, Event::Kind::call, "clReleaseProgram");
    if (program != nullptr) clReleaseProgram(program);
  }

  cl_program program = nullptr;
  cl_kernel kernel = nullptr;
  std::vector<cl_mem> buffers;

 private:
  workers::SharedBytes& answer;
};

cl_program MadeProgram(Calls& calls, const Task& task) {
  if (!task.throughIl) {
    const char* text = task.program.text.c_str();
    const std::size_t length = task.program.text.size();
    return calls.MAKE(clCreateProgramWithSource, context, 1U, &text, &length);
  }
  const std::string il = Translated(task.program.text, task.buildOptions, calls.answer);
  if (il.empty()) throw Failed();
  const auto create = reinterpret_cast<CreateWithIl>(dlsym(RTLD_DEFAULT, "clCreateProgramWithIL"));
  if (create == nullptr) {
    Tell(calls.answer, Event::Kind::cannot, "the OpenCL loader has no clCreateProgramWithIL");
    throw Failed();
  }
  return calls.Make("clCreateProgramWithIL", create, context, il.data(), il.size());
}

void Build(Calls& calls, const Task& task, cl_program program) {
  // What the options mean for a front end, that has seen to it.
  const std::string options = task.throughIl ? "" : task.buildOptions;
  Tell(calls.answer, Event::Kind::call, "clBuildProgram");
  const cl_int code = clBuildProgram(program, 1, &device, options.c_str(), nullptr, nullptr);
  if (code == CL_SUCCESS) return;
  std::size_t size = 0;
  clGetProgramBuildInfo(program, device, CL_PROGRAM_BUILD_LOG, 0, nullptr, &size);
  std::string log(size, '\0');
  clGetProgramBuildInfo(program, device, CL_PROGRAM_BUILD_LOG, size, log.data(), nullptr);
  log.resize(strnlen(log.data(), log.size()));
  Tell(calls.answer, Event::Kind::log, log);
  calls.Check(code);
}

void RunOnce(Calls& calls, const RunnableProgram& program, const Objects& objects) {
  for (std::size_t i = 0; i < program.buffers.size(); ++i) {
    const std::vector<std::uint8_t>& bytes = program.buffers[i].bytes;
    calls.CALL(clEnqueueWriteBuffer, queue, objects.buffers[i], cl_bool{CL_TRUE}, std::size_t{0},
               bytes.size(), bytes.data(), 0U, nullptr, nullptr);
  }
  calls.CALL(clEnqueueNDRangeKernel, queue, objects.kernel, 1U, nullptr, &program.globalSize,
             &program.localSize, 0U, nullptr, nullptr);
  calls.CALL(clFinish, queue);
  for (std::size_t i = 0; i < program.buffers.size(); ++i) {
    if (!program.buffers[i].isAnswer) continue;
    std::string bytes(program.buffers[i].bytes.size(), '\0');
    calls.CALL(clEnqueueReadBuffer, queue, objects.buffers[i], cl_bool{CL_TRUE}, std::size_t{0},
               bytes.size(), bytes.data(), 0U, nullptr, nullptr);
    Tell(calls.answer, Event::Kind::answer, bytes);
  }
}

void RunOnDevice(const Task& task, workers::SharedBytes& answer) {
  Calls calls(answer);
  Objects objects(answer);
  objects.program = MadeProgram(calls, task);
  Build(calls, task, objects.program);
  objects.kernel = calls.MAKE(clCreateKernel, objects.program, task.program.kernel.c_str());
  for (const RunnableBuffer& buffer : task.program.buffers) {
    const auto index = static_cast<cl_uint>(objects.buffers.size());
    objects.buffers.push_back(calls.MAKE(clCreateBuffer, context, cl_mem_flags{CL_MEM_READ_WRITE},
                                         buffer.bytes.size(), nullptr));
    calls.CALL(clSetKernelArg, objects.kernel, index, sizeof(cl_mem), &objects.buffers.back());
  }
  for (int run = 0; run < 2; ++run) RunOnce(calls, task.program, objects);
}

// One program in one build, so that a program shows what it shows by itself and a crash is its own.
// What that costs was measured on 48 programs (16 on PoCL, 8 on Rusticl), in processor time a
// program, alone and with four or eight in a build, their names made different: on the simulated
// GPU 14 ms, and 12.5 or 11; on PoCL 250 ms, and 100 or 110; on Rusticl, which compiles a kernel
// when it is launched and keeps what it has compiled, nothing that could be told from chance.
void RunTask(std::string_view packed, workers::SharedBytes& answer) {
  const Task task = TaskFrom(packed);
  try {
    if (task.compiler.empty()) {
      RunOnDevice(task, answer);
    } else {
      Compile(task.compiler, task.program.text, answer);
    }
  } catch (const Failed&) {
  }
  Tell(answer, Event::Kind::done);
}

}  // namespace

const workers::Runner deviceRunner = {"union_explore device 1", BringDeviceUp, RunTask};
const workers::Runner compilerRunner = {"union_explore compiler 1",
                                        [] {
                                          return workers::BroughtUp{true, ""};
                                        },
                                        RunTask};

}  // namespace exploration
