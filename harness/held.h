#pragma once

#include <cstddef>
#include <new>

/// One of the bindings' objects by value, for the classes that every row compiles: the bindings'
/// header is large, and gives each file that includes it objects to construct before main, so the
/// rows do not see it. `Type` may be incomplete here; held.cpp has the ones that there are.
template <class Type>
class Held {
 public:
  /// Holds nothing.
  Held();
  /// Takes a reference of its own. Throws cl::Error if it is refused one.
  explicit Held(const Type& object);
  Held(const Held&) = delete;
  Held& operator=(const Held&) = delete;
  /// Releases what it holds, and ignores the result.
  ~Held();

  Type& operator*() { return *std::launder(reinterpret_cast<Type*>(storage_)); }
  const Type& operator*() const { return *std::launder(reinterpret_cast<const Type*>(storage_)); }

 private:
  // An object of the bindings is its handle.
  alignas(void*) std::byte storage_[sizeof(void*)];
};
