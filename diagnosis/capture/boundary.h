#pragma once

#include <CL/cl_icd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

// The boundary between the suite and what it stands on: OpenCL, and the stream of random numbers.
// The linker leads the suite's calls through here, and the suite knows nothing of it.

/// Does `DO(name, number of arguments)` for each OpenCL entry point that the suite calls. The
/// linker's list is made from these lines.
#define FOR_EACH_ENTRY_POINT(DO)   \
  DO(clGetPlatformIDs, 3)          \
  DO(clGetPlatformInfo, 5)         \
  DO(clGetDeviceIDs, 5)            \
  DO(clGetDeviceInfo, 5)           \
  DO(clRetainDevice, 1)            \
  DO(clReleaseDevice, 1)           \
  DO(clCreateContextFromType, 5)   \
  DO(clGetContextInfo, 5)          \
  DO(clRetainContext, 1)           \
  DO(clReleaseContext, 1)          \
  DO(clCreateProgramWithSource, 5) \
  DO(clBuildProgram, 6)            \
  DO(clGetProgramBuildInfo, 6)     \
  DO(clRetainProgram, 1)           \
  DO(clReleaseProgram, 1)          \
  DO(clCreateKernel, 3)            \
  DO(clSetKernelArg, 4)            \
  DO(clRetainKernel, 1)            \
  DO(clReleaseKernel, 1)           \
  DO(clCreateBuffer, 5)            \
  DO(clRetainMemObject, 1)         \
  DO(clReleaseMemObject, 1)        \
  DO(clCreateCommandQueue, 4)      \
  DO(clEnqueueWriteBuffer, 9)      \
  DO(clEnqueueNDRangeKernel, 9)    \
  DO(clEnqueueReadBuffer, 9)       \
  DO(clRetainCommandQueue, 1)      \
  DO(clReleaseCommandQueue, 1)

namespace diagnosis {

/// The OpenCL library itself. Entry points that are not in the list above are null.
extern const cl_icd_dispatch libraryOpenCl;

/// The numbers that rand gives after srand(seed), in a stream apart from the process's own: what a
/// driver draws or seeds does not move it.
class Stream {
 public:
  /// At its start. The seed of a process that never calls srand is 1.
  explicit Stream(std::uint32_t seed = 1);
  Stream(const Stream&) = delete;
  Stream& operator=(const Stream&) = delete;

  int Draw();

  /// Puts the stream of `seed` behind its first `draws` numbers.
  void Seek(std::uint32_t seed, std::size_t draws);

 private:
  void Start(std::uint32_t seed);

  std::uint32_t seed_ = 0;
  std::size_t drawn_ = 0;
  random_data data_{};
  char state_[128]{};  // the size of rand's own, which decides the numbers
};

/// What the process's own rand goes on from, which the suite shares with its driver. It changes
/// with every number drawn and every seed.
std::string StateOfRand();

/// What the suite's calls reach.
struct Backend {
  const cl_icd_dispatch* openCl;
  int (*rand)();
  void* (*newArray)(std::size_t size) = nullptr;  // operator new[]; null: the program's own
};

/// The library, the program's own operator new[], and one Stream for the whole process.
Backend OwnBackend();

/// The stream of OwnBackend.
Stream& OwnStream();

/// From now on the suite's calls reach `backend`; OwnBackend at the start. Returns what they
/// reached before.
Backend SetBackend(Backend backend);

}  // namespace diagnosis
