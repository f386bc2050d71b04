#include "common/workers/messages.h"

#include <stdexcept>

#include "common/workers/cbor.h"

namespace workers {
namespace {

using nlohmann::json;

template <class Enumeration>
Enumeration KindOf(const json& number, Enumeration last) {
  const int kind = number;
  if (kind < 0 || kind > static_cast<int>(last))
    throw std::runtime_error("a message that cannot be understood");
  return static_cast<Enumeration>(kind);
}

json ToJson(const Task& task) {
  return {{"kind", "task"}, {"bytes", Binary(task.bytes)}, {"freshRunner", task.freshRunner}};
}

json ToJson(const GiveUp& giveUp) { return {{"kind", "giveUp"}, {"phase", giveUp.phase}}; }

json ToJson(const Finish&) { return {{"kind", "finish"}}; }

json ToJson(const Phase& phase) {
  return {{"kind", "phase"}, {"phase", static_cast<int>(phase.kind)}, {"number", phase.number}};
}

json ToJson(const Up& up) { return {{"kind", "up"}, {"device", Binary(up.device)}}; }

json ToJson(const NoDevice& noDevice) {
  return {{"kind", "noDevice"}, {"reason", Binary(noDevice.reason)}};
}

json ToJson(const NoRunner& noRunner) {
  return {{"kind", "noRunner"}, {"reason", Binary(noRunner.reason)}};
}

json ToJson(const Ended& ended) {
  const Answer& answer = ended.answer;
  return {{"kind", "ended"},
          {"ending", static_cast<int>(answer.ending)},
          {"value", answer.value},
          {"reason", Binary(answer.reason)},
          {"bytes", Binary(answer.bytes)},
          {"printed", Binary(answer.printed)},
          {"seconds", answer.seconds}};
}

Ended EndedFrom(const json& message) {
  Ended ended;
  ended.answer.ending = KindOf(message.at("ending"), Ending::lost);
  ended.answer.value = message.at("value");
  ended.answer.reason = Text(message.at("reason"));
  ended.answer.bytes = Text(message.at("bytes"));
  ended.answer.printed = Text(message.at("printed"));
  ended.answer.seconds = message.at("seconds");
  return ended;
}

}  // namespace

std::string Packed(const Order& order) {
  return std::visit([](const auto& message) { return Cbor(ToJson(message)); }, order);
}

std::string Packed(const Report& report) {
  return std::visit([](const auto& message) { return Cbor(ToJson(message)); }, report);
}

Order OrderFrom(std::string_view bytes) {
  return FromCbor(bytes, [](const json& message) -> Order {
    const std::string kind = message.at("kind");
    if (kind == "task")
      return Task{.bytes = Text(message.at("bytes")), .freshRunner = message.at("freshRunner")};
    if (kind == "giveUp") return GiveUp{.phase = message.at("phase")};
    if (kind == "finish") return Finish{};
    throw std::runtime_error("an order of an unknown kind");
  });
}

Report ReportFrom(std::string_view bytes) {
  return FromCbor(bytes, [](const json& message) -> Report {
    const std::string kind = message.at("kind");
    if (kind == "phase")
      return Phase{.kind = KindOf(message.at("phase"), Phase::Kind::ending),
                   .number = message.at("number")};
    if (kind == "up") return Up{.device = Text(message.at("device"))};
    if (kind == "noDevice") return NoDevice{.reason = Text(message.at("reason"))};
    if (kind == "noRunner") return NoRunner{.reason = Text(message.at("reason"))};
    if (kind == "ended") return EndedFrom(message);
    throw std::runtime_error("a message of an unknown kind");
  });
}

}  // namespace workers
