#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

// Messages between processes are JSON's values in CBOR. What a driver says need not be UTF-8, which
// a text would have to be, and goes as bytes.

namespace workers {

inline nlohmann::json Binary(std::string_view bytes) {
  return nlohmann::json::binary(std::vector<std::uint8_t>(bytes.begin(), bytes.end()));
}

/// Throws nlohmann::json::exception if it is not Binary's.
inline std::string Text(const nlohmann::json& binary) {
  const nlohmann::json::binary_t& bytes = binary.get_binary();
  return {bytes.begin(), bytes.end()};
}

inline std::string Cbor(const nlohmann::json& message) {
  std::string bytes;
  nlohmann::json::to_cbor(message, bytes);
  return bytes;
}

/// What `read` makes of the message. Throws std::runtime_error if it cannot be read: what
/// nlohmann-json has to say of it is no line for a person.
template <class Read>
auto FromCbor(std::string_view bytes, Read read) {
  try {
    return read(nlohmann::json::from_cbor(bytes));
  } catch (const nlohmann::json::exception&) {
    throw std::runtime_error("a message that cannot be understood");
  }
}

}  // namespace workers
