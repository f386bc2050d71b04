#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

// How messages go over a worker's standard input and output: each is its size as four bytes, the
// least first, as many bytes, and a newline: there are launchers that hold back what is not the end
// of a line.

namespace workers {

/// With its size in front and the newline behind.
std::string Framed(std::string_view message);

/// What a worker writes before its first message. A launcher may have written other things before.
std::string HelloOf(std::string_view protocol);

/// Cuts what comes into messages.
class FrameReader {
 public:
  /// With a hello, everything up to its end is passed over.
  explicit FrameReader(std::string hello = {}) : hello_(std::move(hello)) {}

  void Feed(std::string_view bytes);

  /// The next message, if it is there as a whole. Throws std::runtime_error if the size is beyond
  /// anything that is sent.
  std::optional<std::string> Next();

 private:
  std::string hello_;  // as long as it has not come
  std::string bytes_;
  std::size_t taken_ = 0;  // of these
};

}  // namespace workers
