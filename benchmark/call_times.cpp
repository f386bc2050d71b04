// An OpenCL layer that counts and times the calls of the program above it. At the end of the
// process it writes, into the file that CALL_TIMES names, a line for each entry point with its
// calls and nanoseconds, and these totals in nanoseconds and bytes:
//   own      processor time of the calling thread outside OpenCL calls, from the first call on
//   process  processor time of the whole process, all threads
//   wall     from the first call to the end
//   memory   the process's largest resident set

#include <CL/cl_layer.h>
#include <sys/resource.h>

#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <fstream>

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
  DO(clRetainCommandQueue)       \
  DO(clReleaseCommandQueue)

consteval cl_icd_dispatch Hooks() {
  cl_icd_dispatch hooks{};
#define HOOK(name) hooks.name = Timed<&cl_icd_dispatch::name>;
  FOR_EACH_ENTRY_POINT(HOOK)
#undef HOOK
  return hooks;
}

constexpr cl_icd_dispatch hooks = Hooks();
const cl_icd_dispatch* below = nullptr;

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
  return (below->*entryPoint)(arguments...);
}

__attribute__((destructor)) void Report() {
  const char* path = std::getenv("CALL_TIMES");
  if (path == nullptr || below == nullptr) return;
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

cl_int CL_API_CALL clGetLayerInfo(cl_layer_info name, size_t size, void* value,
                                  size_t* sizeReturned) {
  constexpr cl_layer_api_version version = CL_LAYER_API_VERSION_100;
  if (name != CL_LAYER_API_VERSION) return CL_INVALID_VALUE;
  if (value != nullptr && size < sizeof version) return CL_INVALID_VALUE;
  if (value != nullptr) *static_cast<cl_layer_api_version*>(value) = version;
  if (sizeReturned != nullptr) *sizeReturned = sizeof version;
  return CL_SUCCESS;
}

cl_int CL_API_CALL clInitLayer(cl_uint numEntries, const cl_icd_dispatch* target,
                               cl_uint* numEntriesReturned, const cl_icd_dispatch** layer) {
  constexpr cl_uint entries = sizeof(cl_icd_dispatch) / sizeof(void*);
  if (target == nullptr || layer == nullptr || numEntriesReturned == nullptr ||
      numEntries < entries)
    return CL_INVALID_VALUE;
  below = target;
  *layer = &hooks;
  *numEntriesReturned = entries;
  start = Now(CLOCK_MONOTONIC);
  outsideSince = Now(CLOCK_THREAD_CPUTIME_ID);
  return CL_SUCCESS;
}
