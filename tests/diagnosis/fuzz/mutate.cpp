#include "tests/diagnosis/fuzz/mutate.h"

#include <cstdint>
#include <nlohmann/json.hpp>
#include <utility>
#include <vector>

#include "common/text/text.h"

namespace diagnosis {

namespace {

using Json = nlohmann::ordered_json;
using Random = std::mt19937_64;

/// From 0 to `count` - 1.
std::size_t Below(std::size_t count, Random& random) { return random() % count; }

template <class Values>
const auto& OneOf(const Values& values, Random& random) {
  return values[Below(std::size(values), random)];
}

std::string WithOtherBytes(std::string text, Random& random) {
  const std::size_t at = Below(text.size() + 1, random);
  const std::size_t count = std::min(text.size() - at, Below(40, random) + 1);
  switch (Below(5, random)) {
    case 0:
      return text.substr(0, at);
    case 1:
      return text.erase(at, count);
    case 2:
      return text.insert(at, text.substr(at, count));
    case 3:
      return text.insert(at, 1, static_cast<char>(random()));
    default:
      if (at < text.size()) text[at] = static_cast<char>(text[at] ^ 1 << Below(8, random));
      return text;
  }
}

/// The bytes of a buffer as a device or a damage could leave them.
std::string OtherBuffer(const std::vector<std::uint8_t>& before, Random& random) {
  std::vector<std::uint8_t> bytes = before;
  constexpr std::size_t sizes[] = {0, 1, 3, 32, 319, 320, 321, 640, 7872, 15744};
  if (Below(3, random) == 0) bytes.resize(OneOf(sizes, random));
  constexpr std::uint32_t words[] = {0,          1,          0x80000000, 0x7F800000, 0xFF800000,
                                     0x7FC00000, 0xFFFFFFFF, 0x007FFFFF, 0x7F7FFFFF, 0x3F800000};
  const bool isEverywhere = Below(2, random) == 0;
  const std::uint32_t word = OneOf(words, random);
  const std::size_t from = isEverywhere ? 0 : Below(bytes.size() + 1, random) / 4 * 4;
  const std::size_t to = isEverywhere ? bytes.size() : std::min(from + 4, bytes.size());
  for (std::size_t i = from; i < to; ++i) bytes[i] = static_cast<std::uint8_t>(word >> 8 * (i % 4));
  return text::ToBase64(bytes);
}

Json OddValue(Random& random) {
  static const std::vector<Json> values = {nullptr,
                                           true,
                                           0,
                                           -1,
                                           1,
                                           2,
                                           11,
                                           INT64_MIN,
                                           UINT64_MAX,
                                           1e308,
                                           -0.5,
                                           "",
                                           "AAAA",
                                           "passed",
                                           Json::array(),
                                           Json::object(),
                                           "notRun",
                                           "signalled",
                                           "copy_union_scalar_1",
                                           std::string(3000, '<'),
                                           Json::object({{"base64", "/w=="}}),
                                           "  c:1 ocl:2\nRUN 1: FAILED!\n"};
  return OneOf(values, random);
}

/// All values that stand in `json`, itself first.
void Collect(Json& json, std::vector<Json*>& values) {
  values.push_back(&json);
  if (json.is_structured()) {
    for (Json& inner : json) Collect(inner, values);
  }
}

void ChangeOne(Json& json, Random& random) {
  std::vector<Json*> values;
  Collect(json, values);
  Json& value = *OneOf(values, random);
  if (value.is_string() && Below(3, random) > 0) {
    if (const auto bytes = text::FromBase64(value.get_ref<const std::string&>()))
      value = OtherBuffer(*bytes, random);
    return;
  }
  if (value.is_array() && !value.empty() && Below(2, random) == 0) {
    const std::size_t at = Below(value.size(), random);
    if (Below(2, random) == 0) {
      value.erase(at);
    } else {
      value.push_back(Json(value[at]));
    }
    return;
  }
  if (value.is_object() && !value.empty() && Below(2, random) == 0) {
    value.erase(std::next(value.begin(), static_cast<std::ptrdiff_t>(Below(value.size(), random))));
    return;
  }
  value = Below(2, random) == 0 ? OddValue(random) : Json(*OneOf(values, random));
}

}  // namespace

std::string Mutated(const std::string& line, Random& random) {
  Json json = Json::parse(line, nullptr, false);
  if (json.is_discarded() || Below(4, random) == 0) return WithOtherBytes(line, random);
  for (std::size_t times = Below(3, random) + 1; times > 0; --times) ChangeOne(json, random);
  return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace diagnosis
