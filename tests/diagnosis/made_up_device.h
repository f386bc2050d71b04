#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "diagnosis/record/record.h"
#include "diagnosis/record/row.h"

namespace diagnosis {

/// A device that runs a row's kernel on buffers of bytes. It is a right one as it is made; a test
/// puts a fault in the place of a step. Offsets are bytes from the front of a buffer.
struct MadeUpDevice {
  explicit MadeUpDevice(const std::string& rowName);

  Row row;
  Device reported;  // keeps denormals, rounds to nearest

  std::function<std::size_t(int item, int lane)> placeOfA;
  std::function<std::size_t(int item, int lane)> placeOfB;
  std::function<std::ptrdiff_t(int item, int lane)> placeOfResult;  // negative: not stored
  std::function<std::int64_t(const std::uint8_t* bytes)> integer;   // an element of the row's type
  std::function<float(const std::uint8_t* bytes)> real;
  std::function<float(std::int64_t)> convert;
  std::function<float(const Bytes& a, std::size_t place)> operandA;  // `integer`, then `convert`
  std::function<float(const Bytes& b, std::size_t place)> operandB;  // `real`
  std::function<float(float a, float b, int exponent)> compute;
  std::function<std::uint32_t(float answer)> bitsOf;

  std::uint8_t fresh = 0xCD;  // each byte of a buffer of results that nobody has written into

  /// Runs the row on drawn data, filled as the suite fills it, with what an experiment changes.
  Record Run(int repetitions = 10, const Experiment& experiment = {}) const;

 private:
  float Answer(const Bytes& a, const Bytes& b, int item, int lane) const;
};

/// A float in the place of an integer of 4 bytes, and the like.
float FloatAtBytes(const std::uint8_t* bytes);
std::uint64_t NumberAt(const std::uint8_t* bytes, std::size_t width);

}  // namespace diagnosis
