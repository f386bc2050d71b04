#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "common/workers/runner.h"
#include "diagnosis/record/record.h"

namespace diagnosis {

/// What can be written down of a row. Texts in several events of a kind belong together.
enum class Event : std::uint8_t {
  source,
  kernel,
  buildTime,  // a 64-bit number of nanoseconds
  buildLog,
  failedCall,  // a 32-bit code, then the name
  repetition,  // a new one begins
  inputA,
  inputB,
  launch,
  result,
  behindA,
  behindB,
  out,
  err,
  randDrawn,  // by somebody else than the row
  returned,   // a 32-bit value and a 64-bit number of nanoseconds; the last event of a row
};

/// What happens in a row, written down as it happens. It lies in memory that outlives the process
/// that writes.
class Journal {
 public:
  /// The row's own texts go in as far as this, each kind for itself; the rest is left out, which is
  /// said at the end.
  static constexpr std::size_t longestText = 256 << 10;

  explicit Journal(workers::SharedBytes& bytes) : bytes_(bytes) {}

  void Clear();
  void Write(Event event, std::span<const std::byte> data = {});
  void Write(Event event, std::string_view text);

 private:
  void Append(Event event, std::span<const std::byte> data);

  workers::SharedBytes& bytes_;
  std::size_t texts_[static_cast<std::size_t>(Event::returned)] = {};
};

/// Puts what is in a journal into `record`. The journal may end anywhere. False, with what stands
/// before it taken, at what no journal can hold.
bool ReadJournal(std::string_view written, Record& record);

}  // namespace diagnosis
