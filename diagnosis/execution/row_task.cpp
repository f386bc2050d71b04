#include "diagnosis/execution/row_task.h"

#include "common/workers/cbor.h"

namespace diagnosis {

using nlohmann::json;
using workers::Binary;
using workers::Cbor;
using workers::FromCbor;
using workers::Text;

std::string Packed(const RowTask& task) {
  return Cbor({{"row", task.row},
               {"seed", task.conditions.seed},
               {"drawsBefore", task.conditions.drawsBefore},
               {"stride", task.conditions.stride},
               {"buildOptions", Binary(task.conditions.buildOptions)},
               {"localSize", task.conditions.localSize},
               {"passes", task.passes}});
}

std::string Packed(const Device& device) {
  return Cbor({{"platform", Binary(device.platform)},
               {"name", Binary(device.name)},
               {"vendor", Binary(device.vendor)},
               {"version", Binary(device.version)},
               {"driverVersion", Binary(device.driverVersion)},
               {"singleFpConfig", device.singleFpConfig}});
}

RowTask RowTaskFrom(std::string_view bytes) {
  return FromCbor(bytes, [](const json& message) -> RowTask {
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
  return FromCbor(bytes, [](const json& message) -> Device {
    return {.platform = Text(message.at("platform")),
            .name = Text(message.at("name")),
            .vendor = Text(message.at("vendor")),
            .version = Text(message.at("version")),
            .driverVersion = Text(message.at("driverVersion")),
            .singleFpConfig = message.at("singleFpConfig")};
  });
}

}  // namespace diagnosis
