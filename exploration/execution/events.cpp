#include "exploration/execution/events.h"

#include <cstring>
#include <span>

namespace exploration {
namespace {

constexpr std::size_t headSize = 5;

std::span<const std::byte> BytesOf(std::string_view text) {
  return std::as_bytes(std::span(text.data(), text.size()));
}

}  // namespace

std::int32_t Event::Number() const {
  std::int32_t number = 0;
  if (bytes.size() == sizeof number) std::memcpy(&number, bytes.data(), sizeof number);
  return number;
}

void Tell(workers::SharedBytes& answer, Event::Kind kind, std::string_view bytes) {
  char head[headSize] = {static_cast<char>(kind)};
  const auto size = static_cast<std::uint32_t>(bytes.size());
  std::memcpy(head + 1, &size, sizeof size);
  answer.Append({BytesOf({head, headSize}), BytesOf(bytes)});
}

void Tell(workers::SharedBytes& answer, Event::Kind kind, std::int32_t number) {
  char bytes[sizeof number];
  std::memcpy(bytes, &number, sizeof number);
  Tell(answer, kind, std::string_view(bytes, sizeof bytes));
}

std::vector<Event> EventsIn(std::string_view bytes) {
  std::vector<Event> events;
  while (bytes.size() >= headSize) {
    std::uint32_t size = 0;
    std::memcpy(&size, bytes.data() + 1, sizeof size);
    const auto kind = static_cast<std::uint8_t>(bytes[0]);
    if (kind > static_cast<std::uint8_t>(Event::Kind::done) || bytes.size() - headSize < size)
      break;
    events.push_back({static_cast<Event::Kind>(kind), bytes.substr(headSize, size)});
    bytes.remove_prefix(headSize + size);
  }
  return events;
}

}  // namespace exploration
