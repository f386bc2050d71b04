#include "tests/host_arrays.h"

#include <cstdlib>
#include <new>

namespace {

int live = 0;

}  // namespace

int LiveHostArrays() { return live; }

void* operator new[](std::size_t size) {
  void* memory = std::malloc(size);
  if (memory == nullptr) throw std::bad_alloc();
  ++live;
  return memory;
}

void operator delete[](void* memory) noexcept {
  if (memory != nullptr) --live;
  std::free(memory);
}

void operator delete[](void* memory, std::size_t /*size*/) noexcept { operator delete[](memory); }
