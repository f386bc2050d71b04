#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <concepts>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>
#include <type_traits>

#include "common/text/text.h"
#include "diagnosis/record/record.h"

namespace diagnosis {

namespace {

using Json = nlohmann::ordered_json;

// What the files are written in. A reader takes no other: the number rises when a reader of before
// would take something for what it is not. A member that is new is one that need not be there.
constexpr int currentFormat = 1;

constexpr std::array<std::pair<Ending::Kind, const char*>, 7> kinds = {
    {{Ending::Kind::notRun, "notRun"},
     {Ending::Kind::skipped, "skipped"},
     {Ending::Kind::returned, "returned"},
     {Ending::Kind::exited, "exited"},
     {Ending::Kind::signalled, "signalled"},
     {Ending::Kind::timedOut, "timedOut"},
     {Ending::Kind::lost, "lost"}}};

template <class Value, class Of>
concept Is = std::same_as<std::remove_const_t<Value>, Of>;

// The members of each type under their names in the file, for both directions.

void Members(auto& io, Is<Device> auto& device) {
  io("platform", device.platform);
  io("name", device.name);
  io("vendor", device.vendor);
  io("version", device.version);
  io("driverVersion", device.driverVersion);
  io("singleFpConfig", device.singleFpConfig);
}

void Members(auto& io, Is<Repetition> auto& repetition) {
  io("inputA", repetition.inputA);
  io("inputB", repetition.inputB);
  io("launched", repetition.launched);
  io("result", repetition.result);
  io("out", repetition.out);
}

void Members(auto& io, Is<FailedCall> auto& call) {
  io("name", call.name);
  io("code", call.code);
  io("repetition", call.repetition);
}

void Members(auto& io, Is<Ending> auto& ending) {
  io("kind", ending.kind);
  io("value", ending.value);
  io("reason", ending.reason);
  io.Late("lostFirst", ending.lostFirst);
}

void Members(auto& io, Is<Predicted> auto& predicted) {
  io("suspect", predicted.suspect);
  io("answer", predicted.answer);
}

void Members(auto& io, Is<Experiment> auto& experiment) {
  io("kind", experiment.kind);
  io("predicted", experiment.predicted);
  io("repetition", experiment.repetition);
  io("element", experiment.element);
  io("lane", experiment.lane);
  io("result", experiment.result);
  io("behind", experiment.behind);
  io("inputA", experiment.inputA);
  io("inputB", experiment.inputB);
  io("swapped", experiment.swapped);
  io("passes", experiment.passes);
}

void Members(auto& io, Is<Record> auto& record) {
  io("row", record.row);
  io("seed", record.seed);
  io("buildOptions", record.buildOptions);
  io("localSize", record.localSize);
  io("source", record.source);
  io("kernel", record.kernel);
  io("buildLog", record.buildLog);
  io("repetitions", record.repetitions);
  io("behindA", record.behindA);
  io("behindB", record.behindB);
  io("launches", record.launches);
  io("failedCalls", record.failedCalls);
  io("randDrawn", record.randDrawn);
  io("out", record.out);
  io("err", record.err);
  io("driver", record.driver);
  io("ending", record.ending);
  io("seconds", record.seconds);
  io("buildSeconds", record.buildSeconds);
  io.Late("sharedContext", record.sharedContext);
  io.Late("inShared", record.inShared);
  io.Late("experiment", record.experiment);
}

void Members(auto& io, Is<Library> auto& library) {
  io("file", library.file);
  io("buildId", library.buildId);
  io("checksum", library.checksum);
}

void Members(auto& io, Is<Provenance> auto& provenance) {
  io("driver", provenance.driver);
  io("layers", provenance.layers);
  io("environment", provenance.environment);
  io("system", provenance.system);
  io("processor", provenance.processor);
  io("build", provenance.build);
}

void Members(auto& io, Is<RunInfo> auto& info) {
  io("version", info.version);
  io("command", info.command);
  io.Late("invocation", info.invocation);
  io("options", info.options);
  io("expected", info.expected);
  io("start", info.start);
  io("end", info.end);
  io.Late("seconds", info.seconds);
  io("host", info.host);
  io("device", info.device);
  io.Late("provenance", info.provenance);
  io("selected", info.selected);
}

struct Writer {
  Json& object;

  void Late(const char* name, const auto& value) { (*this)(name, value); }

  template <class Value>
  void operator()(const char* name, const Value& value) {
    object[name] = Written(value);
  }

  template <class Value>
  static Json Written(const Value& value) {
    if constexpr (std::is_arithmetic_v<Value>) {
      return value;
    } else if constexpr (std::same_as<Value, std::string>) {
      // Text is readable in the file wherever JSON can hold it.
      if (text::IsUtf8(value)) return value;
      return Json::object({{"base64", text::ToBase64(Bytes(value.begin(), value.end()))}});
    } else if constexpr (std::same_as<Value, Bytes>) {
      return text::ToBase64(value);
    } else if constexpr (std::same_as<Value, Ending::Kind>) {
      return std::ranges::find(kinds, value, &decltype(kinds)::value_type::first)->second;
    } else if constexpr (std::same_as<Value, std::map<std::string, std::string>>) {
      Json members = Json::object();
      for (const auto& [name, text] : value) members[name] = Written(text);
      return members;
    } else if constexpr (requires { value.begin(); }) {
      Json list = Json::array();
      for (const auto& entry : value) list.push_back(Written(entry));
      return list;
    } else {
      Json members = Json::object();
      Writer writer{members};
      Members(writer, value);
      return members;
    }
  }
};

// What is wrong with a value, and where: "repetitions[3].result is not base64".
class Damage : public std::runtime_error {
 public:
  Damage(std::string where, const std::string& what)
      : std::runtime_error(where + what), where_(std::move(where)), what_(what) {}
  explicit Damage(const std::string& what) : Damage("", what) {}

  Damage Within(const std::string& outer) const {
    const bool joined = where_.empty() || where_.starts_with('[');
    return {outer + (joined ? "" : ".") + where_, what_};
  }

 private:
  std::string where_;
  std::string what_;
};

struct Reader {
  const Json& object;

  // A member that files of before do not have.
  void Late(const char* name, auto& value) {
    if (object.contains(name)) (*this)(name, value);
  }

  template <class Value>
  void operator()(const char* name, Value& value) {
    try {
      const auto found = object.find(name);
      if (found == object.end()) throw Damage(" is missing");
      Read(*found, value);
    } catch (const Damage& damage) {
      throw damage.Within(name);
    }
  }

  template <class Value>
  static void Read(const Json& json, Value& value) {
    if constexpr (std::same_as<Value, bool>) {
      if (!json.is_boolean()) throw Damage(" is not true or false");
      value = json.template get<bool>();
    } else if constexpr (std::integral<Value>) {
      value = Integer<Value>(json);
    } else if constexpr (std::same_as<Value, double>) {
      if (!json.is_number()) throw Damage(" is not a number");
      value = json.template get<double>();
    } else if constexpr (std::same_as<Value, std::string>) {
      const bool isEncoded = json.is_object() && json.size() == 1 && json.contains("base64");
      if (!json.is_string() && !isEncoded) throw Damage(" is not a text");
      if (isEncoded) {
        Bytes bytes;
        Read(json["base64"], bytes);
        value.assign(bytes.begin(), bytes.end());
      } else {
        value = json.template get<std::string>();
      }
    } else if constexpr (std::same_as<Value, Bytes>) {
      std::optional<Bytes> bytes;
      if (json.is_string()) bytes = text::FromBase64(json.template get_ref<const std::string&>());
      if (!bytes) throw Damage(" is not base64");
      value = std::move(*bytes);
    } else if constexpr (std::same_as<Value, Ending::Kind>) {
      const auto* const kind = std::ranges::find_if(
          kinds, [&json](const auto& candidate) { return json == candidate.second; });
      if (kind == kinds.end()) throw Damage(" is not a kind of end");
      value = kind->first;
    } else if constexpr (std::same_as<Value, std::map<std::string, std::string>>) {
      if (!json.is_object()) throw Damage(" is not an object");
      for (const auto& [name, text] : json.items()) Read(text, value[name]);
    } else if constexpr (requires { value.emplace_back(); }) {
      if (!json.is_array()) throw Damage(" is not a list");
      for (std::size_t i = 0; i < json.size(); ++i) {
        try {
          // However deep a file goes, reading it does not.
          if constexpr (std::same_as<Value, std::vector<Record>>) {
            if (json[i].is_object() && !json[i].value("inShared", Json::array()).empty())
              throw Damage(" holds another");
          }
          Read(json[i], value.emplace_back());
        } catch (const Damage& damage) {
          throw damage.Within(fmt::format("[{}]", i));
        }
      }
    } else {
      if (!json.is_object()) throw Damage(" is not an object");
      Reader reader{json};
      Members(reader, value);
    }
  }

  template <class Value>
  static Value Integer(const Json& json) {
    // An integer of a file is either of these, and what is negative never the first.
    if (json.is_number_unsigned()) {
      const auto integer = json.template get<std::uint64_t>();
      if (std::in_range<Value>(integer)) return static_cast<Value>(integer);
    } else if (json.is_number_integer()) {
      const auto integer = json.template get<std::int64_t>();
      if (std::in_range<Value>(integer)) return static_cast<Value>(integer);
    }
    throw Damage(" is not an integer in range");
  }
};

Json WithFormat(const auto& value) {
  Json json = Json::object({{"format", currentFormat}});
  Writer writer{json};
  Members(writer, value);
  return json;
}

// The members of a text that is JSON. Throws a Damage that says at which byte it ceases to be.
Json Parsed(std::string_view text) {
  Json json;
  try {
    json = Json::parse(text);
  } catch (const Json::parse_error& error) {
    throw Damage(fmt::format("byte {}: this is not a whole JSON object", error.byte));
  }
  if (!json.is_object()) throw Damage("byte 1: this is not a whole JSON object");
  int format = 0;
  Reader reader{json};
  reader("format", format);
  if (format != currentFormat)
    throw Damage(
        fmt::format("this is of format {}, and only {} can be read", format, currentFormat));
  return json;
}

// Takes the default for a member that is damaged, and goes on: but for the device, without which
// nothing can be judged.
struct ForgivingReader {
  Reader reader;
  std::vector<std::string>& damages;

  void Late(const char* name, auto& value) {
    if (reader.object.contains(name)) (*this)(name, value);
  }

  template <class Value>
  void operator()(const char* name, Value& value) {
    try {
      reader(name, value);
    } catch (const Damage& damage) {
      if constexpr (std::same_as<Value, Device>) throw;
      value = Value();
      damages.emplace_back(damage.what());
    }
  }
};

}  // namespace

std::string ToJson(const Record& record) { return WithFormat(record).dump(); }

std::string ToJson(const RunInfo& info) {
  Json json = WithFormat(info);
  // For people and other programs; it follows from the configuration's bits.
  Json capabilities = Json::array();
  constexpr const char* names[] = {
      "denorm",       "inf_nan", "round_to_nearest", "round_to_zero",
      "round_to_inf", "fma",     "soft_float",       "correctly_rounded_divide_sqrt"};
  for (std::size_t bit = 0; bit < std::size(names); ++bit)
    if ((info.device.singleFpConfig >> bit & 1) != 0) capabilities.push_back(names[bit]);
  json["device"]["capabilities"] = capabilities;
  return json.dump(2) + "\n";
}

Record RecordFromJson(std::string_view line) {
  const Json json = Parsed(line);
  Record record;
  Reader reader{json};
  Members(reader, record);
  if (const std::string fault = FaultIn(record); !fault.empty()) throw Damage(fault);
  return record;
}

RunInfo RunInfoFromJson(std::string_view text, std::vector<std::string>& damages) {
  const Json json = Parsed(text);
  RunInfo info;
  ForgivingReader reader{{json}, damages};
  Members(reader, info);
  constexpr double longest = 1e9;  // some thirty years
  if (!(info.seconds >= 0 && info.seconds <= longest)) {
    damages.emplace_back("seconds is no length of time");
    info.seconds = 0;
  }
  return info;
}

}  // namespace diagnosis
