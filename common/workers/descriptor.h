#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <utility>

namespace workers {

/// A file descriptor, owned; a negative one is none.
class Descriptor {
 public:
  explicit Descriptor(int number = -1) : number_(number) {}
  Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }
  ~Descriptor() { Close(); }

  int Number() const { return number_; }
  void Close() {
    if (number_ >= 0) close(std::exchange(number_, -1));
  }

 private:
  int number_;
};

/// A copy of the descriptor with a number that is out of a driver's way, if there may be such.
inline int Above(int descriptor) {
  const int high = fcntl(descriptor, F_DUPFD_CLOEXEC, 300);
  return high >= 0 ? high : fcntl(descriptor, F_DUPFD_CLOEXEC, 3);
}

}  // namespace workers
