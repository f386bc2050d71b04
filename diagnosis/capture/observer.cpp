#include "diagnosis/capture/observer.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstring>
#include <deque>
#include <iostream>
#include <span>
#include <streambuf>
#include <tuple>
#include <type_traits>
#include <utility>

#include "diagnosis/capture/boundary.h"
#include "diagnosis/record/row.h"

namespace diagnosis {
namespace {

using Clock = std::chrono::steady_clock;
using Entry = cl_icd_dispatch;

std::uint64_t NanosecondsSince(Clock::time_point start) {
  return static_cast<std::uint64_t>(
      std::chrono::duration_cast<std::chrono::nanoseconds>(Clock::now() - start).count());
}

// What is known of the row that runs.
struct Observed {
  const Conditions& conditions;
  const cl_icd_dispatch& below;
  Journal& journal;
  cl_mem inputA = nullptr;  // the kernel's first argument
  bool wroteA = false;      // in this repetition
  bool sawBehindA = false;
  bool sawBehindB = false;
  cl_mem result = nullptr;         // the kernel's last argument that is a buffer
  cl_mem madeBefore = nullptr;     // the buffer of the results, where it is made before the inputs
  std::deque<Bytes> written = {};  // in place of what the row writes, which a driver may read late
};
Observed* observed = nullptr;

// Whether this thread is the row's, and not in a call of OpenCL.
thread_local bool rowSpeaks = false;

struct InCall {
  InCall() { rowSpeaks = false; }
  ~InCall() { rowSpeaks = true; }
};

// What the row's own arrays hold before it stores there goes to the device too, as the bytes
// between and behind its elements. Elsewhere that is whatever the process had in that memory
// before; here it is zero, so that no record tells of the process, and two runs leave the same.
void* NewArray(std::size_t size) {
  void* const memory = OwnBackend().newArray(size);
  if (rowSpeaks) std::memset(memory, 0, size);
  return memory;
}

// One of the row's standard streams.
class RowStream : public std::streambuf {
 public:
  RowStream(Journal& journal, Event event, int descriptor)
      : journal_(journal), event_(event), descriptor_(descriptor) {}

 protected:
  std::streamsize xsputn(const char* text, std::streamsize size) override {
    const std::string_view view(text, static_cast<std::size_t>(size));
    if (rowSpeaks) {
      journal_.Write(event_, view);
    } else if (write(descriptor_, view.data(), view.size()) < 0) {
      return 0;
    }
    return size;
  }

  int_type overflow(int_type character) override {
    const char text = traits_type::to_char_type(character);
    return xsputn(&text, 1) == 1 ? traits_type::not_eof(character) : traits_type::eof();
  }

 private:
  Journal& journal_;
  Event event_;
  int descriptor_;
};

template <auto entryPoint>
constexpr std::string_view nameOf;
#define NAME(name, arity) \
  template <>             \
  constexpr std::string_view nameOf<&Entry::name> = #name;
FOR_EACH_ENTRY_POINT(NAME)
#undef NAME

template <auto entryPoint>
void Note(cl_int code) {
  if (code == CL_SUCCESS) return;
  constexpr std::string_view name = nameOf<entryPoint>;
  char data[sizeof code + name.size()];
  std::memcpy(data, &code, sizeof code);
  std::memcpy(data + sizeof code, name.data(), name.size());
  observed->journal.Write(Event::failedCall, std::string_view(data, sizeof data));
}

// Hands the call on. A call that makes something tells how it went through its last argument.
template <auto entryPoint, class Return, class... Arguments>
Return CL_API_CALL HandOn(Arguments... arguments) {
  const InCall inCall;
  if constexpr (std::is_same_v<Return, cl_int>) {
    const cl_int code = (observed->below.*entryPoint)(arguments...);
    Note<entryPoint>(code);
    return code;
  } else {
    cl_int* const code = std::get<sizeof...(arguments) - 1>(std::tie(arguments...));
    const Return made = (observed->below.*entryPoint)(arguments...);
    if (code != nullptr) Note<entryPoint>(*code);
    return made;
  }
}
template <auto entryPoint>
constexpr std::remove_reference_t<decltype(std::declval<Entry>().*entryPoint)> handOn =
    HandOn<entryPoint>;

// The ten elements of a buffer.
std::span<const std::byte> Elements(const void* data, size_t size) {
  return {static_cast<const std::byte*>(data),
          std::min(size, observed->conditions.stride * elementsOfRow)};
}

// The same and, once, what lies behind them.
void NoteBuffer(Event elements, Event behind, bool& sawBehind, const void* data, size_t size) {
  const std::span bytes(static_cast<const std::byte*>(data), size);
  const std::span used = Elements(data, size);
  observed->journal.Write(elements, used);
  if (!sawBehind) observed->journal.Write(behind, bytes.subspan(used.size()));
  sawBehind = true;
}

// What is written in place of what the row writes: the same, if an experiment changes nothing.
const void* Changed(const void* source, size_t size, bool isA) {
  const Experiment& experiment = observed->conditions.experiment;
  const Bytes& elements = isA ? experiment.inputA : experiment.inputB;
  if (elements.empty() && experiment.behind.empty()) return source;
  const auto* const bytes = static_cast<const std::uint8_t*>(source);
  Bytes& changed = observed->written.emplace_back(bytes, bytes + size);
  const std::size_t used = Elements(source, size).size();
  std::copy_n(elements.begin(), std::min(used, elements.size()), changed.begin());
  for (std::size_t at = used; at < size && !experiment.behind.empty(); ++at)
    changed[at] = experiment.behind[(at - used) % experiment.behind.size()];
  return changed.data();
}

// Puts into the buffer of the results what an experiment wants to stand there.
void FillResult(cl_command_queue queue, size_t size) {
  const Bytes& fill = observed->conditions.experiment.result;
  if (fill.empty() || observed->result == nullptr) return;
  Bytes bytes(size);
  for (std::size_t at = 0; at < size; ++at) bytes[at] = fill[at % fill.size()];
  handOn<&Entry::clEnqueueWriteBuffer>(queue, observed->result, CL_TRUE, 0, size, bytes.data(), 0,
                                       nullptr, nullptr);
}

cl_program CL_API_CALL CreateProgramWithSource(cl_context context, cl_uint count,
                                               const char** strings, const size_t* lengths,
                                               cl_int* code) {
  for (cl_uint i = 0; i < count; ++i) {
    const bool terminated = lengths == nullptr || lengths[i] == 0;
    observed->journal.Write(Event::source, terminated ? std::string_view(strings[i])
                                                      : std::string_view(strings[i], lengths[i]));
  }
  return handOn<&Entry::clCreateProgramWithSource>(context, count, strings, lengths, code);
}

cl_int CL_API_CALL BuildProgram(cl_program program, cl_uint count, const cl_device_id* devices,
                                const char* options, void(CL_CALLBACK* notify)(cl_program, void*),
                                void* data) {
  const std::string& given = observed->conditions.buildOptions;
  if (!given.empty()) options = given.c_str();
  const Clock::time_point start = Clock::now();
  const cl_int code =
      handOn<&Entry::clBuildProgram>(program, count, devices, options, notify, data);
  const std::uint64_t nanoseconds = NanosecondsSince(start);
  observed->journal.Write(Event::buildTime, std::as_bytes(std::span(&nanoseconds, 1)));
  return code;
}

cl_int CL_API_CALL GetProgramBuildInfo(cl_program program, cl_device_id device,
                                       cl_program_build_info name, size_t size, void* value,
                                       size_t* returned) {
  const cl_int code =
      handOn<&Entry::clGetProgramBuildInfo>(program, device, name, size, value, returned);
  if (code == CL_SUCCESS && name == CL_PROGRAM_BUILD_LOG && value != nullptr) {
    const auto* const log = static_cast<const char*>(value);
    observed->journal.Write(Event::buildLog, std::string_view(log, strnlen(log, size)));
  }
  return code;
}

cl_kernel CL_API_CALL CreateKernel(cl_program program, const char* name, cl_int* code) {
  observed->journal.Write(Event::kernel, std::string_view(name));
  return handOn<&Entry::clCreateKernel>(program, name, code);
}

cl_int CL_API_CALL SetKernelArg(cl_kernel kernel, cl_uint index, size_t size, const void* value) {
  if (index == 0 && size == sizeof observed->inputA) std::memcpy(&observed->inputA, value, size);
  if (size == sizeof observed->result) std::memcpy(&observed->result, value, size);
  return handOn<&Entry::clSetKernelArg>(kernel, index, size, value);
}

// The inputs are made first, the buffer of the results, which is as large, last.
cl_mem CL_API_CALL CreateBuffer(cl_context context, cl_mem_flags flags, size_t size, void* host,
                                cl_int* code) {
  const auto create = handOn<&Entry::clCreateBuffer>;
  if (!observed->conditions.experiment.swapped) return create(context, flags, size, host, code);
  if ((flags & CL_MEM_WRITE_ONLY) == 0) {
    if (observed->madeBefore == nullptr)
      observed->madeBefore = create(context, CL_MEM_WRITE_ONLY, size, nullptr, code);
    return create(context, flags, size, host, code);
  }
  if (observed->madeBefore == nullptr) return create(context, flags, size, host, code);
  if (code != nullptr) *code = CL_SUCCESS;
  return std::exchange(observed->madeBefore, nullptr);
}

// Every repetition has a queue of its own, and begins with it.
cl_command_queue CL_API_CALL CreateCommandQueue(cl_context context, cl_device_id device,
                                                cl_command_queue_properties properties,
                                                cl_int* code) {
  observed->journal.Write(Event::repetition);
  observed->wroteA = false;
  return handOn<&Entry::clCreateCommandQueue>(context, device, properties, code);
}

cl_int CL_API_CALL EnqueueWriteBuffer(cl_command_queue queue, cl_mem buffer, cl_bool blocking,
                                      size_t offset, size_t size, const void* source, cl_uint count,
                                      const cl_event* waitList, cl_event* event) {
  const bool isA = buffer == observed->inputA && !observed->wroteA;
  source = Changed(source, size, isA);
  // A driver may give out one handle for all buffers; A comes first.
  if (buffer == observed->inputA && !observed->wroteA) {
    NoteBuffer(Event::inputA, Event::behindA, observed->sawBehindA, source, size);
    observed->wroteA = true;
  } else {
    NoteBuffer(Event::inputB, Event::behindB, observed->sawBehindB, source, size);
  }
  return handOn<&Entry::clEnqueueWriteBuffer>(queue, buffer, blocking, offset, size, source, count,
                                              waitList, event);
}

cl_int CL_API_CALL EnqueueNDRangeKernel(cl_command_queue queue, cl_kernel kernel,
                                        cl_uint dimensions, const size_t* offset,
                                        const size_t* globalSize, const size_t* localSize,
                                        cl_uint count, const cl_event* waitList, cl_event* event) {
  FillResult(queue, observed->conditions.stride * *globalSize);
  const std::size_t given = observed->conditions.localSize;
  if (given != 0) localSize = &given;
  const cl_int code = handOn<&Entry::clEnqueueNDRangeKernel>(
      queue, kernel, dimensions, offset, globalSize, localSize, count, waitList, event);
  if (code == CL_SUCCESS) observed->journal.Write(Event::launch);
  return code;
}

cl_int CL_API_CALL EnqueueReadBuffer(cl_command_queue queue, cl_mem buffer, cl_bool blocking,
                                     size_t offset, size_t size, void* destination, cl_uint count,
                                     const cl_event* waitList, cl_event* event) {
  const cl_int code = handOn<&Entry::clEnqueueReadBuffer>(queue, buffer, blocking, offset, size,
                                                          destination, count, waitList, event);
  // What lies behind them no row looks at: with a driver for processors it is this process's
  // memory.
  if (code == CL_SUCCESS) observed->journal.Write(Event::result, Elements(destination, size));
  return code;
}

consteval cl_icd_dispatch Hooks() {
  cl_icd_dispatch hooks{};
#define HOOK(name, arity) hooks.name = HandOn<&Entry::name>;
  FOR_EACH_ENTRY_POINT(HOOK)
#undef HOOK
  hooks.clCreateProgramWithSource = CreateProgramWithSource;
  hooks.clBuildProgram = BuildProgram;
  hooks.clGetProgramBuildInfo = GetProgramBuildInfo;
  hooks.clCreateKernel = CreateKernel;
  hooks.clSetKernelArg = SetKernelArg;
  hooks.clCreateBuffer = CreateBuffer;
  hooks.clCreateCommandQueue = CreateCommandQueue;
  hooks.clEnqueueWriteBuffer = EnqueueWriteBuffer;
  hooks.clEnqueueNDRangeKernel = EnqueueNDRangeKernel;
  hooks.clEnqueueReadBuffer = EnqueueReadBuffer;
  return hooks;
}

constexpr cl_icd_dispatch hooks = Hooks();

}  // namespace

void RunObserved(int (*row)(), const Conditions& conditions, const cl_icd_dispatch& below,
                 Journal& journal) {
  journal.Clear();
  OwnStream().Seek(conditions.seed, conditions.drawsBefore);
  Observed own{.conditions = conditions, .below = below, .journal = journal};
  RowStream out(journal, Event::out, STDOUT_FILENO);
  RowStream err(journal, Event::err, STDERR_FILENO);

  observed = &own;
  const Backend backend = SetBackend({&hooks, OwnBackend().rand, NewArray});
  std::streambuf* const formerOut = std::cout.rdbuf(&out);
  std::streambuf* const formerErr = std::cerr.rdbuf(&err);
  const std::string randBefore = StateOfRand();
  rowSpeaks = true;
  const Clock::time_point start = Clock::now();
  const std::int32_t value = row();
  const std::uint64_t nanoseconds = NanosecondsSince(start);
  if (own.madeBefore != nullptr) below.clReleaseMemObject(own.madeBefore);
  rowSpeaks = false;
  std::cout.rdbuf(formerOut);
  std::cerr.rdbuf(formerErr);
  SetBackend(backend);
  observed = nullptr;

  if (StateOfRand() != randBefore) journal.Write(Event::randDrawn);
  std::byte data[sizeof value + sizeof nanoseconds];
  std::memcpy(data, &value, sizeof value);
  std::memcpy(data + sizeof value, &nanoseconds, sizeof nanoseconds);
  journal.Write(Event::returned, data);
}

}  // namespace diagnosis
