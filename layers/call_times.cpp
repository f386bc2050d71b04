// An OpenCL layer that counts and times the calls of the program above it. At the end of the
// process it writes, into the file that CALL_TIMES names, a line for each entry point with its
// calls and nanoseconds, and these totals in nanoseconds and bytes:
//   own      processor time of the calling thread outside OpenCL calls, from the first call on
//   process  processor time of the whole process, all threads
//   wall     from the first call to the end
//   memory   the process's largest resident set

#include <sys/resource.h>

#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <fstream>

#include "layers/layer.h"

namespace {

struct Times {
  std::int64_t calls = 0;
  std::int64_t nanoseconds = 0;
};
template <auto entryPoint>
Times times;

template <auto entryPoint, class Return, class... Arguments>
Return CL_API_CALL Timed(Arguments... arguments);

// The entry points that are timed. The loader takes all others from below.
#define FOR_EACH_ENTRY_POINT(DO) \
  DO(clGetPlatformIDs)           \
  DO(clGetPlatformInfo)          \
  DO(clGetDeviceIDs)             \
  DO(clGetDeviceInfo)            \
  DO(clRetainDevice)             \
  DO(clReleaseDevice)            \
  DO(clCreateContext)            \
  DO(clCreateContextFromType)    \
  DO(clGetContextInfo)           \
  DO(clRetainContext)            \
  DO(clReleaseContext)           \
  DO(clCreateProgramWithSource)  \
  DO(clBuildProgram)             \
  DO(clGetProgramBuildInfo)      \
  DO(clRetainProgram)            \
  DO(clReleaseProgram)           \
  DO(clCreateKernel)             \
  DO(clSetKernelArg)             \
  DO(clRetainKernel)             \
  DO(clReleaseKernel)            \
  DO(clCreateBuffer)             \
  DO(clRetainMemObject)          \
  DO(clReleaseMemObject)         \
  DO(clCreateCommandQueue)       \
  DO(clEnqueueWriteBuffer)       \
  DO(clEnqueueNDRangeKernel)     \
  DO(clEnqueueReadBuffer)        \
  DO(clFinish)                   \
  DO(clRetainCommandQueue)       \
  DO(clReleaseCommandQueue)

consteval cl_icd_dispatch Hooks() {
  cl_icd_dispatch hooks{};
#define HOOK(name) hooks.name = Timed<&cl_icd_dispatch::name>;
  FOR_EACH_ENTRY_POINT(HOOK)
#undef HOOK
  return hooks;
}

std::int64_t Now(clockid_t clock) {
  timespec time{};
  clock_gettime(clock, &time);
  return std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

std::int64_t start = 0;
std::int64_t own = 0;
std::int64_t outsideSince = 0;

template <auto entryPoint, class Return, class... Arguments>
Return CL_API_CALL Timed(Arguments... arguments) {
  // Leaves the call on every path, with the call's own result in place.
  struct Call {
    Call() {
      own += Now(CLOCK_THREAD_CPUTIME_ID) - outsideSince;
      entered = Now(CLOCK_MONOTONIC);
    }
    ~Call() {
      ++times<entryPoint>.calls;
      times<entryPoint>.nanoseconds += Now(CLOCK_MONOTONIC) - entered;
      outsideSince = Now(CLOCK_THREAD_CPUTIME_ID);
    }
    std::int64_t entered;
  };
  const Call call;
  return (layer::below->*entryPoint)(arguments...);
}

__attribute__((destructor)) void Report() {
  const char* path = std::getenv("CALL_TIMES");
  if (path == nullptr || layer::below == nullptr) return;
  own += Now(CLOCK_THREAD_CPUTIME_ID) - outsideSince;
  const std::int64_t wall = Now(CLOCK_MONOTONIC) - start;
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  std::ofstream report(path);
#define REPORT(name)                                                \
  report << #name " " << times<&cl_icd_dispatch::name>.calls << " " \
         << times<&cl_icd_dispatch::name>.nanoseconds << "\n";
  FOR_EACH_ENTRY_POINT(REPORT)
#undef REPORT
  report << "own 1 " << own << "\nprocess 1 " << Now(CLOCK_PROCESS_CPUTIME_ID) << "\nwall 1 "
         << wall << "\nmemory 1 " << usage.ru_maxrss * 1024 << "\n";
}

}  // namespace

const char* const layer::name = "call times";
constinit const cl_icd_dispatch layer::hooks = Hooks();

void layer::Start() {
  start = Now(CLOCK_MONOTONIC);
  outsideSince = Now(CLOCK_THREAD_CPUTIME_ID);
}
