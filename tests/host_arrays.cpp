#include "tests/host_arrays.h"

#include <cstdlib>
#include <new>

namespace {

// Never destroyed, because the last arrays go after main.
HostArrays& Log() {
  static auto& log = *new HostArrays;
  return log;
}

}  // namespace

const HostArrays& MadeHostArrays() { return Log(); }

void StartHostArrays() { Log() = {}; }

void* operator new[](std::size_t size) {
  void* memory = std::malloc(size);
  if (memory == nullptr) throw std::bad_alloc();
  Log().made.push_back(memory);
  Log().sizes.push_back(size);
  return memory;
}

void operator delete[](void* memory) noexcept {
  if (memory != nullptr) Log().freed.push_back(memory);
  std::free(memory);
}

void operator delete[](void* memory, std::size_t /*size*/) noexcept { operator delete[](memory); }
