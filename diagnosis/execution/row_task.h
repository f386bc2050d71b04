#pragma once

#include <string>
#include <string_view>

#include "diagnosis/capture/observer.h"
#include "diagnosis/record/record.h"

// What a pool and the runners of triage say to each other, as bytes that the workers between them
// do not look into.

namespace diagnosis {

/// Names what follows. Whoever changes that counts on.
inline constexpr const char* rowProtocol = "union_triage 4";

/// A row to be run.
struct RowTask {
  std::string row;
  Conditions conditions;
  int passes = 1;              // how often; the last one counts
  bool sharesContext = false;  // with the rows before and after it that do
};

/// The device that a runner has come up on, and where that was.
struct FoundDevice {
  Device device;
  Provenance provenance;
};

std::string Packed(const RowTask& task);
std::string Packed(const FoundDevice& found);

/// And back. Throw std::runtime_error if it is nothing of the kind.
RowTask RowTaskFrom(std::string_view bytes);
FoundDevice FoundDeviceFrom(std::string_view bytes);

}  // namespace diagnosis
