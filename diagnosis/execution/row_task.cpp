#include "diagnosis/execution/row_task.h"

#include <utility>

#include "common/workers/cbor.h"

namespace diagnosis {

using nlohmann::json;
using workers::Binary;
using workers::Cbor;
using workers::FromCbor;
using workers::Text;

namespace {

json JsonOf(const Library& library) {
  return {{"file", Binary(library.file)},
          {"buildId", Binary(library.buildId)},
          {"checksum", Binary(library.checksum)}};
}

Library LibraryOf(const json& message) {
  return {.file = Text(message.at("file")),
          .buildId = Text(message.at("buildId")),
          .checksum = Text(message.at("checksum"))};
}

}  // namespace

std::string Packed(const RowTask& task) {
  return Cbor({{"row", task.row},
               {"seed", task.conditions.seed},
               {"drawsBefore", task.conditions.drawsBefore},
               {"stride", task.conditions.stride},
               {"buildOptions", Binary(task.conditions.buildOptions)},
               {"localSize", task.conditions.localSize},
               {"passes", task.passes},
               {"sharesContext", task.sharesContext},
               {"result", json::binary(task.conditions.experiment.result)},
               {"behind", json::binary(task.conditions.experiment.behind)},
               {"inputA", json::binary(task.conditions.experiment.inputA)},
               {"inputB", json::binary(task.conditions.experiment.inputB)},
               {"swapped", task.conditions.experiment.swapped}});
}

std::string Packed(const FoundDevice& found) {
  const Device& device = found.device;
  const Provenance& provenance = found.provenance;
  json layers = json::array();
  for (const Library& layer : provenance.layers) layers.push_back(JsonOf(layer));
  json environment = json::object();
  for (const auto& [name, value] : provenance.environment) environment[name] = Binary(value);
  return Cbor({{"platform", Binary(device.platform)},
               {"name", Binary(device.name)},
               {"vendor", Binary(device.vendor)},
               {"version", Binary(device.version)},
               {"driverVersion", Binary(device.driverVersion)},
               {"singleFpConfig", device.singleFpConfig},
               {"driver", JsonOf(provenance.driver)},
               {"layers", std::move(layers)},
               {"environment", std::move(environment)},
               {"system", Binary(provenance.system)},
               {"processor", Binary(provenance.processor)},
               {"build", Binary(provenance.build)}});
}

RowTask RowTaskFrom(std::string_view bytes) {
  return FromCbor(bytes, [](const json& message) {
    RowTask task;
    task.row = message.at("row");
    task.conditions.seed = message.at("seed");
    task.conditions.drawsBefore = message.at("drawsBefore");
    task.conditions.stride = message.at("stride");
    task.conditions.buildOptions = Text(message.at("buildOptions"));
    task.conditions.localSize = message.at("localSize");
    task.passes = message.at("passes");
    task.sharesContext = message.at("sharesContext");
    Experiment& experiment = task.conditions.experiment;
    experiment.result = message.at("result").get_binary();
    experiment.behind = message.at("behind").get_binary();
    experiment.inputA = message.at("inputA").get_binary();
    experiment.inputB = message.at("inputB").get_binary();
    experiment.swapped = message.at("swapped");
    return task;
  });
}

FoundDevice FoundDeviceFrom(std::string_view bytes) {
  return FromCbor(bytes, [](const json& message) {
    FoundDevice found;
    found.device = {.platform = Text(message.at("platform")),
                    .name = Text(message.at("name")),
                    .vendor = Text(message.at("vendor")),
                    .version = Text(message.at("version")),
                    .driverVersion = Text(message.at("driverVersion")),
                    .singleFpConfig = message.at("singleFpConfig")};
    Provenance& provenance = found.provenance;
    provenance.driver = LibraryOf(message.at("driver"));
    for (const json& layer : message.at("layers")) provenance.layers.push_back(LibraryOf(layer));
    for (const auto& [name, value] : message.at("environment").items())
      provenance.environment[name] = Text(value);
    provenance.system = Text(message.at("system"));
    provenance.processor = Text(message.at("processor"));
    provenance.build = Text(message.at("build"));
    return found;
  });
}

}  // namespace diagnosis
