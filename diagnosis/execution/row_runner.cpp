#include <CL/cl.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "common/opencl/not_taken.h"
#include "diagnosis/capture/boundary.h"
#include "diagnosis/capture/observer.h"
#include "diagnosis/capture/shared_context.h"
#include "diagnosis/execution/provenance_here.h"
#include "diagnosis/execution/row_task.h"
#include "diagnosis/execution/run_rows.h"
#include "harness/driver.h"
#include "harness/rows.h"

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
    const std::string layer = opencl::NotTaken(layers);
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

workers::BroughtUp BringUp() {
  // A copy: the loader takes the variable's own text to pieces.
  const char* const names = std::getenv("OPENCL_LAYERS");
  const std::string layers(names != nullptr ? names : "");
  const std::string noDevice = NoDeviceBecause(MatchHostToDevice(), layers);
  if (!noDevice.empty()) return {.hasDevice = false, .text = noDevice};
  return {.hasDevice = true, .text = Packed({FirstGpu(), ProvenanceHere(layers)})};
}

void RunRow(std::string_view bytes, workers::SharedBytes& answer) {
  const RowTask task = RowTaskFrom(bytes);
  const auto* const row = std::ranges::find(rows, task.row, &NamedRunner::name);
  if (row == std::end(rows)) return;
  Journal journal(answer);
  const cl_icd_dispatch& openCl =
      task.sharesContext ? WithSharedContext(libraryOpenCl) : libraryOpenCl;
  for (int pass = 0; pass < task.passes; ++pass)
    RunObserved(row->run, task.conditions, openCl, journal);
}

}  // namespace

const workers::Runner rowRunner = {
    .protocol = rowProtocol, .bringUp = BringUp, .run = RunRow, .end = ReleaseSharedContext};

}  // namespace diagnosis
