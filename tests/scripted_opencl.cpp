#include "tests/scripted_opencl.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <optional>
#include <sstream>

namespace {

enum class Kind { platform, device, context, program, kernel, buffer, queue };

struct Object {
  Kind kind{};
  int number = 0;  // counted from 0 within its kind
  int references = 1;
  std::string text;                                     // a program's source, a kernel's name
  Object* parent = nullptr;                             // a kernel's program
  std::vector<std::byte> bytes;                         // a buffer's
  std::map<cl_uint, std::vector<std::byte>> arguments;  // a kernel's
  std::vector<std::function<void()>> pending;           // a queue's
};

std::unique_ptr<ScriptedOpenCl> machine;
std::vector<std::unique_ptr<Object>> objects;

Object& Make(Kind kind) {
  int number = 0;
  for (const auto& object : objects) number += object->kind == kind ? 1 : 0;
  auto object = std::make_unique<Object>();
  object->kind = kind;
  object->number = number;
  objects.push_back(std::move(object));
  return *objects.back();
}

// The object behind a handle; what is no live object of that kind fails the test.
template <class Handle>
Object& At(Handle handle, Kind kind) {
  for (const auto& object : objects) {
    if (static_cast<void*>(object.get()) != static_cast<void*>(handle)) continue;
    EXPECT_EQ(object->kind, kind) << "a handle of another kind";
    EXPECT_GT(object->references, 0) << "a handle that was released";
    return *object;
  }
  ADD_FAILURE() << "a handle that was never given out";
  return Make(kind);
}

template <class Handle>
Handle HandleOf(Object& object) {
  return static_cast<Handle>(static_cast<void*>(&object));
}

// Platforms and devices exist from the start and for good.
Object& Fixed(Kind kind, cl_uint number) {
  for (const auto& object : objects) {
    if (object->kind == kind && object->number == static_cast<int>(number)) return *object;
  }
  return Make(kind);
}

template <class Handle>
void GiveOut(Kind kind, cl_uint available, cl_uint wanted, Handle* handles, cl_uint* count) {
  for (cl_uint i = 0; handles != nullptr && i < wanted && i < available; ++i)
    handles[i] = HandleOf<Handle>(Fixed(kind, i));
  if (count != nullptr) *count = available;
}

cl_int Answer(const void* answer, std::size_t answerSize, std::size_t size, void* value,
              std::size_t* sizeReturned) {
  if (sizeReturned != nullptr) *sizeReturned = answerSize;
  if (value == nullptr) return CL_SUCCESS;
  if (size < answerSize) return CL_INVALID_VALUE;
  std::memcpy(value, answer, answerSize);
  return CL_SUCCESS;
}

template <class Handle>
Handle Created(cl_int code, Kind kind, cl_int* error, const std::function<void(Object&)>& fill) {
  if (error != nullptr) *error = code;
  if (code != CL_SUCCESS) return nullptr;
  Object& object = Make(kind);
  fill(object);
  return HandleOf<Handle>(object);
}

template <class Handle>
cl_int Retain(const char* entryPoint, Handle handle, Kind kind) {
  const cl_int code = machine->Enter(entryPoint);
  if (code == CL_SUCCESS) ++At(handle, kind).references;
  return code;
}

std::string Buffer(Object& buffer) { return "buffer " + std::to_string(buffer.number); }

// A release that fails has had its effect all the same, as far as the caller can tell.
template <class Handle>
cl_int Release(const char* entryPoint, Handle handle, Kind kind) {
  Object& object = At(handle, kind);
  --object.references;
  return machine->Enter(entryPoint, kind == Kind::buffer ? Buffer(object) : "");
}

template <class... Parts>
std::string Text(const Parts&... parts) {
  std::ostringstream text;
  (text << ... << parts);
  return text.str();
}

void RunLaunch(Object& kernel, const std::map<cl_uint, std::vector<std::byte>>& arguments,
               std::size_t globalSize) {
  Launch launch{kernel.parent->text, kernel.text, globalSize, {}, 0};
  for (const auto& [index, value] : arguments) {
    if (value.size() == sizeof(cl_mem)) {
      cl_mem handle = nullptr;
      std::memcpy(&handle, value.data(), sizeof handle);
      launch.buffers.emplace_back(At(handle, Kind::buffer).bytes);
    } else {
      EXPECT_EQ(value.size(), sizeof launch.numElements);
      std::memcpy(&launch.numElements, value.data(), sizeof launch.numElements);
    }
  }
  machine->device(launch);
  machine->launches.push_back(launch);
}

}  // namespace

ScriptedOpenCl& Machine() { return *machine; }

void ResetMachine() {
  objects.clear();
  machine = std::make_unique<ScriptedOpenCl>();
}

void ScriptedOpenCl::Fail(const std::string& entryPoint, cl_int code, int occurrence) {
  failures_[entryPoint][occurrence] = code;
}

void ScriptedOpenCl::Throw(const std::string& entryPoint) { throwing_.insert(entryPoint); }

int ScriptedOpenCl::Count(const std::string& entryPoint) const {
  const auto count = counts_.find(entryPoint);
  return count == counts_.end() ? 0 : count->second;
}

std::vector<std::string> ScriptedOpenCl::WorkCalls() const {
  std::vector<std::string> work;
  for (const std::string& call : calls) {
    if (!call.starts_with("clRetain") && !call.starts_with("clRelease")) work.push_back(call);
  }
  return work;
}

int LiveObjects() {
  int alive = 0;
  for (const auto& object : objects) {
    const bool fixed = object->kind == Kind::platform || object->kind == Kind::device;
    alive += object->references - (fixed ? 1 : 0);
  }
  return alive;
}

cl_int ScriptedOpenCl::Enter(const std::string& entryPoint, const std::string& arguments) {
  const int occurrence = ++counts_[entryPoint];
  calls.push_back(arguments.empty() ? entryPoint : entryPoint + " " + arguments);
  if (throwing_.contains(entryPoint)) throw std::bad_alloc();
  const auto& codes = failures_[entryPoint];
  for (const int key : {occurrence, 0}) {
    if (const auto code = codes.find(key); code != codes.end()) return code->second;
  }
  return CL_SUCCESS;
}

// The entry points, in the order in which a test calls them.

cl_int clGetPlatformIDs(cl_uint wanted, cl_platform_id* platforms, cl_uint* count) {
  const cl_int code = machine->Enter("clGetPlatformIDs");
  if (code == CL_SUCCESS) GiveOut(Kind::platform, machine->platforms, wanted, platforms, count);
  return code;
}

cl_int clGetPlatformInfo(cl_platform_id platform, cl_platform_info name, size_t size, void* value,
                         size_t* sizeReturned) {
  const cl_int code = machine->Enter("clGetPlatformInfo", Text(name));
  At(platform, Kind::platform);
  if (code != CL_SUCCESS) return code;
  EXPECT_EQ(name, cl_platform_info{CL_PLATFORM_VERSION});
  const std::string& version = machine->platformVersion;
  return Answer(version.c_str(), version.size() + 1, size, value, sizeReturned);
}

cl_int clGetDeviceIDs(cl_platform_id platform, cl_device_type type, cl_uint wanted,
                      cl_device_id* devices, cl_uint* count) {
  const int number = At(platform, Kind::platform).number;
  const cl_int code = machine->Enter("clGetDeviceIDs", Text("platform ", number, " type ", type));
  if (code != CL_SUCCESS) return code;
  if (machine->devices == 0) return CL_DEVICE_NOT_FOUND;
  GiveOut(Kind::device, machine->devices, wanted, devices, count);
  return CL_SUCCESS;
}

cl_int clGetDeviceInfo(cl_device_id device, cl_device_info name, size_t size, void* value,
                       size_t* sizeReturned) {
  const int number = At(device, Kind::device).number;
  const cl_int code =
      machine->Enter("clGetDeviceInfo", Text("device ", number, " ", name, " size ", size));
  if (code != CL_SUCCESS) return code;
  if (name == CL_DEVICE_PLATFORM) {
    auto* const platform = HandleOf<cl_platform_id>(Fixed(Kind::platform, 0));
    return Answer(&platform, sizeof platform, size, value, sizeReturned);
  }
  EXPECT_EQ(name, cl_device_info{CL_DEVICE_SINGLE_FP_CONFIG});
  return Answer(&machine->singleFpConfig, sizeof machine->singleFpConfig, size, value,
                sizeReturned);
}

cl_context clCreateContextFromType(const cl_context_properties* properties, cl_device_type type,
                                   void (*notify)(const char*, const void*, size_t, void*),
                                   void* userData, cl_int* error) {
  cl_int code = machine->Enter("clCreateContextFromType", Text("type ", type));
  EXPECT_EQ(properties[0], CL_CONTEXT_PLATFORM);
  EXPECT_EQ(properties[1], reinterpret_cast<cl_context_properties>(&Fixed(Kind::platform, 0)));
  EXPECT_EQ(properties[2], 0);
  EXPECT_EQ(notify, nullptr);
  EXPECT_EQ(userData, nullptr);
  if (code == CL_SUCCESS && machine->devices == 0) code = CL_DEVICE_NOT_FOUND;
  return Created<cl_context>(code, Kind::context, error, [](Object&) {});
}

cl_int clGetContextInfo(cl_context context, cl_context_info name, size_t size, void* value,
                        size_t* sizeReturned) {
  const cl_int code = machine->Enter("clGetContextInfo");
  At(context, Kind::context);
  EXPECT_EQ(name, static_cast<cl_context_info>(CL_CONTEXT_DEVICES));
  if (code != CL_SUCCESS) return code;
  std::vector<cl_device_id> devices(machine->devices);
  GiveOut(Kind::device, machine->devices, machine->devices, devices.data(), nullptr);
  return Answer(devices.data(), devices.size() * sizeof devices[0], size, value, sizeReturned);
}

cl_program clCreateProgramWithSource(cl_context context, cl_uint count, const char** strings,
                                     const size_t* lengths, cl_int* error) {
  const cl_int code = machine->Enter("clCreateProgramWithSource", Text("length ", lengths[0]));
  At(context, Kind::context);
  EXPECT_EQ(count, 1U);
  machine->sources.emplace_back(strings[0], lengths[0]);
  return Created<cl_program>(code, Kind::program, error,
                             [](Object& program) { program.text = machine->sources.back(); });
}

cl_int clBuildProgram(cl_program program, cl_uint deviceCount, const cl_device_id* devices,
                      const char* options, void (*notify)(cl_program, void*), void* userData) {
  const cl_int code = machine->Enter("clBuildProgram", Text("devices ", deviceCount));
  At(program, Kind::program);
  for (cl_uint i = 0; i < deviceCount; ++i)
    EXPECT_EQ(At(devices[i], Kind::device).number, static_cast<int>(i));
  EXPECT_EQ(options, nullptr);
  EXPECT_EQ(notify, nullptr);
  EXPECT_EQ(userData, nullptr);
  return code;
}

cl_int clGetProgramBuildInfo(cl_program program, cl_device_id device, cl_program_build_info name,
                             size_t size, void* value, size_t* sizeReturned) {
  Object& queried = At(device, Kind::device);
  const cl_int code = machine->Enter("clGetProgramBuildInfo", Text("device ", queried.number));
  At(program, Kind::program);
  EXPECT_EQ(name, static_cast<cl_program_build_info>(CL_PROGRAM_BUILD_LOG));
  if (code != CL_SUCCESS) return code;
  const auto number = static_cast<std::size_t>(queried.number);
  const std::string log = number < machine->buildLogs.size() ? machine->buildLogs[number] : "";
  return Answer(log.c_str(), log.size() + 1, size, value, sizeReturned);
}

cl_kernel clCreateKernel(cl_program program, const char* name, cl_int* error) {
  const cl_int code = machine->Enter("clCreateKernel", name);
  Object& parent = At(program, Kind::program);
  return Created<cl_kernel>(code, Kind::kernel, error, [&](Object& kernel) {
    kernel.text = name;
    kernel.parent = &parent;
  });
}

cl_mem clCreateBuffer(cl_context context, cl_mem_flags flags, size_t size, void* host,
                      cl_int* error) {
  const cl_int code = machine->Enter("clCreateBuffer", Text("flags ", flags, " size ", size));
  At(context, Kind::context);
  EXPECT_EQ(host, nullptr);
  return Created<cl_mem>(code, Kind::buffer, error,
                         [&](Object& buffer) { buffer.bytes.resize(size); });
}

cl_int clSetKernelArg(cl_kernel kernel, cl_uint index, size_t size, const void* value) {
  const auto* bytes = static_cast<const std::byte*>(value);
  std::string what;
  if (size == sizeof(cl_mem)) {
    cl_mem handle = nullptr;
    std::memcpy(&handle, value, sizeof handle);
    what = Buffer(At(handle, Kind::buffer));
  } else {
    cl_int number = 0;
    std::memcpy(&number, value, sizeof number);
    what = Text("int ", number);
  }
  const cl_int code = machine->Enter("clSetKernelArg", Text(index, " size ", size, " ", what));
  if (code == CL_SUCCESS) At(kernel, Kind::kernel).arguments[index].assign(bytes, bytes + size);
  return code;
}

cl_command_queue clCreateCommandQueue(cl_context context, cl_device_id device,
                                      cl_command_queue_properties properties, cl_int* error) {
  const cl_int code =
      machine->Enter("clCreateCommandQueue",
                     Text("device ", At(device, Kind::device).number, " properties ", properties));
  At(context, Kind::context);
  return Created<cl_command_queue>(code, Kind::queue, error, [](Object&) {});
}

cl_int clEnqueueWriteBuffer(cl_command_queue queue, cl_mem buffer, cl_bool blocking, size_t offset,
                            size_t size, const void* source, cl_uint waitCount,
                            const cl_event* waitList, cl_event* event) {
  Object& target = At(buffer, Kind::buffer);
  const cl_int code = machine->Enter(
      "clEnqueueWriteBuffer",
      Text(Buffer(target), " blocking ", blocking, " offset ", offset, " size ", size));
  EXPECT_EQ(waitCount, 0U);
  EXPECT_EQ(waitList, nullptr);
  EXPECT_EQ(event, nullptr);
  EXPECT_LE(offset + size, target.bytes.size());
  machine->hostEnds.push_back(source);
  Object& lazy = At(queue, Kind::queue);
  if (code == CL_SUCCESS) {
    lazy.pending.emplace_back([&target, offset, size, source] {
      std::copy_n(static_cast<const std::byte*>(source), size, target.bytes.data() + offset);
    });
  }
  return code;
}

cl_int clEnqueueNDRangeKernel(cl_command_queue queue, cl_kernel kernel, cl_uint dimensions,
                              const size_t* offset, const size_t* globalSize,
                              const size_t* localSize, cl_uint waitCount, const cl_event* waitList,
                              cl_event* event) {
  Object& launched = At(kernel, Kind::kernel);
  const cl_int code =
      machine->Enter("clEnqueueNDRangeKernel", Text(launched.text, " global ", *globalSize));
  EXPECT_EQ(dimensions, 1U);
  EXPECT_EQ(offset, nullptr);
  EXPECT_EQ(localSize, nullptr);
  EXPECT_EQ(waitCount, 0U);
  EXPECT_EQ(waitList, nullptr);
  EXPECT_EQ(event, nullptr);
  Object& lazy = At(queue, Kind::queue);
  if (code == CL_SUCCESS) {
    lazy.pending.emplace_back([&launched, arguments = launched.arguments, size = *globalSize] {
      RunLaunch(launched, arguments, size);
    });
  }
  return code;
}

cl_int clEnqueueReadBuffer(cl_command_queue queue, cl_mem buffer, cl_bool blocking, size_t offset,
                           size_t size, void* destination, cl_uint waitCount,
                           const cl_event* waitList, cl_event* event) {
  Object& origin = At(buffer, Kind::buffer);
  const cl_int code = machine->Enter(
      "clEnqueueReadBuffer",
      Text(Buffer(origin), " blocking ", blocking, " offset ", offset, " size ", size));
  EXPECT_EQ(waitCount, 0U);
  EXPECT_EQ(waitList, nullptr);
  EXPECT_EQ(event, nullptr);
  EXPECT_LE(offset + size, origin.bytes.size());
  machine->hostEnds.push_back(destination);
  Object& lazy = At(queue, Kind::queue);
  if (code != CL_SUCCESS) return code;
  for (const auto& command : lazy.pending) command();
  lazy.pending.clear();
  std::copy_n(origin.bytes.data() + offset, size, static_cast<std::byte*>(destination));
  return code;
}

cl_int clRetainDevice(cl_device_id device) {
  return Retain("clRetainDevice", device, Kind::device);
}
cl_int clReleaseDevice(cl_device_id device) {
  return Release("clReleaseDevice", device, Kind::device);
}
cl_int clRetainContext(cl_context context) {
  return Retain("clRetainContext", context, Kind::context);
}
cl_int clReleaseContext(cl_context context) {
  return Release("clReleaseContext", context, Kind::context);
}
cl_int clRetainProgram(cl_program program) {
  return Retain("clRetainProgram", program, Kind::program);
}
cl_int clReleaseProgram(cl_program program) {
  return Release("clReleaseProgram", program, Kind::program);
}
cl_int clRetainKernel(cl_kernel kernel) { return Retain("clRetainKernel", kernel, Kind::kernel); }
cl_int clReleaseKernel(cl_kernel kernel) {
  return Release("clReleaseKernel", kernel, Kind::kernel);
}
cl_int clRetainMemObject(cl_mem buffer) {
  return Retain("clRetainMemObject", buffer, Kind::buffer);
}
cl_int clReleaseMemObject(cl_mem buffer) {
  return Release("clReleaseMemObject", buffer, Kind::buffer);
}
cl_int clRetainCommandQueue(cl_command_queue queue) {
  return Retain("clRetainCommandQueue", queue, Kind::queue);
}
cl_int clReleaseCommandQueue(cl_command_queue queue) {
  return Release("clReleaseCommandQueue", queue, Kind::queue);
}

// The bindings name this one where they could hand out an event, which the suite never asks for.
cl_int clReleaseEvent(cl_event /*event*/) {
  ADD_FAILURE() << "there are no events";
  return CL_INVALID_EVENT;
}
