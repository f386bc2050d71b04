// An OpenCL layer that copies into the file RECORD_WRITES what the program writes to buffers.

#include <cstdlib>
#include <fstream>

#include "layers/layer.h"

namespace {

std::ofstream& File() {
  static std::ofstream file(std::getenv("RECORD_WRITES"), std::ios::binary);
  return file;
}

cl_int CL_API_CALL EnqueueWriteBuffer(cl_command_queue queue, cl_mem buffer, cl_bool blocking,
                                      size_t offset, size_t size, const void* source, cl_uint count,
                                      const cl_event* waitList, cl_event* event) {
  File().write(static_cast<const char*>(source), static_cast<std::streamsize>(size));
  return layer::below->clEnqueueWriteBuffer(queue, buffer, blocking, offset, size, source, count,
                                            waitList, event);
}

consteval cl_icd_dispatch Hooks() {
  cl_icd_dispatch hooks{};
  hooks.clEnqueueWriteBuffer = EnqueueWriteBuffer;
  return hooks;
}

}  // namespace

const char* const layer::name = "record writes";
constinit const cl_icd_dispatch layer::hooks = Hooks();
void layer::Start() {}
