#pragma once

#include <stdexcept>

namespace text {

/// What the caller asked for cannot be, or a file that was named is not as it must be. The program
/// says so in this one line, and ends with 2.
class BadUse : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// What was asked for is not written, or only in part: a full disk, a closed descriptor. The
/// program says so in one line, and ends with 4.
class CannotWrite : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// There is no device to run on. The program says why in one line, and ends with 3.
class NothingToRunOn : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace text
