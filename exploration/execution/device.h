#pragma once

#include <cstddef>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>

namespace exploration {

/// The device that programs run on, as it says itself; or a compiler, of which its command is the
/// name, and all other texts are empty.
struct Device {
  std::string platform;
  std::string name;
  std::string vendor;
  std::string version;        ///< CL_DEVICE_VERSION
  std::string cVersion;       ///< CL_DEVICE_OPENCL_C_VERSION
  std::string driverVersion;  ///< CL_DRIVER_VERSION
  std::string il;             ///< CL_DEVICE_IL_VERSION: "SPIR-V_1.0 ..."; empty if it takes none.
  bool hasDouble = false;
  bool hasHalf = false;  ///< cl_khr_fp16; without it half is for storage alone.
  std::uint64_t singleFpConfig = 0;
  std::size_t maxWorkGroupSize = 1;

  bool IsCompiler() const { return platform.empty() && version.empty(); }
};
/// A JSON object with these members.
std::string Packed(const Device& device);
/// What a runner of programs said when it brought the driver up. Throws std::runtime_error if it
/// is not that.
Device DeviceFrom(const std::string& said);

}  // namespace exploration
