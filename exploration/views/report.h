#pragma once

#include <string>

#include "exploration/record/run_record.h"

namespace exploration {

/// The fault as a report in Markdown for whoever keeps the driver: title, device, what, why the
/// program is valid, settings. `drawing` are the options with which its first program is drawn.
std::string ReportOf(const FaultRecord& fault, const RunRecord& run, const std::string& drawing);

/// "Radeon ... on ..., driver version ..., OpenCL C 1.2": the device in a line.
std::string DeviceLine(const Device& device);

/// What is right and what is there, each as lines of bytes in hexadecimal.
struct SideBySide {
  std::string right;
  std::string actual;
};
SideBySide BytesOf(const AnswerRecord& answer);

}  // namespace exploration
