#include <CL/cl.h>
#include <fmt/format.h>

#include "diagnosis/views/report_parts.h"

namespace diagnosis {

namespace {

// What the device says that its floats can do: "denormals, infinities and NaNs, ..."
std::string CapabilitiesOf(const Device& device) {
  struct Bit {
    std::uint64_t bit;
    const char* name;
  };
  constexpr Bit bits[] = {
      {CL_FP_DENORM, "denormals"},
      {CL_FP_INF_NAN, "infinities and NaNs"},
      {CL_FP_ROUND_TO_NEAREST, "rounds to nearest"},
      {CL_FP_ROUND_TO_ZERO, "rounds toward zero"},
      {CL_FP_ROUND_TO_INF, "rounds to infinities"},
      {CL_FP_FMA, "fused multiply-add"},
      {CL_FP_SOFT_FLOAT, "in software"},
      {CL_FP_CORRECTLY_ROUNDED_DIVIDE_SQRT, "division and square root correctly rounded"},
  };
  std::string text;
  for (const Bit& bit : bits) {
    if ((device.singleFpConfig & bit.bit) != 0)
      text += (text.empty() ? "" : ", ") + std::string(bit.name);
  }
  if ((device.singleFpConfig & CL_FP_DENORM) == 0)
    text += text.empty() ? "none reported" : "; no denormals";
  return text;
}

// The options that were given a value: "jobs 1, seed 1, ..."
std::string OptionsOf(const RunInfo& info) {
  std::string text;
  for (const auto& [name, value] : info.options) {
    if (!value.empty()) text += fmt::format("{}{} {}", text.empty() ? "" : ", ", name, value);
  }
  return text::PrintableLine(text, mostBytesOfCommand);
}

// What is the same wherever a run is told of, first of what is known.
std::string FirstOf(const std::string& one, const std::string& other) {
  return text::PrintableLine(one.empty() ? other : one);
}

// "12.3 s", "1 h 2 min 3 s"
std::string DurationOf(double seconds) {
  if (seconds <= 0) return "";
  if (seconds < 60) return fmt::format("{:.1f} s", seconds);
  const auto whole = static_cast<std::uint64_t>(seconds);
  const std::string minutes = fmt::format("{} min {} s", whole / 60 % 60, whole % 60);
  return whole < 3600 ? minutes : fmt::format("{} h {}", whole / 3600, minutes);
}

}  // namespace

std::vector<RunFact> FactsOf(const RunInfo& info) {
  using text::PrintableLine;
  const Provenance& provenance = info.provenance;
  return {
      {"Device", PrintableLine(info.device.name), false},  // alone it is the title
      {"Platform", PrintableLine(info.device.platform)},
      {"Vendor", PrintableLine(info.device.vendor), true, false},
      {"Driver", PrintableLine(info.device.driverVersion)},
      {"Driver library", PrintableLine(NameOf(provenance.driver))},
      {"Layers", PrintableLine(ListOf(provenance.layers), mostBytesOfCommand)},
      {"Environment", PrintableLine(ListOf(provenance.environment), mostBytesOfCommand)},
      {"OpenCL", PrintableLine(info.device.version)},
      {"Floats", CapabilitiesOf(info.device)},
      {"System", FirstOf(provenance.system, info.host)},
      {"Processor", PrintableLine(provenance.processor)},
      {"Suite", FirstOf(provenance.build, info.version)},
      {"Started", PrintableLine(info.start)},
      {"Ended", info.end.empty() ? "cut off" : PrintableLine(info.end), true, false},
      {"Duration", DurationOf(info.seconds), true, false},
      {"Command", PrintableLine(info.command, mostBytesOfCommand)},
      {"Options", OptionsOf(info)},
  };
}

}  // namespace diagnosis
