#pragma once

#include <span>
#include <string>
#include <vector>

#include "common/command_line/program.h"

// Words of a call, before and after the library has read them, and what is said where it cannot.

namespace command_line {

/// The words with the command that is meant in front where none is named, "help COMMAND" as its
/// option, and an empty value of its own behind an option that ends in "=". Throws text::BadUse for
/// a flag that is given a value, and for a word that is a command's, but for a letter or two.
std::vector<std::string> Arranged(const Program& program, const CLI::App& app,
                                  std::vector<std::string> words);

/// One line on why the library did not take the words; `reason` is its own.
std::string RefusalOf(const CLI::App& app, const std::string& reason);

}  // namespace command_line
