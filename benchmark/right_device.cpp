// An OpenCL layer that gives the suite's rows their right answers, computed on the host. On the
// driver that does nothing it makes a device that is right, costs next to nothing, and whose
// contexts cost what the environment says:
//   CONTEXT_MILLISECONDS  that creating a context takes, and releasing it for the last time
//   CONTEXT_LOG           a file that gets a line for each that is created and each that is gone

#include <unistd.h>

#include <bit>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <span>
#include <string>
#include <thread>
#include <vector>

#include "diagnosis/record/row.h"
#include "kernels/kernel_text.h"
#include "layers/layer.h"

namespace {

using diagnosis::Row;

// The rows by their texts.
std::map<std::string, Row, std::less<>> Rows() {
  std::map<std::string, Row, std::less<>> rows;
  for (const char* operation : {"add", "copy", "floor", "multiply", "power"}) {
    for (const char* shape :
         {"arrays", "scalar", "vector2", "vector3", "vector4", "vector8", "vector16"}) {
      for (int type = 1; type <= 6; ++type) {
        const Row row = diagnosis::RowNamed(std::string(operation) + "_union_" + shape + "_" +
                                            std::to_string(type))
                            .value();
        kernel_text::Room text = kernel_text::blanks;
        kernel_text::Writer writer({row.operation, row.shape, row.elementType}, text);
        for (const kernel_text::Line& line : kernel_text::lines) writer.Write(line);
        writer.End();
        rows.emplace(text.data(), row);
      }
    }
  }
  return rows;
}

// Of the program that is there, whose inputs are written in their order before each launch.
const Row* current = nullptr;
std::vector<std::vector<std::uint8_t>> inputs;

// Without denormals, as the suite would have it.
float Flushed(float x) { return std::fpclassify(x) == FP_SUBNORMAL ? 0.0F : x; }

float Answer(const Row& row, int element, int lane) {
  const std::size_t at = row.stride * static_cast<std::size_t>(element);
  const auto a =
      static_cast<float>(IntegerLane(row, std::span(inputs.at(0)).subspan(at, row.stride), lane));
  if (row.operation == Operation::power)
    return static_cast<float>(std::pow(double{a}, ExponentOf(row, element, lane)));
  if (!row.twoInputs) return a;
  const float b =
      Flushed(diagnosis::FloatLane(std::span(inputs.at(1)).subspan(at, row.stride), lane));
  return Flushed(row.operation == Operation::add ? a + b : a * b);
}

cl_program CL_API_CALL CreateProgramWithSource(cl_context context, cl_uint count,
                                               const char** strings, const size_t* lengths,
                                               cl_int* error) {
  static const auto rows = Rows();
  const auto row = rows.find(std::string_view(strings[0], lengths[0]));
  current = row == rows.end() ? nullptr : &row->second;
  inputs.clear();
  return layer::below->clCreateProgramWithSource(context, count, strings, lengths, error);
}

cl_int CL_API_CALL EnqueueWriteBuffer(cl_command_queue, cl_mem, cl_bool, size_t, size_t size,
                                      const void* source, cl_uint, const cl_event*, cl_event*) {
  const auto* const bytes = static_cast<const std::uint8_t*>(source);
  inputs.emplace_back(bytes, bytes + size);
  return CL_SUCCESS;
}

cl_int CL_API_CALL EnqueueReadBuffer(cl_command_queue, cl_mem, cl_bool, size_t, size_t,
                                     void* destination, cl_uint, const cl_event*, cl_event*) {
  if (current == nullptr || inputs.size() < (current->twoInputs ? 2 : 1)) return CL_SUCCESS;
  for (int element = 0; element < diagnosis::elementsOfRow; ++element) {
    for (int lane = 0; lane < current->lanes; ++lane) {
      const auto bits = std::bit_cast<std::uint32_t>(Answer(*current, element, lane));
      std::memcpy(static_cast<char*>(destination) +
                      current->stride * static_cast<std::size_t>(element) +
                      sizeof bits * static_cast<std::size_t>(lane),
                  &bits, sizeof bits);
    }
  }
  inputs.clear();
  return CL_SUCCESS;
}

cl_int CL_API_CALL GetDeviceInfo(cl_device_id device, cl_device_info name, size_t size, void* value,
                                 size_t* returned) {
  const cl_int code = layer::below->clGetDeviceInfo(device, name, size, value, returned);
  const cl_device_fp_config config = CL_FP_ROUND_TO_NEAREST | CL_FP_INF_NAN;
  if (code == CL_SUCCESS && name == CL_DEVICE_SINGLE_FP_CONFIG && value != nullptr)
    std::memcpy(value, &config, sizeof config);
  return code;
}

// The driver below has one handle for all contexts, so they are counted together.
int references = 0;

void Spend(const char* what) {
  static const char* const milliseconds = std::getenv("CONTEXT_MILLISECONDS");
  static const char* const log = std::getenv("CONTEXT_LOG");
  if (milliseconds != nullptr)
    std::this_thread::sleep_for(std::chrono::milliseconds(std::atoi(milliseconds)));
  if (log != nullptr) std::ofstream(log, std::ios::app) << what << " in " << getpid() << '\n';
}

cl_context CL_API_CALL CreateContextFromType(
    const cl_context_properties* properties, cl_device_type type,
    void(CL_CALLBACK* notify)(const char*, const void*, size_t, void*), void* data, cl_int* error) {
  Spend("created");
  ++references;
  return layer::below->clCreateContextFromType(properties, type, notify, data, error);
}

cl_int CL_API_CALL RetainContext(cl_context) {
  ++references;
  return CL_SUCCESS;
}

cl_int CL_API_CALL ReleaseContext(cl_context) {
  if (--references == 0) Spend("gone");
  return CL_SUCCESS;
}

consteval cl_icd_dispatch Hooks() {
  cl_icd_dispatch hooks{};
  hooks.clCreateProgramWithSource = CreateProgramWithSource;
  hooks.clEnqueueWriteBuffer = EnqueueWriteBuffer;
  hooks.clEnqueueReadBuffer = EnqueueReadBuffer;
  hooks.clGetDeviceInfo = GetDeviceInfo;
  hooks.clCreateContextFromType = CreateContextFromType;
  hooks.clRetainContext = RetainContext;
  hooks.clReleaseContext = ReleaseContext;
  return hooks;
}

}  // namespace

const char* const layer::name = "right device";
constinit const cl_icd_dispatch layer::hooks = Hooks();

void layer::Start() {}
