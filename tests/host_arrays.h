#pragma once

#include <cstddef>
#include <vector>

/// What the process did with arrays from new[], in its order.
struct HostArrays {
  std::vector<const void*> made;
  std::vector<std::size_t> sizes;  // of those made, in bytes
  std::vector<const void*> freed;

  int Alive() const { return static_cast<int>(made.size()) - static_cast<int>(freed.size()); }
};

/// Since the last call of StartHostArrays.
const HostArrays& MadeHostArrays();

/// Forgets what was done so far.
void StartHostArrays();
