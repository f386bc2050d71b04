#include "exploration/execution/device.h"

#include <nlohmann/json.hpp>
#include <stdexcept>

namespace exploration {

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Device, platform, name, vendor, version, cVersion, driverVersion,
                                   il, hasDouble, hasHalf, singleFpConfig, maxWorkGroupSize)

std::string Packed(const Device& device) {
  return nlohmann::json(device).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

Device DeviceFrom(const std::string& said) try {
  return nlohmann::json::parse(said).get<Device>();
} catch (const nlohmann::json::exception& error) {
  throw std::runtime_error(std::string("a device that is none: ") + error.what());
}

}  // namespace exploration
