// An OpenCL layer that does what drivers should not. The environment says what, where and when:
//   BAD_DRIVER       FAULT@PLACE or FAULT@PLACE#N: at the N-th call of an entry point, the first if
//                    it is not said, or at "load" or "end" of the process
//   BAD_DRIVER_TEXT  in programs whose text has all of these parts, which stand apart by "&"; calls
//                    then count from the program's creation
//   BAD_DRIVER_ONCE  a file: only if it is not there yet, and then it is made
//   BAD_DRIVER_PIDS  a file that gets the process's number
// The faults stand in the table below.

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <tuple>

#include "diagnosis/capture/boundary.h"
#include "layers/layer.h"

namespace {

using Entry = cl_icd_dispatch;

std::string Variable(const char* name) {
  const char* const value = std::getenv(name);
  return value != nullptr ? value : "";
}

// What a worker says first, a message's size, and bytes that are neither text nor message.
constexpr std::string_view rubbish(
    "\x02union_triage 4 worker\x03\n\x08\0\0\0\xA1kind\xFF\0\r\n\x1B[2J", 39);

void WriteTo(int descriptor) {
  if (write(descriptor, rubbish.data(), rubbish.size()) < 0) return;
}

void Hang() {
  for (;;) pause();
}

// Whatever is mapped for more than one process.
void Scribble() {
  std::ifstream maps("/proc/self/maps");
  for (std::string line; std::getline(maps, line);) {
    if (line.find(" rw-s ") == std::string::npos) continue;
    void* from = nullptr;
    void* to = nullptr;
    if (std::sscanf(line.c_str(), "%p-%p", &from, &to) != 2) std::abort();
    // Behind what tells that the row has ended.
    std::fill(static_cast<char*>(from) + 4096, static_cast<char*>(to), '\x5A');
  }
}

struct Fault {
  std::string_view name;
  void (*commit)();
};

constexpr Fault faults[] = {
    {"abort", std::abort},
    {"children",
     [] {
       if (fork() == 0) Hang();
     }},
    {"close",
     [] {
       for (int i = 3; i < 1024; ++i) close(i);
     }},
    {"cout", [] { std::cout << "from the driver\n"
                            << std::flush; }},
    {"error", [] {}},  // the call fails
    {"exit 0", [] { std::exit(0); }},
    {"exit 3", [] { _exit(3); }},
    {"flood",
     [] {
       for (int i = 0; i < 100'000; ++i) WriteTo(1 + i % 2);
     }},
    {"hang", Hang},
    {"kill", [] { raise(SIGKILL); }},
    {"kill parent",
     [] {
       kill(getppid(), SIGKILL);
       Hang();
     }},
    {"rand",
     [] {
       std::srand(1);
       for (int i = 0; i < 100; ++i) std::ignore = std::rand();
     }},
    {"rubbish",
     [] {
       WriteTo(1);
       WriteTo(2);
       std::cerr << rubbish << std::flush;
     }},
    {"scribble", Scribble},
    {"segv", [] { raise(SIGSEGV); }},
    {"signals",
     [] {
       for (int i = 1; i < 32; ++i) signal(i, [](int) { _exit(0); });
       raise(SIGSEGV);
     }},
    {"spray",
     [] {
       for (int i = 0; i < 1024; ++i) WriteTo(i);
     }},
    {"throw", [] { throw std::runtime_error("from the driver"); }},
};

// Whether the time has come at `place`.
bool Strikes(std::string_view place, int& calls) {
  static const std::string orders = Variable("BAD_DRIVER");
  static const std::string_view at = std::string_view(orders).substr(orders.find('@') + 1);
  static const std::string_view wanted = at.substr(0, at.find('#'));
  static const int number =
      at.size() == wanted.size() ? 1 : std::atoi(at.substr(wanted.size() + 1).data());
  if (place != wanted || ++calls != number) return false;
  const std::string once = Variable("BAD_DRIVER_ONCE");
  return once.empty() || open(once.c_str(), O_CREAT | O_EXCL | O_CLOEXEC, 0600) >= 0;
}

std::string_view Wanted() {
  static const std::string orders = Variable("BAD_DRIVER");
  return std::string_view(orders).substr(0, orders.find('@'));
}

void Commit() {
  const std::string pids = Variable("BAD_DRIVER_PIDS");
  if (!pids.empty()) std::ofstream(pids, std::ios::app) << getpid() << std::endl;
  for (const Fault& fault : faults)
    if (fault.name == Wanted()) return fault.commit();
  std::abort();
}

template <auto entryPoint>
int calls = 0;
bool inWantedProgram = true;

template <auto entryPoint>
constexpr std::string_view nameOf;
#define NAME(name, arity) \
  template <>             \
  constexpr std::string_view nameOf<&Entry::name> = #name;
FOR_EACH_ENTRY_POINT(NAME)
#undef NAME

template <auto entryPoint, class Return, class... Arguments>
Return CL_API_CALL Hook(Arguments... arguments) {
  if (inWantedProgram && Strikes(nameOf<entryPoint>, calls<entryPoint>)) {
    Commit();
    if (Wanted() == "error") {
      if constexpr (std::is_same_v<Return, cl_int>) {
        return CL_OUT_OF_RESOURCES;
      } else {
        *std::get<sizeof...(arguments) - 1>(std::tie(arguments...)) = CL_OUT_OF_RESOURCES;
        return nullptr;
      }
    }
  }
  return (layer::below->*entryPoint)(arguments...);
}

cl_program CL_API_CALL CreateProgramWithSource(cl_context context, cl_uint count,
                                               const char** strings, const size_t* lengths,
                                               cl_int* code) {
  const std::string wanted = Variable("BAD_DRIVER_TEXT");
  if (!wanted.empty()) {
    inWantedProgram = true;
    for (std::size_t at = 0, end = 0; at <= wanted.size(); at = end + 1) {
      end = std::min(wanted.find('&', at), wanted.size());
      if (std::string_view(strings[0], lengths[0]).find(wanted.substr(at, end - at)) ==
          std::string_view::npos)
        inWantedProgram = false;
    }
#define RESTART(name, arity) calls<& Entry::name> = 0;
    FOR_EACH_ENTRY_POINT(RESTART)
#undef RESTART
  }
  return layer::below->clCreateProgramWithSource(context, count, strings, lengths, code);
}

consteval cl_icd_dispatch Hooks() {
  cl_icd_dispatch hooks{};
#define HOOK(name, arity) hooks.name = Hook<&Entry::name>;
  FOR_EACH_ENTRY_POINT(HOOK)
#undef HOOK
  hooks.clCreateProgramWithSource = CreateProgramWithSource;
  return hooks;
}

int callsOfLoad = 0;
int callsOfEnd = 0;

__attribute__((destructor)) void End() {
  if (layer::below != nullptr && Strikes("end", callsOfEnd)) Commit();
}

}  // namespace

const char* const layer::name = "bad driver";
constinit const cl_icd_dispatch layer::hooks = Hooks();

void layer::Start() {
  inWantedProgram = Variable("BAD_DRIVER_TEXT").empty();
  if (Strikes("load", callsOfLoad)) Commit();
}
