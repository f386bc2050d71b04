#include "tests/devices.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstring>
#include <iostream>
#include <sstream>

namespace {

float Flushed(float x) { return std::fabs(x) < FLT_MIN ? std::copysign(0.0F, x) : x; }

float Compute(const Row& row, float a, float b, int exponent, Denormals denormals) {
  const bool flush = denormals == Denormals::flushed;
  if (flush) b = Flushed(b);
  float result = a;
  if (row.operation == "add") result = a + b;
  if (row.operation == "multiply") result = a * b;
  if (row.operation == "floor") result = std::floor(a);
  if (row.operation == "power") result = std::pow(a, static_cast<float>(exponent));
  return flush ? Flushed(result) : result;
}

using Each = std::function<float(int element, int lane, float right)>;

void ComputeAll(const Row& row, Denormals denormals, const Launch& launch, const Each& each) {
  ASSERT_EQ(launch.buffers.size(), row.twoInputs ? 3U : 2U);
  ASSERT_EQ(launch.numElements, 10);
  for (const auto& buffer : launch.buffers)
    ASSERT_EQ(buffer.size(), launch.globalSize * row.stride);
  // Only the first ten elements count, so the others hold what no reference is near.
  const std::span<std::byte> results = launch.buffers.back();
  std::fill(results.begin(), results.end(), std::byte{0x42});
  for (int element = 0; element < 10; ++element) {
    const std::size_t at = static_cast<std::size_t>(element) * row.stride;
    for (int lane = 0; lane < row.lanes; ++lane) {
      const float a = IntegerLane(row, launch.buffers[0].subspan(at, row.stride), lane);
      const float b =
          row.twoInputs ? FloatLane(launch.buffers[1].subspan(at, row.stride), lane) : 0;
      const int exponent = row.shape == "arrays" ? lane : element;
      const float result = each(element, lane, Compute(row, a, b, exponent, denormals));
      std::memcpy(&results[at + static_cast<std::size_t>(lane) * sizeof result], &result,
                  sizeof result);
    }
  }
}

}  // namespace

std::string MismatchLine(const Row& row, float x, int element, float c, float d) {
  std::ostringstream line;
  const bool vector = row.shape.starts_with("vector");
  if (row.operation == "power") {
    const bool tight = row.shape == "vector4" || row.shape == "vector8";
    line << (tight ? "  x:" : "  x: ") << x << (tight ? "  y:" : "  y: ") << element;
  }
  line << (row.operation == "copy" || (row.operation == "floor" && vector) ? "c:" : "  c:");
  line << c << " ocl:" << d;
  return line.str();
}

const std::map<std::string, const Row*>& RowsByText() {
  static const auto rowsByText = [] {
    std::map<std::string, const Row*> texts;
    for (const Row& row : Rows()) {
      ResetMachine();
      Machine().Fail("clCreateKernel", CL_INVALID_KERNEL_NAME);
      std::ostringstream ignored;
      std::streambuf* out = std::cout.rdbuf(ignored.rdbuf());
      std::streambuf* err = std::cerr.rdbuf(ignored.rdbuf());
      row.run();
      std::cout.rdbuf(out);
      std::cerr.rdbuf(err);
      texts[Machine().sources.at(0)] = &row;
    }
    ResetMachine();
    return texts;
  }();
  return rowsByText;
}

Device DeviceForAll(Denormals denormals) {
  const auto& rows = RowsByText();
  return [&rows, denormals](const Launch& launch) {
    const Device device = DeviceFor(*rows.at(launch.source), denormals);
    device(launch);
  };
}

Device DeviceFor(const Row& row, Denormals denormals) {
  return [&row, denormals](const Launch& launch) {
    ComputeAll(row, denormals, launch, [](int, int, float right) { return right; });
  };
}

Device DeviceFor(
    const Row& row,
    const std::function<float(int launch, int element, int lane, float right)>& wrong) {
  return [&row, wrong](const Launch& launch) {
    const int number = static_cast<int>(Machine().launches.size()) + 1;
    ComputeAll(row, Denormals::flushed, launch, [&](int element, int lane, float right) {
      return wrong(number, element, lane, right);
    });
  };
}
