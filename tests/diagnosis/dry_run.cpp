#include "tests/diagnosis/dry_run.h"

#include <bit>
#include <cstring>
#include <iostream>
#include <optional>
#include <sstream>
#include <stdexcept>

#include "diagnosis/capture/boundary.h"
#include "diagnosis/record/row.h"

namespace diagnosis {
namespace {

// Looks for the greatest distance from the right answer that a row's check lets pass. A distance
// is tried in each repetition.
class ToleranceSearch {
 public:
  std::uint32_t Distance() const {
    if (!passes_) return 0;
    if (!fails_) return *passes_ == 0 ? 1 : *passes_ * 2;
    return *passes_ + (*fails_ - *passes_) / 2;
  }

  void Tried(bool passed) { (passed ? passes_ : fails_) = Distance(); }

  bool Done() const { return passes_ && fails_ && *fails_ - *passes_ == 1; }
  bool Lost() const { return (fails_ && !passes_) || passes_ > 1U << 20; }
  std::uint32_t Tolerance() const { return *passes_; }

 private:
  std::optional<std::uint32_t> passes_;  // the greatest
  std::optional<std::uint32_t> fails_;   // the least
};

// What stands for the device. The process has one, as the entry points have no other way to it.
struct State {
  Row row;
  Profile profile;
  ToleranceSearch search;
  std::ostringstream out;
  std::size_t draws = 0;
  std::size_t globalSize = 0;
  std::optional<std::size_t> answeredAt;  // in `out`; while there is no verdict yet
};
State* current = nullptr;

// With nothing but zeros drawn, every operand is 0 whatever the row does to it, and every answer
// too, but for the powers of exponent 0.
int DrawZero() {
  ++current->draws;
  return 0;
}

// Answers `Distance` units in the last place from what is right, in all lanes.
void Answer(std::byte* destination) {
  const Row& row = current->row;
  for (int element = 0; element < elementsOfRow; ++element) {
    for (int lane = 0; lane < row.lanes; ++lane) {
      const bool one = row.operation == Operation::power && ExponentOf(row, element, lane) == 0;
      const std::uint32_t bits =
          std::bit_cast<std::uint32_t>(one ? 1.0F : 0.0F) + current->search.Distance();
      std::memcpy(destination + static_cast<std::size_t>(element) * current->profile.stride +
                      static_cast<std::size_t>(lane) * sizeof bits,
                  &bits, sizeof bits);
    }
  }
  current->answeredAt = current->out.view().size();
}

// A repetition that fails writes a mismatch line before its RUN line.
void TakeVerdict() {
  if (current->answeredAt && !current->search.Done())
    current->search.Tried(current->out.view().substr(*current->answeredAt).starts_with("RUN "));
  current->answeredAt.reset();
}

template <class Handle>
Handle AnyHandle() {
  static char object;
  return reinterpret_cast<Handle>(&object);
}

template <class Handle>
Handle Created(cl_int* code) {
  if (code != nullptr) *code = CL_SUCCESS;
  return AnyHandle<Handle>();
}

template <class Handle>
cl_int GiveOut(cl_uint wanted, Handle* handles, cl_uint* count) {
  if (handles != nullptr && wanted > 0) handles[0] = AnyHandle<Handle>();
  if (count != nullptr) *count = 1;
  return CL_SUCCESS;
}

template <class... Arguments>
cl_int CL_API_CALL Nothing(Arguments...) {
  return CL_SUCCESS;
}

consteval cl_icd_dispatch EntryPoints() {
  cl_icd_dispatch calls{};
  calls.clGetPlatformIDs = GiveOut;
  // The bindings ask for the version of the device's platform.
  calls.clGetDeviceInfo = [](cl_device_id, cl_device_info, size_t, void* value, size_t*) -> cl_int {
    auto* const platform = AnyHandle<cl_platform_id>();
    std::memcpy(value, &platform, sizeof platform);
    return CL_SUCCESS;
  };
  calls.clGetPlatformInfo = [](cl_platform_id, cl_platform_info, size_t size, void* value,
                               size_t* returned) -> cl_int {
    constexpr char version[] = "OpenCL 1.2 dry run";
    if (returned != nullptr) *returned = sizeof version;
    if (value != nullptr && size >= sizeof version) std::memcpy(value, version, sizeof version);
    return CL_SUCCESS;
  };
  calls.clCreateContextFromType = [](const cl_context_properties*, cl_device_type,
                                     void(CL_CALLBACK*)(const char*, const void*, size_t, void*),
                                     void*, cl_int* code) { return Created<cl_context>(code); };
  // Asked for nothing but its devices.
  calls.clGetContextInfo = [](cl_context, cl_context_info, size_t size, void* value,
                              size_t* returned) -> cl_int {
    auto* const device = AnyHandle<cl_device_id>();
    if (returned != nullptr) *returned = sizeof device;
    if (value != nullptr && size >= sizeof device) std::memcpy(value, &device, sizeof device);
    return CL_SUCCESS;
  };
  calls.clCreateProgramWithSource = [](cl_context, cl_uint, const char** strings,
                                       const size_t* lengths, cl_int* code) {
    current->profile.source.assign(strings[0], lengths[0]);
    return Created<cl_program>(code);
  };
  calls.clCreateKernel = [](cl_program, const char* name, cl_int* code) {
    current->profile.kernel = name;
    return Created<cl_kernel>(code);
  };
  calls.clCreateBuffer = [](cl_context, cl_mem_flags, size_t, void*, cl_int* code) {
    return Created<cl_mem>(code);
  };
  calls.clCreateCommandQueue = [](cl_context, cl_device_id, cl_command_queue_properties,
                                  cl_int* code) { return Created<cl_command_queue>(code); };
  calls.clEnqueueNDRangeKernel = [](cl_command_queue, cl_kernel, cl_uint, const size_t*,
                                    const size_t* globalSize, const size_t*, cl_uint,
                                    const cl_event*, cl_event*) -> cl_int {
    TakeVerdict();
    current->globalSize = *globalSize;
    ++current->profile.repetitions;
    return CL_SUCCESS;
  };
  calls.clEnqueueReadBuffer = [](cl_command_queue, cl_mem, cl_bool, size_t, size_t size,
                                 void* destination, cl_uint, const cl_event*, cl_event*) -> cl_int {
    current->profile.stride = size / current->globalSize;
    Answer(static_cast<std::byte*>(destination));
    return CL_SUCCESS;
  };
  calls.clBuildProgram = Nothing;
  calls.clSetKernelArg = Nothing;
  calls.clEnqueueWriteBuffer = Nothing;
  calls.clRetainDevice = Nothing;
  calls.clReleaseDevice = Nothing;
  calls.clRetainContext = Nothing;
  calls.clReleaseContext = Nothing;
  calls.clRetainProgram = Nothing;
  calls.clReleaseProgram = Nothing;
  calls.clRetainKernel = Nothing;
  calls.clReleaseKernel = Nothing;
  calls.clRetainMemObject = Nothing;
  calls.clReleaseMemObject = Nothing;
  calls.clRetainCommandQueue = Nothing;
  calls.clReleaseCommandQueue = Nothing;
  return calls;
}

constexpr cl_icd_dispatch entryPoints = EntryPoints();

// The suite's calls and what it writes reach the dry run, until a row ends, and be it by a throw.
class Installed {
 public:
  explicit Installed(State& own)
      : before_(SetBackend({&entryPoints, DrawZero})), out_(std::cout.rdbuf(own.out.rdbuf())) {
    current = &own;
  }
  ~Installed() {
    current = nullptr;
    std::cout.rdbuf(out_);
    SetBackend(before_);
  }
  Installed(const Installed&) = delete;
  Installed& operator=(const Installed&) = delete;

 private:
  Backend before_;
  std::streambuf* out_;
};

// Runs the row once on `state` and takes the verdict of each repetition. Returns what it wrote.
std::string RunOn(State& state, const NamedRunner& runner) {
  state.profile.repetitions = 0;
  state.draws = 0;
  state.out.str("");
  const Installed running(state);
  runner.run();
  TakeVerdict();
  return state.out.str();
}

int RunLines(std::string_view written) {
  int lines = 0;
  for (std::size_t at = 0; (at = written.find("\nRUN ", at)) != std::string_view::npos; ++at)
    ++lines;
  return lines;
}

}  // namespace

Profile DryRun(const NamedRunner& runner) {
  State own;
  own.row = RowNamed(runner.name).value();
  own.profile.runLines = RunLines(RunOn(own, runner));
  own.profile.drawsPerRepetition = own.draws / static_cast<std::size_t>(own.profile.repetitions);
  // A row that repeats itself too seldom for the search is run again.
  while (!own.search.Done()) {
    if (own.search.Lost())
      throw std::logic_error(own.row.name + " cannot tell a right answer from a wrong one");
    RunOn(own, runner);
  }
  own.profile.tolerance = own.search.Tolerance();
  return own.profile;
}

}  // namespace diagnosis
