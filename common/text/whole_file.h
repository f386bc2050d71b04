#pragma once

#include <string>
#include <string_view>

namespace text {

/// Writes the file whole or not at all: into FILE.part, which takes its place once it is safe on
/// the disk, with the owner and the mode of what it replaces. A symbolic link stays, and what it
/// leads to is written. A device or a pipe is written to as it stands. Throws CannotWrite, and then
/// what stood there stands there still.
void WriteWhole(const std::string& path, std::string_view text);

/// Writes all of the text into the open file, in one call if the system takes it so. Throws
/// CannotWrite, which names `path`; then some of it may be written.
void WriteAll(int file, const std::string& path, std::string_view text);

/// Throws CannotWrite, with the reason that errno gives.
[[noreturn]] void RefuseToWrite(const std::string& path);

}  // namespace text
