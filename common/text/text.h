#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// What a driver prints may be anything. These make it fit for where it is shown or kept.

namespace text {

/// The character that starts at `position`, which moves behind it; nothing, and `position` as it
/// was, if no well-formed UTF-8 stands there.
std::optional<char32_t> NextCharacter(std::string_view text, std::size_t& position);

bool IsUtf8(std::string_view text);

/// The text with every byte that is not UTF-8 and every control character spelled out as "\x1B";
/// line feeds and tabs stay. What is left is printable, and XML 1.0 can hold it.
std::string Printable(std::string_view text);

/// The same on one line, for a place where lines count: line feeds and tabs are spelled out too,
/// and what is longer than `most` bytes is cut and ends in "...".
std::string PrintableLine(std::string_view text, std::size_t most = 200);

/// "12 rows", "1 row".
std::string Counted(std::uint64_t count, std::string_view one);

/// The words as a shell takes them again.
std::string ShellWords(const std::vector<std::string>& words);

std::string ToBase64(const std::vector<std::uint8_t>& bytes);

/// Nothing unless the text is base64 as ToBase64 writes it.
std::optional<std::vector<std::uint8_t>> FromBase64(std::string_view text);

}  // namespace text
