#include "diagnosis/execution/row_task.h"

#include <nlohmann/json.hpp>
#include <stdexcept>
#include <vector>

namespace diagnosis {
namespace {

using nlohmann::json;

json Binary(std::string_view bytes) {
  return json::binary(std::vector<std::uint8_t>(bytes.begin(), bytes.end()));
}

std::string Text(const json& binary) {
  const json::binary_t& bytes = binary.get_binary();
  return {bytes.begin(), bytes.end()};
}

std::string Pack(const json& message) {
  std::string packed;
  json::to_cbor(message, packed);
  return packed;
}

// Runs `read` over the message. What nlohmann-json has to say of a bad one is no line for a person.
template <class Read>
auto From(std::string_view bytes, Read read) {
  try {
    return read(json::from_cbor(bytes));
  } catch (const json::exception&) {
    throw std::runtime_error("a message that cannot be understood");
  }
}

}  // namespace

std::string Packed(const RowTask& task) {
  return Pack({{"row", task.row},
               {"seed", task.conditions.seed},
               {"drawsBefore", task.conditions.drawsBefore},
               {"stride", task.conditions.stride},
               {"buildOptions", Binary(task.conditions.buildOptions)},
               {"localSize", task.conditions.localSize},
               {"passes", task.passes}});
}

std::string Packed(const Device& device) {
  return Pack({{"platform", Binary(device.platform)},
               {"name", Binary(device.name)},
               {"vendor", Binary(device.vendor)},
               {"version", Binary(device.version)},
               {"driverVersion", Binary(device.driverVersion)},
               {"singleFpConfig", device.singleFpConfig}});
}

RowTask RowTaskFrom(std::string_view bytes) {
  return From(bytes, [](const json& message) -> RowTask {
    return {.row = message.at("row"),
            .conditions = {.seed = message.at("seed"),
                           .drawsBefore = message.at("drawsBefore"),
                           .stride = message.at("stride"),
                           .buildOptions = Text(message.at("buildOptions")),
                           .localSize = message.at("localSize")},
            .passes = message.at("passes")};
  });
}

Device DeviceFrom(std::string_view bytes) {
  return From(bytes, [](const json& message) -> Device {
    return {.platform = Text(message.at("platform")),
            .name = Text(message.at("name")),
            .vendor = Text(message.at("vendor")),
            .version = Text(message.at("version")),
            .driverVersion = Text(message.at("driverVersion")),
            .singleFpConfig = message.at("singleFpConfig")};
  });
}

}  // namespace diagnosis
