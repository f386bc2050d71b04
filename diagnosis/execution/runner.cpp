#include "diagnosis/execution/runner.h"

#include <CL/cl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>
#include <variant>

#include "diagnosis/capture/boundary.h"
#include "diagnosis/capture/observer.h"
#include "diagnosis/execution/messages.h"
#include "harness/driver.h"
#include "harness/rows.h"
#include "layers/not_taken.h"

namespace diagnosis {
namespace {

// What a query answers, up to its end; empty if it fails.
template <class Object>
std::string Text(cl_int (*query)(Object, cl_uint, size_t, void*, size_t*), Object object,
                 cl_uint name) {
  std::string text(4096, '\0');
  if (query(object, name, text.size(), text.data(), nullptr) != CL_SUCCESS) return "";
  text.resize(strnlen(text.c_str(), text.size()));
  return text;
}

// Why the device that the user means cannot be had, where there is one or is not; else empty.
std::string NoDeviceBecause(bool isThere, const std::string& layers) {
  cl_platform_id platform = nullptr;
  if (clGetPlatformIDs(1, &platform, nullptr) == CL_SUCCESS) {
    const std::string layer = layer::NotTaken(layers);
    if (!layer.empty()) return "the OpenCL loader did not take the layer " + layer;
  }
  return isThere ? "" : "the first OpenCL platform has no GPU device, or there is none";
}

Device FirstGpu() {
  cl_platform_id platform = nullptr;
  clGetPlatformIDs(1, &platform, nullptr);
  cl_device_id device = nullptr;
  clGetDeviceIDs(platform, CL_DEVICE_TYPE_GPU, 1, &device, nullptr);
  Device first;
  first.platform = Text(clGetPlatformInfo, platform, CL_PLATFORM_NAME);
  first.name = Text(clGetDeviceInfo, device, CL_DEVICE_NAME);
  first.vendor = Text(clGetDeviceInfo, device, CL_DEVICE_VENDOR);
  first.version = Text(clGetDeviceInfo, device, CL_DEVICE_VERSION);
  first.driverVersion = Text(clGetDeviceInfo, device, CL_DRIVER_VERSION);
  cl_device_fp_config config = 0;
  if (clGetDeviceInfo(device, CL_DEVICE_SINGLE_FP_CONFIG, sizeof config, &config, nullptr) ==
      CL_SUCCESS)
    first.singleFpConfig = config;
  return first;
}

// The worker's wake, or its end. Without a socket, which the driver may have closed, the process
// ends too: the worker sees that, and what the row left is in memory.
bool Wait(int wake) {
  char any = 0;
  ssize_t size = 0;
  do size = read(wake, &any, 1);
  while (size < 0 && errno == EINTR);
  return size == 1;
}

bool WakeWorker(int wake) { return write(wake, "", 1) == 1; }

void Do(const Task& task, Journal& journal) {
  const auto* const row = std::ranges::find(rows, task.row, &NamedRunner::name);
  if (row == std::end(rows)) return;
  for (int pass = 0; pass < task.passes; ++pass)
    RunObserved(row->run, task.conditions, libraryOpenCl, journal);
}

}  // namespace

void RunnerMemory::SetMessage(std::string_view bytes) {
  messageSize_ = std::min(bytes.size(), longestMessage);
  std::memcpy(message_, bytes.data(), messageSize_);
}

std::string_view RunnerMemory::Message() const {
  return {message_, std::min(messageSize_, longestMessage)};
}

void RunnerMain(RunnerMemory& memory, int wake) noexcept {
  // A copy: the loader takes the variable's own text to pieces.
  const char* const names = std::getenv("OPENCL_LAYERS");
  const std::string layers(names != nullptr ? names : "");
  const std::string noDevice = NoDeviceBecause(MatchHostToDevice(), layers);
  memory.SetMessage(noDevice.empty() ? Packed(Answer(FirstGpu())) : noDevice);
  memory.state = noDevice.empty() ? RunnerMemory::State::ready : RunnerMemory::State::noDevice;
  while (WakeWorker(wake)) {
    while (memory.done == memory.asked) {
      if (!Wait(wake)) std::exit(0);
    }
    memory.begun = memory.asked.load();
    Do(std::get<Task>(OrderFrom(memory.Message())), memory.journal);
    memory.done = memory.begun.load();
  }
  std::exit(0);
}

}  // namespace diagnosis
