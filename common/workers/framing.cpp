#include "common/workers/framing.h"

#include <cstdint>
#include <stdexcept>

namespace workers {
namespace {

// More than the longest texts and a whole answer.
constexpr std::size_t largestFrame = 16 << 20;

}  // namespace

std::string Framed(std::string_view message) {
  std::string frame;
  frame.reserve(4 + message.size() + 1);
  for (std::size_t i = 0; i < 4; ++i) frame += static_cast<char>(message.size() >> (8 * i) & 0xFF);
  return frame.append(message) += '\n';
}

std::string HelloOf(std::string_view protocol) {
  std::string hello = "\x02";
  return hello.append(protocol) += " worker\x03\n";
}

void FrameReader::Feed(std::string_view bytes) {
  bytes_.erase(0, taken_);
  taken_ = 0;
  bytes_ += bytes;
  if (hello_.empty()) return;
  const std::size_t at = bytes_.find(hello_);
  if (at != std::string::npos) {
    bytes_.erase(0, at + hello_.size());
    hello_.clear();
  } else if (bytes_.size() > hello_.size()) {
    bytes_.erase(0, bytes_.size() - hello_.size());
  }
}

std::optional<std::string> FrameReader::Next() {
  const std::string_view left = std::string_view(bytes_).substr(taken_);
  if (!hello_.empty() || left.size() < 4) return std::nullopt;
  std::size_t size = 0;
  for (std::size_t i = 0; i < 4; ++i)
    size |= std::size_t{static_cast<std::uint8_t>(left[i])} << (8 * i);
  if (size > largestFrame) throw std::runtime_error("a message that is too long");
  if (left.size() < 4 + size + 1) return std::nullopt;
  taken_ += 4 + size + 1;
  return std::string(left.substr(4, size));
}

}  // namespace workers
