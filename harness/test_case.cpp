#include "harness/test_case.h"

#include <cmath>
#include <iostream>

cl::Kernel TestCase::CreateKernel(const char* name) const { return {program_, name}; }

cl::Buffer TestCase::CreateBuffer(cl_mem_flags flags, std::size_t size) const {
  return {context_, flags, size};
}

std::size_t TestCase::RoundUp(int numElements, std::size_t localSize) {
  const auto size = static_cast<float>(localSize);
  return static_cast<std::size_t>(std::ceil(static_cast<float>(numElements) * (1.0F / size)) *
                                  size);
}

void TestCase::SetArguments(cl::Kernel& kernel, std::initializer_list<const cl::Buffer*> buffers,
                            int numElements) {
  cl_uint index = 0;
  for (const cl::Buffer* buffer : buffers) kernel.setArg(index++, *buffer);
  kernel.setArg(index, cl_int{numElements});
}

void TestCase::DeviceRoundTrip(std::initializer_list<Write> writes, const cl::Kernel& kernel,
                               std::size_t globalSize, const cl::Buffer& result, void* destination,
                               std::size_t size) const {
  const cl::CommandQueue queue(context_, devices_->front(), cl_command_queue_properties{0});
  for (const Write& write : writes)
    queue.enqueueWriteBuffer(write.buffer, CL_FALSE, 0, size, write.source);
  queue.enqueueNDRangeKernel(kernel, cl::NullRange, cl::NDRange(globalSize), cl::NullRange);
  queue.enqueueReadBuffer(result, CL_TRUE, 0, size, destination);
}

bool TestCase::Mismatch(const char* label, float c, float d) {
  std::cout << label << double{c} << " ocl:" << double{d} << std::endl;
  return false;
}
