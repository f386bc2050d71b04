#include "diagnosis/execution/messages.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <type_traits>
#include <vector>

namespace diagnosis {
namespace {

using nlohmann::json;

// More than the longest texts and a whole journal.
constexpr std::size_t largestFrame = 16 << 20;

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
    const json message = json::from_cbor(bytes);
    return read(message, message.at("kind").get<std::string>());
  } catch (const json::exception&) {
    throw std::runtime_error("a message that cannot be understood");
  }
}

json ToJson(const Begin& begin) {
  return {{"kind", "begin"}, {"timeoutSeconds", begin.timeoutSeconds}};
}

json ToJson(const Task& task) {
  return {{"kind", "task"},
          {"row", task.row},
          {"seed", task.conditions.seed},
          {"drawsBefore", task.conditions.drawsBefore},
          {"stride", task.conditions.stride},
          {"buildOptions", Binary(task.conditions.buildOptions)},
          {"localSize", task.conditions.localSize},
          {"passes", task.passes},
          {"freshRunner", task.freshRunner}};
}

json ToJson(const Device& device) {
  return {{"kind", "device"},
          {"platform", Binary(device.platform)},
          {"name", Binary(device.name)},
          {"vendor", Binary(device.vendor)},
          {"version", Binary(device.version)},
          {"driverVersion", Binary(device.driverVersion)},
          {"singleFpConfig", device.singleFpConfig}};
}

json ToJson(const NoDevice& noDevice) {
  return {{"kind", "noDevice"}, {"reason", Binary(noDevice.reason)}};
}

json ToJson(const NoRunner& noRunner) {
  return {{"kind", "noRunner"}, {"reason", Binary(noRunner.reason)}};
}

json ToJson(const Ended& ended) {
  return {{"kind", "ended"},
          {"ending", static_cast<int>(ended.ending.kind)},
          {"value", ended.ending.value},
          {"reason", Binary(ended.ending.reason)},
          {"seconds", ended.seconds},
          {"driver", Binary(ended.driver)},
          {"journal", Binary(ended.journal)}};
}

Task TaskFrom(const json& message) {
  return {.row = message.at("row"),
          .conditions = {.seed = message.at("seed"),
                         .drawsBefore = message.at("drawsBefore"),
                         .stride = message.at("stride"),
                         .buildOptions = Text(message.at("buildOptions")),
                         .localSize = message.at("localSize")},
          .passes = message.at("passes"),
          .freshRunner = message.at("freshRunner")};
}

Device DeviceFrom(const json& message) {
  return {.platform = Text(message.at("platform")),
          .name = Text(message.at("name")),
          .vendor = Text(message.at("vendor")),
          .version = Text(message.at("version")),
          .driverVersion = Text(message.at("driverVersion")),
          .singleFpConfig = message.at("singleFpConfig")};
}

Ended EndedFrom(const json& message) {
  const int kind = message.at("ending");
  if (kind < 0 || kind > static_cast<int>(Ending::Kind::lost))
    throw std::runtime_error("an ending that is none");
  return {.ending = {.kind = static_cast<Ending::Kind>(kind),
                     .value = message.at("value"),
                     .reason = Text(message.at("reason"))},
          .seconds = message.at("seconds"),
          .driver = Text(message.at("driver")),
          .journal = Text(message.at("journal"))};
}

}  // namespace

std::string Packed(const Order& order) {
  return std::visit([](const auto& message) { return Pack(ToJson(message)); }, order);
}

std::string Packed(const Answer& answer) {
  return std::visit([](const auto& message) { return Pack(ToJson(message)); }, answer);
}

std::string Framed(std::string_view packed) {
  std::string frame;
  for (std::size_t i = 0; i < 4; ++i) frame += static_cast<char>(packed.size() >> (8 * i) & 0xFF);
  return frame.append(packed) += '\n';
}

Order OrderFrom(std::string_view bytes) {
  return From(bytes, [](const json& message, const std::string& kind) -> Order {
    if (kind == "begin") return Begin{.timeoutSeconds = message.at("timeoutSeconds")};
    if (kind == "task") return TaskFrom(message);
    throw std::runtime_error("an order of an unknown kind");
  });
}

Answer AnswerFrom(std::string_view bytes) {
  return From(bytes, [](const json& message, const std::string& kind) -> Answer {
    if (kind == "device") return DeviceFrom(message);
    if (kind == "noDevice") return NoDevice{.reason = Text(message.at("reason"))};
    if (kind == "noRunner") return NoRunner{.reason = Text(message.at("reason"))};
    if (kind == "ended") return EndedFrom(message);
    throw std::runtime_error("an answer of an unknown kind");
  });
}

void FrameReader::Feed(std::string_view bytes) {
  bytes_ += bytes;
  if (Greeted()) return;
  const std::size_t at = bytes_.find(hello_);
  if (at != std::string::npos) {
    bytes_.erase(0, at + hello_.size());
    hello_ = {};
  } else if (bytes_.size() > hello_.size()) {
    bytes_.erase(0, bytes_.size() - hello_.size());
  }
}

std::optional<std::string> FrameReader::Next() {
  if (!Greeted() || bytes_.size() < 4) return std::nullopt;
  std::size_t size = 0;
  for (std::size_t i = 0; i < 4; ++i)
    size |= std::size_t{static_cast<std::uint8_t>(bytes_[i])} << (8 * i);
  if (size > largestFrame) throw std::runtime_error("a message that is too long");
  if (bytes_.size() < 4 + size + 1) return std::nullopt;
  std::string message = bytes_.substr(4, size);
  bytes_.erase(0, 4 + size + 1);
  return message;
}

}  // namespace diagnosis
