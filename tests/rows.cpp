#include "tests/rows.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <stdexcept>

#include "harness/rows.h"

namespace {

Row Describe(const std::string& name, int (*run)()) {
  Row row{};
  row.name = name;
  row.run = run;
  const std::size_t behindOperation = name.find("_union_");
  const std::size_t shape = behindOperation + std::strlen("_union_");
  row.operation = name.substr(0, behindOperation);
  row.shape = name.substr(shape, name.rfind('_') - shape);
  row.variant = name.back() - '0';
  if (row.shape == "arrays") {
    row.lanes = 4;
  } else if (row.shape == "scalar") {
    row.lanes = 1;
  } else {
    row.lanes = std::stoi(row.shape.substr(std::strlen("vector")));
  }
  row.stride = row.lanes == 16 ? 64 : 32;
  row.width = std::size_t{4} >> ((row.variant - 1) / 2);
  row.isSigned = row.variant % 2 == 1;
  row.twoInputs = row.operation == "add" || row.operation == "multiply";
  return row;
}

// The integer of `width` bytes at `bytes`, converted.
float Integer(const Row& row, const std::byte* bytes) {
  std::uint32_t value = 0;
  std::memcpy(&value, bytes, row.width);
  const auto unused = static_cast<int>(32 - 8 * row.width);
  if (row.isSigned) return static_cast<float>(static_cast<std::int32_t>(value << unused) >> unused);
  return static_cast<float>(value);
}

float Float(const std::byte* bytes) {
  float value = 0;
  std::memcpy(&value, bytes, sizeof value);
  return value;
}

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
  for (std::size_t element = 0; element < launch.globalSize; ++element) {
    for (int lane = 0; lane < row.lanes; ++lane) {
      const std::size_t at = element * row.stride;
      const auto integerLane = static_cast<std::size_t>(lane) * row.width;
      const auto floatLane = static_cast<std::size_t>(lane) * sizeof(float);
      const auto tid = static_cast<int>(element);
      float result = Compute(row, Integer(row, &launch.buffers[0][at + integerLane]),
                             row.twoInputs ? Float(&launch.buffers[1][at + floatLane]) : 0.0F,
                             row.shape == "arrays" ? lane : tid, denormals);
      if (element < 10) result = each(tid, lane, result);
      std::memcpy(&launch.buffers.back()[at + floatLane], &result, sizeof result);
    }
  }
}

}  // namespace

const std::vector<Row>& Rows() {
#define ROW(test) Describe(#test, RunTest_##test)
  static const std::vector<Row> rows = {
      ROW(add_union_arrays_1),
  };
#undef ROW
  return rows;
}

const Row& RowNamed(const std::string& name) {
  for (const Row& row : Rows()) {
    if (row.name == name) return row;
  }
  throw std::invalid_argument("no row " + name);
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
