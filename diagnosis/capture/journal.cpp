#include "diagnosis/capture/journal.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <string>

namespace diagnosis {
namespace {

// An event is its kind, the size of its data, and the data.
struct Header {
  std::uint32_t event;
  std::uint32_t size;
};

constexpr bool IsText(Event event) {
  return event == Event::buildLog || event == Event::out || event == Event::err;
}

// Takes numbers and bytes off the front.
class Reader {
 public:
  explicit Reader(std::span<const std::byte> bytes) : bytes_(bytes) {}

  bool Empty() const { return bytes_.empty(); }

  std::optional<std::span<const std::byte>> Take(std::size_t size) {
    if (bytes_.size() < size) return std::nullopt;
    const auto taken = bytes_.first(size);
    bytes_ = bytes_.subspan(size);
    return taken;
  }

  template <class Number>
  bool Get(Number& number) {
    const auto taken = Take(sizeof number);
    if (taken) std::memcpy(&number, taken->data(), sizeof number);
    return taken.has_value();
  }

  std::string_view Rest() const {
    return {reinterpret_cast<const char*>(bytes_.data()), bytes_.size()};
  }

  Bytes RestAsBytes() const {
    const auto* const first = reinterpret_cast<const std::uint8_t*>(bytes_.data());
    return {first, first + bytes_.size()};
  }

 private:
  std::span<const std::byte> bytes_;
};

bool Apply(Event event, Reader data, Record& record) {
  Repetition* const last = record.repetitions.empty() ? nullptr : &record.repetitions.back();
  const bool needsRepetition = event == Event::inputA || event == Event::inputB ||
                               event == Event::launch || event == Event::result;
  if (needsRepetition && last == nullptr) return false;
  std::uint64_t nanoseconds = 0;
  switch (event) {
    case Event::source:
      record.source += data.Rest();
      return true;
    case Event::kernel:
      record.kernel = data.Rest();
      return true;
    case Event::buildTime:
      if (!data.Get(nanoseconds)) return false;
      record.buildSeconds += static_cast<double>(nanoseconds) * 1e-9;
      return true;
    case Event::buildLog:
      record.buildLog += data.Rest();
      return true;
    case Event::failedCall: {
      FailedCall call;
      if (!data.Get(call.code)) return false;
      call.name = data.Rest();
      call.repetition = static_cast<int>(record.repetitions.size());
      record.failedCalls.push_back(call);
      return true;
    }
    case Event::repetition:
      record.repetitions.emplace_back();
      return true;
    case Event::inputA:
      last->inputA = data.RestAsBytes();
      return true;
    case Event::inputB:
      last->inputB = data.RestAsBytes();
      return true;
    case Event::launch:
      last->launched = true;
      ++record.launches;
      return true;
    case Event::result:
      last->result = data.RestAsBytes();
      return true;
    case Event::behindA:
      record.behindA = data.RestAsBytes();
      return true;
    case Event::behindB:
      record.behindB = data.RestAsBytes();
      return true;
    case Event::out:
      record.out += data.Rest();
      if (last != nullptr) last->out += data.Rest();
      return true;
    case Event::err:
      record.err += data.Rest();
      return true;
    case Event::randDrawn:
      record.randDrawn = true;
      return true;
    case Event::returned: {
      std::int32_t value = 0;
      if (!data.Get(value) || !data.Get(nanoseconds)) return false;
      record.ending = {.kind = Ending::Kind::returned, .value = value, .reason = {}};
      record.seconds = static_cast<double>(nanoseconds) * 1e-9;
      return true;
    }
  }
  return false;
}

}  // namespace

void Journal::Clear() {
  bytes_.Clear();
  std::ranges::fill(texts_, 0);
}

void Journal::Append(Event event, std::span<const std::byte> data) {
  const Header header{static_cast<std::uint32_t>(event), static_cast<std::uint32_t>(data.size())};
  bytes_.Append({std::as_bytes(std::span(&header, 1)), data});
}

void Journal::Write(Event event, std::span<const std::byte> data) {
  if (IsText(event)) {
    std::size_t& size = texts_[static_cast<std::size_t>(event)];
    if (size >= longestText) return;
    const bool cut = data.size() > longestText - size;
    data = data.first(std::min(data.size(), longestText - size));
    size += data.size();
    if (cut) {
      Append(event, data);
      data = std::as_bytes(std::span(std::string_view("\n[the rest is left out]\n")));
    }
  }
  Append(event, data);
}

void Journal::Write(Event event, std::string_view text) {
  Write(event, std::as_bytes(std::span(text)));
}

bool ReadJournal(std::string_view written, Record& record) {
  Reader reader(std::as_bytes(std::span(written)));
  while (!reader.Empty()) {
    Header header{};
    if (!reader.Get(header)) return false;
    const auto data = reader.Take(header.size);
    if (!data || header.event > static_cast<std::uint32_t>(Event::returned)) return false;
    if (!Apply(static_cast<Event>(header.event), Reader(*data), record)) return false;
  }
  return true;
}

}  // namespace diagnosis
