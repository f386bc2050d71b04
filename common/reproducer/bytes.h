#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "common/reproducer/reproducer.h"

namespace reproducer {

/// An argument of the kernel. It has at least one byte.
struct Buffer {
  std::string name;                 // an identifier of C
  std::vector<std::uint8_t> bytes;  // that go to the device
  std::vector<std::uint8_t> right;  // what must be there afterwards; empty: nobody looks
  std::vector<std::uint8_t> mask;   // as many: of each byte the bits that matter
};

/// What a reproducer is made of whose buffers are bytes, some of which are looked at afterwards.
struct ByteCase {
  std::vector<Remark> head;
  std::string source;  // the kernel's text as the driver gets it; ends in a line feed
  std::string kernel;
  std::string buildOptions;     // empty: none are handed over
  std::vector<Buffer> buffers;  // the kernel's arguments; at least one
  std::size_t globalSize = 1;
  std::size_t localSize = 1;
  int repetitions = 1;  // at most: the first wrong one ends the program
};

/// The program. It ends with 0 if the device is right, 1 if not, and 2 if a call fails.
std::string ProgramOf(const ByteCase& made);

/// The text of its main function.
extern const char* const mainOfBytes;

}  // namespace reproducer
