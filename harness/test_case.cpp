#include "harness/test_case.h"

#include <cmath>
#include <iostream>

#include "harness/opencl.h"

void TestCase::CreateKernel(Held<cl::Kernel>& kernel, const char* name) const {
  *kernel = cl::Kernel(*program_, name);
}

void TestCase::CreateBuffer(Held<cl::Buffer>& buffer, cl_mem_flags flags, std::size_t size) const {
  *buffer = cl::Buffer(*context_, flags, size);
}

std::size_t TestCase::RoundUp(int numElements, std::size_t localSize) {
  const auto size = static_cast<float>(localSize);
  return static_cast<std::size_t>(std::ceil(static_cast<float>(numElements) * (1.0F / size)) *
                                  size);
}

void TestCase::SetArguments(Held<cl::Kernel>& kernel,
                            std::initializer_list<const Held<cl::Buffer>*> buffers,
                            int numElements) {
  cl_uint index = 0;
  for (const Held<cl::Buffer>* buffer : buffers) (*kernel).setArg(index++, **buffer);
  (*kernel).setArg(index, cl_int{numElements});
}

void TestCase::DeviceRoundTrip(std::initializer_list<Write> writes, const Held<cl::Kernel>& kernel,
                               std::size_t globalSize, const Held<cl::Buffer>& result,
                               void* destination, std::size_t size) const {
  const cl::CommandQueue queue(*context_, devices_->front(), cl_command_queue_properties{0});
  for (const Write& write : writes)
    queue.enqueueWriteBuffer(*write.buffer, CL_FALSE, 0, size, write.source);
  queue.enqueueNDRangeKernel(*kernel, cl::NullRange, cl::NDRange(globalSize), cl::NullRange);
  queue.enqueueReadBuffer(*result, CL_TRUE, 0, size, destination);
}

bool TestCase::Mismatch(const char* label, float c, float d) {
  std::cout << label << double{c} << " ocl:" << double{d} << std::endl;
  return false;
}
