#pragma once

#include <cstddef>
#include <initializer_list>
#include <vector>

#include "harness/opencl.h"

/// Base of all tests. The runner constructs one, calls Setup once, Run once for each repetition and
/// Cleanup once. A failing OpenCL call leaves any of them as a cl::Error.
///
/// What a row does is spelled out by the row and its family; what all rows do alike stands here.
class TestCase {
 public:
  /// Takes references of its own on `program` and `context`. `devices` is the runner's, must
  /// outlive the object, and its first entry is the device that runs the test.
  TestCase(const cl::Program& program, const cl::Context& context, std::vector<cl::Device>* devices)
      : program_(program), context_(context), devices_(devices) {}
  TestCase(const TestCase&) = delete;
  TestCase& operator=(const TestCase&) = delete;

  /// Releases the OpenCL objects, last made first. The host arrays are Cleanup's alone.
  virtual ~TestCase() = default;

  /// Makes the kernel, the host arrays and the device buffers.
  virtual void Setup() {}

  /// One repetition on freshly drawn data. False after the first value that does not pass, with one
  /// mismatch line written on standard output.
  virtual bool Run() = 0;

  /// Frees the host arrays. After an exception nobody calls it, and they stay allocated.
  virtual void Cleanup() {}

 protected:
  /// A host array on its way to a device buffer.
  struct Write {
    const cl::Buffer& buffer;
    const void* source;
  };

  /// `numElements` rounded up to a multiple of `localSize`, in single precision.
  static std::size_t RoundUp(int numElements, std::size_t localSize);

  /// Writes the inputs without blocking, launches `kernel` over `globalSize` work-items, and reads
  /// `result` back into `destination`, blocking; every transfer is of `size` bytes. The queue is
  /// the call's own and is gone when it returns.
  void DeviceRoundTrip(std::initializer_list<Write> writes, const cl::Kernel& kernel,
                       std::size_t globalSize, const cl::Buffer& result, void* destination,
                       std::size_t size) const;

  /// Writes the mismatch line of reference `c` and device value `d`: `label`, `c`, " ocl:", `d`.
  static void WriteMismatch(const char* label, float c, float d);

  cl::Program program_;
  cl::Context context_;
  std::vector<cl::Device>* devices_;
};
