#pragma once

#include <CLI/CLI.hpp>
#include <cstdint>
#include <string>
#include <vector>

// What an option's value must be. The library's own checks let an overflow, a NaN and nothing pass.

namespace command_line {

/// A whole number in decimal digits.
CLI::Validator Whole(std::uint64_t least, std::uint64_t most);

/// A number of seconds, finite.
CLI::Validator Seconds(double least, double most);

/// Anything but nothing.
CLI::Validator NotEmpty();

/// The words of a command line, by the shell's rules of quoting; at least one. Throws
/// CLI::ValidationError, which names the option.
std::vector<std::string> WordsOf(const std::string& option, const std::string& line);

}  // namespace command_line
