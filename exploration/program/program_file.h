#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "exploration/program/runnable.h"

namespace exploration {

/// Bytes in hexadecimal, 16 a line, each line with two blanks before it: "??" where nothing of a
/// byte is known, "A5*64" for so many of one after another. An empty `known` is all of them.
std::string HexOf(const std::vector<std::uint8_t>& bytes, const std::vector<std::uint8_t>& known);

/// A file that holds a program for keeps: the text that a device is given, and in a comment behind
/// it the buffers and what they must hold afterwards.
std::string FileOf(const RunnableProgram& program);

/// The program that a file holds, whose customary bytes are not known. Comments before the text
/// belong to it. Throws text::BadUse, which begins with `name`, if it is no such file.
RunnableProgram FromFile(const std::string& name, std::string_view file);

}  // namespace exploration
