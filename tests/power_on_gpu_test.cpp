// The rows of power, which the schedule leaves out, on the GPU behind the loader. Each must pass,
// and the table shows how far the device came from the C library's powf, in units in the last
// place, beside what the row tolerates. The linker leads the suite's transfers through here for
// that.

#include <CL/cl.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdlib>
#include <iomanip>
#include <iostream>

#include "tests/rows.h"

namespace {

const Row* running = nullptr;
std::span<const std::byte> inputs;
std::int64_t greatest = 0;

// Steps between the magnitudes of two finite floats.
std::int64_t Distance(float c, float d) {
  const auto magnitude = [](float x) {
    return static_cast<std::int64_t>(std::bit_cast<std::uint32_t>(std::fabs(x)));
  };
  return std::abs(magnitude(c) - magnitude(d));
}

void Measure(std::span<const std::byte> results) {
  for (int element = 0; element < 10; ++element) {
    const std::size_t at = static_cast<std::size_t>(element) * running->stride;
    for (int lane = 0; lane < running->lanes; ++lane) {
      const int exponent = running->shape == "arrays" ? lane : element;
      const float c = std::pow(IntegerLane(*running, inputs.subspan(at, running->stride), lane),
                               static_cast<float>(exponent));
      const float d = FloatLane(results.subspan(at, running->stride), lane);
      if (std::isfinite(c) && std::isfinite(d)) greatest = std::max(greatest, Distance(c, d));
    }
  }
}

}  // namespace

// The linker gives these names.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" {
decltype(clEnqueueWriteBuffer) __real_clEnqueueWriteBuffer, __wrap_clEnqueueWriteBuffer;
decltype(clEnqueueReadBuffer) __real_clEnqueueReadBuffer, __wrap_clEnqueueReadBuffer;

cl_int __wrap_clEnqueueWriteBuffer(cl_command_queue queue, cl_mem buffer, cl_bool blocking,
                                   size_t offset, size_t size, const void* source, cl_uint count,
                                   const cl_event* waitList, cl_event* event) {
  inputs = {static_cast<const std::byte*>(source), size};
  return __real_clEnqueueWriteBuffer(queue, buffer, blocking, offset, size, source, count, waitList,
                                     event);
}

cl_int __wrap_clEnqueueReadBuffer(cl_command_queue queue, cl_mem buffer, cl_bool blocking,
                                  size_t offset, size_t size, void* destination, cl_uint count,
                                  const cl_event* waitList, cl_event* event) {
  const cl_int code = __real_clEnqueueReadBuffer(queue, buffer, blocking, offset, size, destination,
                                                 count, waitList, event);
  if (code == CL_SUCCESS) Measure({static_cast<const std::byte*>(destination), size});
  return code;
}
}
// NOLINTEND(bugprone-reserved-identifier)

namespace {

TEST(PowerOnGpu, EveryRowPasses) {
  int rows = 0;
  std::cerr << std::left << std::setw(26) << "row"
            << "greatest distance  tolerance\n";
  for (const Row& row : Rows()) {
    if (row.operation != "power") continue;
    ++rows;
    running = &row;
    greatest = -1;
    EXPECT_EQ(row.run(), 1) << row.name;
    EXPECT_GE(greatest, 0) << row.name << " read nothing back";
    std::cerr << std::setw(26) << row.name << std::setw(19) << greatest << Tolerance(row) << "\n";
  }
  EXPECT_EQ(rows, 42);
}

}  // namespace
