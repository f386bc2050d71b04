#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// C99 programs that show by themselves what a device makes of a kernel: the text, the bytes that go
// to the device, and the answers that are right for them. They need CL/cl.h and -lOpenCL and
// nothing else.

namespace reproducer {

/// A part of the head: "Device:" and what is to be said of it. Anything may stand in the text.
struct Remark {
  std::string label;
  std::string text;
};

/// Answers that are right in a word of 32 bits: those from `first` to `last`.
struct Right {
  int element;
  int lane;  // a word of the element
  std::uint32_t first;
  std::uint32_t last;
  std::string value;  // for a person, on one line without comments of C
  bool operator==(const Right&) const = default;
};

/// What a reproducer is made of.
struct Case {
  std::vector<Remark> head;
  std::string source;  // the kernel's text as the driver gets it; ends in a line feed
  std::string kernel;
  std::string buildOptions;                       // empty: none are handed over
  std::vector<std::vector<std::uint8_t>> inputs;  // a buffer each, of elements * stride bytes
  int elements = 1;                               // that are filled and looked at
  int lanes = 1;                                  // of each; every one has a line in `right`
  std::size_t stride = 4;         // bytes from one element to the next, in all buffers
  std::size_t globalSize = 256;   // work-items, and elements that each buffer has room for
  std::uint64_t localSize = 0;    // 0 leaves it to the driver
  int repetitions = 1;            // at most: the first wrong one ends the program
  bool countArgument = true;      // whether `elements` is the kernel's last argument
  bool floatAnswers = true;       // whether answers are shown as floats too
  std::uint64_t assumed = 0;      // CL_DEVICE_SINGLE_FP_CONFIG of the device that `right` is for
  std::uint64_t assumedBits = 0;  // those of its bits on which `right` depends
  std::vector<Right> right;
};

/// The program. Its arguments are the buffers of the inputs, that of the result and the count; it
/// ends with 0 if the device is right, 1 if not, and 2 if a call fails or the device differs in a
/// bit on which the answers depend.
std::string ProgramOf(const Case& made);

/// The line of the head that says how the program in `file`, a path, is compiled beside that file.
Remark HowToCompile(std::string_view file);

/// The text of the frame, an example in it in the place of a case.
extern const char* const frame;

}  // namespace reproducer
