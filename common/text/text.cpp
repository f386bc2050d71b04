#include "common/text/text.h"

#include <fmt/format.h>

#include <array>

namespace text {

namespace {

constexpr std::string_view digits =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::uint8_t noDigit = 64;

constexpr std::array<std::uint8_t, 256> valueOfDigit = [] {
  std::array<std::uint8_t, 256> values{};
  values.fill(noDigit);
  for (std::size_t i = 0; i < digits.size(); ++i)
    values[static_cast<unsigned char>(digits[i])] = static_cast<std::uint8_t>(i);
  return values;
}();

// Control characters, and the two that are no characters at all.
bool IsPrintable(char32_t c) {
  return c >= 0x20 && (c < 0x7F || c > 0x9F) && c != 0xFFFE && c != 0xFFFF;
}

std::string SpelledOut(std::string_view text, std::string_view kept) {
  std::string result;
  result.reserve(text.size());
  for (std::size_t position = 0; position < text.size();) {
    const std::size_t start = position;
    const std::optional<char32_t> c = NextCharacter(text, position);
    if (!c) ++position;
    const std::string_view bytes = text.substr(start, position - start);
    if (c && (IsPrintable(*c) || kept.find(bytes) != std::string_view::npos)) {
      result += bytes;
    } else {
      for (const char byte : bytes)
        fmt::format_to(std::back_inserter(result), "\\x{:02X}", static_cast<unsigned char>(byte));
    }
  }
  return result;
}

}  // namespace

std::optional<char32_t> NextCharacter(std::string_view text, std::size_t& position) {
  const auto byte = [text](std::size_t i) -> char32_t {
    return i < text.size() ? static_cast<unsigned char>(text[i]) : 0;
  };
  const char32_t first = byte(position);
  if (position >= text.size()) return std::nullopt;
  if (first < 0x80) {
    ++position;
    return first;
  }
  const std::size_t length = first >= 0xF0 ? 4 : (first >= 0xE0 ? 3 : 2);
  constexpr char32_t firstMask[] = {0, 0, 0x1F, 0x0F, 0x07};
  constexpr char32_t smallest[] = {0, 0, 0x80, 0x800, 0x10000};
  if (first < 0xC2 || first > 0xF4) return std::nullopt;
  char32_t c = first & firstMask[length];
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(position + i) & 0xC0) != 0x80) return std::nullopt;
    c = (c << 6) | (byte(position + i) & 0x3F);
  }
  if (c < smallest[length] || c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) return std::nullopt;
  position += length;
  return c;
}

bool IsUtf8(std::string_view text) {
  std::size_t position = 0;
  while (position < text.size()) {
    if (!NextCharacter(text, position)) return false;
  }
  return true;
}

std::string Printable(std::string_view text) { return SpelledOut(text, "\n\t"); }

std::string PrintableLine(std::string_view text, std::size_t most) {
  // Not in the middle of a character.
  const auto cut = [most](std::string_view whole) {
    if (whole.size() <= most) return whole;
    std::size_t end = most;
    while (end > 0 && (static_cast<unsigned char>(whole[end]) & 0xC0) == 0x80) --end;
    return whole.substr(0, end);
  };
  std::string line = SpelledOut(cut(text), "");
  if (line.size() <= most && text.size() <= most) return line;
  return std::string(cut(line)) + "...";
}

std::string Counted(std::uint64_t count, std::string_view one) {
  return fmt::format("{} {}{}", count, one, count == 1 ? "" : "s");
}

std::string ShellWords(const std::vector<std::string>& words) {
  constexpr std::string_view plain =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_-+=/.,:@%";
  std::string line;
  for (const std::string& word : words) {
    if (!line.empty()) line += ' ';
    if (!word.empty() && word.find_first_not_of(plain) == std::string::npos) {
      line += word;
      continue;
    }
    line += '\'';
    for (const char c : word) line += c == '\'' ? std::string("'\\''") : std::string(1, c);
    line += '\'';
  }
  return line;
}

std::string ToBase64(const std::vector<std::uint8_t>& bytes) {
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    std::uint32_t group = 0;
    for (std::size_t j = 0; j < 3; ++j)
      group = group << 8 | (i + j < bytes.size() ? bytes[i + j] : 0U);
    for (std::size_t j = 0; j < 4; ++j)
      text += i + j <= bytes.size() ? digits[group >> (18 - 6 * j) & 63] : '=';
  }
  return text;
}

std::optional<std::vector<std::uint8_t>> FromBase64(std::string_view text) {
  if (text.size() % 4 != 0) return std::nullopt;
  const std::size_t padding = text.ends_with("==") ? 2 : (text.ends_with('=') ? 1 : 0);
  std::vector<std::uint8_t> bytes;
  bytes.reserve(text.size() / 4 * 3);
  for (std::size_t i = 0; i < text.size(); i += 4) {
    std::uint32_t group = 0;
    for (std::size_t j = i; j < i + 4; ++j) {
      const bool pad = j >= text.size() - padding;
      const std::uint8_t value =
          pad ? std::uint8_t{0} : valueOfDigit[static_cast<unsigned char>(text[j])];
      if (value == noDigit) return std::nullopt;
      group = group << 6 | value;
    }
    for (const int shift : {16, 8, 0}) bytes.push_back(static_cast<std::uint8_t>(group >> shift));
  }
  bytes.resize(bytes.size() - padding);
  // Bits behind the end would be lost.
  if (ToBase64(bytes) != text) return std::nullopt;
  return bytes;
}

}  // namespace text
