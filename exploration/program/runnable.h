#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace exploration {

/// An argument of the kernel, a buffer.
struct RunnableBuffer {
  std::string name;                 ///< As in the text.
  std::vector<std::uint8_t> bytes;  ///< What the host writes before the kernel runs.
  bool isAnswer = false;            ///< Whether the host reads it afterwards.
  /// These three only for answers, a byte each for each of `bytes`. `known` and `customary` are
  /// 0xFF where a byte is, and 0 where it is not: what is known must be right; what is customary is
  /// what every compiler keeps, though no standard promises it.
  std::vector<std::uint8_t> expected;
  std::vector<std::uint8_t> known;
  std::vector<std::uint8_t> customary;
};

/// Everything that is needed to run a program and to say whether it went right. The device must be
/// little-endian. The kernel takes `buffers` as its arguments, in their order.
struct RunnableProgram {
  std::string text;
  bool needsDouble = false;  ///< cl_khr_fp64, or OpenCL C 1.2's own double.
  bool needsHalf = false;    ///< cl_khr_fp16.
  std::string kernel = "test";
  std::vector<RunnableBuffer> buffers;
  std::size_t globalSize = 1;
  std::size_t localSize = 1;
  std::vector<std::string> features;  ///< By their names, in the order of the list of features.
};

}  // namespace exploration
