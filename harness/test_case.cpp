#include "harness/test_case.h"

#include <cmath>
#include <iostream>

std::size_t TestCase::RoundUp(int numElements, std::size_t localSize) {
  const auto size = static_cast<float>(localSize);
  return static_cast<std::size_t>(std::ceil(static_cast<float>(numElements) * (1.0F / size)) *
                                  size);
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

void TestCase::WriteMismatch(const char* label, float c, float d) {
  std::cout << label << double{c} << " ocl:" << double{d} << std::endl;
}
