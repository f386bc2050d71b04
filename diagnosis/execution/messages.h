#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "diagnosis/capture/observer.h"
#include "diagnosis/record/record.h"

// What the pool and its workers say to each other over a worker's standard input and output: each
// message is its size as four bytes, the least first, as many bytes of CBOR, and a newline: there
// are launchers that hold back what is not the end of a line.

namespace diagnosis {

/// The pool's first words.
struct Begin {
  double timeoutSeconds = 0;  // for a row, and for bringing OpenCL up
};

/// The pool's order to run a row.
struct Task {
  std::string row;
  Conditions conditions;
  int passes = 1;            // how often; the last one counts
  bool freshRunner = false;  // not in a process that has run rows
};

/// A worker's answers: the device, which comes first; why there is none as it is wanted, or that no
/// process can be had to run rows in, which come in its place or a row's; what became of a row.
struct NoDevice {
  std::string reason;
};
struct NoRunner {
  std::string reason;
};
struct Ended {
  Ending ending;
  double seconds = 0;
  std::string driver;
  std::string journal;
};

using Order = std::variant<Begin, Task>;
using Answer = std::variant<Device, NoDevice, NoRunner, Ended>;

/// A message in CBOR.
std::string Packed(const Order& order);
std::string Packed(const Answer& answer);

/// And back. Throw std::runtime_error if it is nothing of the kind.
Order OrderFrom(std::string_view bytes);
Answer AnswerFrom(std::string_view bytes);

/// With its size in front and the newline behind.
std::string Framed(std::string_view packed);

/// What a worker writes before its first message. A launcher may have written other things before.
inline constexpr std::string_view workersHello = "\x02union_triage worker 2\x03\n";

/// Cuts what comes into messages.
class FrameReader {
 public:
  /// With a hello, everything up to its end is passed over.
  explicit FrameReader(std::string_view hello = {}) : hello_(hello) {}

  void Feed(std::string_view bytes);

  /// The next message, if it is there as a whole. Throws std::runtime_error if the size is beyond
  /// anything that is sent.
  std::optional<std::string> Next();

  /// Whether the hello has come.
  bool Greeted() const { return hello_.empty(); }

 private:
  std::string_view hello_;
  std::string bytes_;
};

}  // namespace diagnosis
