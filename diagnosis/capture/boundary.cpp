#include "diagnosis/capture/boundary.h"

#include <cstring>
#include <iterator>
#include <tuple>
#include <utility>

// The linker gives these names: __wrap_ to what the suite calls, __real_ to what it meant to call.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" void* __real__Znam(std::size_t size);  // operator new[]
#define DECLARE(name, arity) extern "C" decltype(name) __real_##name;
FOR_EACH_ENTRY_POINT(DECLARE)
#undef DECLARE
// NOLINTEND(bugprone-reserved-identifier)

namespace diagnosis {
namespace {

consteval cl_icd_dispatch Library() {
  cl_icd_dispatch entryPoints{};
#define ENTER(name, arity) entryPoints.name = __real_##name;
  FOR_EACH_ENTRY_POINT(ENTER)
#undef ENTER
  return entryPoints;
}

Backend backend = {&libraryOpenCl, [] { return OwnStream().Draw(); }};

template <class Pointer>
struct Signature;
template <class Result, class... Parameters>
struct Signature<Result(CL_API_CALL*)(Parameters...)> {
  using Return = Result;
  template <std::size_t index>
  using Parameter = std::tuple_element_t<index, std::tuple<Parameters...>>;
};

}  // namespace

constinit const cl_icd_dispatch libraryOpenCl = Library();

Stream::Stream(std::uint32_t seed) { Start(seed); }

void Stream::Start(std::uint32_t seed) {
  seed_ = seed;
  drawn_ = 0;
  data_ = {};
  initstate_r(seed, state_, sizeof state_, &data_);
}

int Stream::Draw() {
  ++drawn_;
  std::int32_t number = 0;
  random_r(&data_, &number);
  return number;
}

void Stream::Seek(std::uint32_t seed, std::size_t draws) {
  if (seed != seed_ || draws < drawn_) Start(seed);
  while (drawn_ < draws) Draw();
}

std::string StateOfRand() {
  // The way to the state is to put another in its place.
  char other[8];
  char* const own = initstate(1, other, sizeof other);
  setstate(own);
  // By the kind of state, which its first number holds.
  constexpr std::size_t sizes[] = {8, 32, 64, 128, 256};
  std::uint32_t first = 0;
  std::memcpy(&first, own, sizeof first);
  return {own, sizes[first % std::size(sizes)]};
}

Backend OwnBackend() {
  return {&libraryOpenCl, [] { return OwnStream().Draw(); }, __real__Znam};
}

Stream& OwnStream() {
  static Stream stream;
  return stream;
}

Backend SetBackend(Backend next) { return std::exchange(backend, next); }

}  // namespace diagnosis

// What the suite reaches when it calls OpenCL.
// NOLINTBEGIN(bugprone-reserved-identifier,bugprone-macro-parentheses)
#define PARAMETER(name, index) \
  diagnosis::Signature<decltype(cl_icd_dispatch::name)>::Parameter<index>
#define PARAMETERS_1(name) PARAMETER(name, 0) a
#define PARAMETERS_3(name) PARAMETERS_1(name), PARAMETER(name, 1) b, PARAMETER(name, 2) c
#define PARAMETERS_4(name) PARAMETERS_3(name), PARAMETER(name, 3) d
#define PARAMETERS_5(name) PARAMETERS_4(name), PARAMETER(name, 4) e
#define PARAMETERS_6(name) PARAMETERS_5(name), PARAMETER(name, 5) f
#define PARAMETERS_9(name) \
  PARAMETERS_6(name), PARAMETER(name, 6) g, PARAMETER(name, 7) h, PARAMETER(name, 8) i
#define ARGUMENTS_1 a
#define ARGUMENTS_3 a, b, c
#define ARGUMENTS_4 a, b, c, d
#define ARGUMENTS_5 a, b, c, d, e
#define ARGUMENTS_6 a, b, c, d, e, f
#define ARGUMENTS_9 a, b, c, d, e, f, g, h, i
#define DEFINE(name, arity)                                                                \
  diagnosis::Signature<decltype(cl_icd_dispatch::name)>::Return CL_API_CALL __wrap_##name( \
      PARAMETERS_##arity(name)) {                                                          \
    return diagnosis::backend.openCl->name(ARGUMENTS_##arity);                             \
  }

extern "C" {
FOR_EACH_ENTRY_POINT(DEFINE)

int __wrap_rand() { return diagnosis::backend.rand(); }

void* __wrap__Znam(std::size_t size) {
  return diagnosis::backend.newArray != nullptr ? diagnosis::backend.newArray(size)
                                                : __real__Znam(size);
}
}
// NOLINTEND(bugprone-reserved-identifier,bugprone-macro-parentheses)
