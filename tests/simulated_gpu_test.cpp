// The simulated GPU by itself: what it does with denormals, and that the host keeps its own
// floating-point mode and random numbers. Runs behind the loader; whether the device was asked to
// keep denormals is read from the environment, as the device itself does.

#include <CL/cl.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cfenv>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <string>
#include <vector>

namespace {

constexpr char source[] =
    "__kernel void twice(__global const float* a, __global float* c) {"
    "  int i = get_global_id(0);"
    "  c[i] = a[i] + a[i];"
    "}"
    "__kernel void half_of(__global const float* a, __global float* c) {"
    "  int i = get_global_id(0);"
    "  c[i] = a[i] * 0.5f;"
    "}"
    "__kernel void third_of(__global const float* a, __global float* c) {"
    "  int i = get_global_id(0);"
    "  c[i] = a[i] / 3.0f;"
    "}";

class SimulatedGpu : public testing::Test {
 protected:
  SimulatedGpu() {
    Check(clGetPlatformIDs(1, &platform, nullptr));
    Check(clGetDeviceIDs(platform, CL_DEVICE_TYPE_GPU, 1, &device, nullptr));
    cl_int code = CL_SUCCESS;
    context = clCreateContext(nullptr, 1, &device, nullptr, nullptr, &code);
    Check(code);
    queue = clCreateCommandQueue(context, device, 0, &code);
    Check(code);
    const char* strings[] = {source};
    program = clCreateProgramWithSource(context, 1, strings, nullptr, &code);
    Check(code);
  }

  ~SimulatedGpu() override {
    clReleaseProgram(program);
    clReleaseCommandQueue(queue);
    clReleaseContext(context);
  }

  void Build() { Check(clBuildProgram(program, 1, &device, nullptr, nullptr, nullptr)); }

  // Whether the host computes with denormals, in the rounding mode that it had.
  static void CheckHost() {
    volatile float smallest = std::bit_cast<float>(1U);
    EXPECT_EQ(std::bit_cast<std::uint32_t>(smallest * 1.0F), 1U);
    volatile float normal = std::bit_cast<float>(0x00800000U);
    EXPECT_EQ(std::bit_cast<std::uint32_t>(normal * 0.5F), 0x00400000U);
    EXPECT_EQ(std::fegetround(), hostRounding);
  }

  static inline int hostRounding = FE_TONEAREST;

  // The device's bits for these bits.
  std::vector<std::uint32_t> Run(const char* name, std::vector<std::uint32_t> bits, bool finish) {
    cl_int code = CL_SUCCESS;
    cl_kernel kernel = clCreateKernel(program, name, &code);
    Check(code);
    const std::size_t size = bits.size() * sizeof bits[0];
    cl_mem in = clCreateBuffer(context, CL_MEM_READ_ONLY, size, nullptr, &code);
    cl_mem out = clCreateBuffer(context, CL_MEM_WRITE_ONLY, size, nullptr, &code);
    Check(clSetKernelArg(kernel, 0, sizeof in, &in));
    Check(clSetKernelArg(kernel, 1, sizeof out, &out));
    const std::size_t count = bits.size();
    Check(clEnqueueWriteBuffer(queue, in, CL_FALSE, 0, size, bits.data(), 0, nullptr, nullptr));
    CheckHost();
    Check(clEnqueueNDRangeKernel(queue, kernel, 1, nullptr, &count, nullptr, 0, nullptr, nullptr));
    CheckHost();
    if (finish) Check(clFinish(queue));
    std::vector<std::uint32_t> results(count);
    Check(clEnqueueReadBuffer(queue, out, CL_TRUE, 0, size, results.data(), 0, nullptr, nullptr));
    CheckHost();
    clReleaseMemObject(in);
    clReleaseMemObject(out);
    clReleaseKernel(kernel);
    return results;
  }

  static void Check(cl_int code) { ASSERT_EQ(code, CL_SUCCESS); }

  static bool KeepsDenormals() {
    const char* keep = std::getenv("SIMULATED_GPU_KEEP_DENORMALS");
    return keep != nullptr && *keep != '\0';
  }

  cl_platform_id platform = nullptr;
  cl_device_id device = nullptr;
  cl_context context = nullptr;
  cl_command_queue queue = nullptr;
  cl_program program = nullptr;
};

TEST_F(SimulatedGpu, SaysWhetherItHasDenormals) {
  cl_device_fp_config config = 0;
  std::size_t size = 0;
  Check(clGetDeviceInfo(device, CL_DEVICE_SINGLE_FP_CONFIG, sizeof config, &config, &size));
  EXPECT_EQ(size, sizeof config);
  EXPECT_EQ((config & CL_FP_DENORM) != 0, KeepsDenormals());
  EXPECT_NE(config & CL_FP_ROUND_TO_NEAREST, 0U);
}

TEST_F(SimulatedGpu, TakesDenormalsAsZeroAndFlushesThemUnlessItKeepsThem) {
  Build();
  const bool keep = KeepsDenormals();
  for (const bool finish : {false, true}) {
    EXPECT_EQ(Run("twice", {0x00000001, 0x807FFFFF, 0x00800000, 0x3F800000}, finish),
              (std::vector<std::uint32_t>{keep ? 0x00000002U : 0U, keep ? 0x80FFFFFEU : 0x80000000U,
                                          0x01000000, 0x40000000}));
    EXPECT_EQ(Run("half_of", {0x00800000, 0x80FFFFFE, 0x40000000}, finish),
              (std::vector<std::uint32_t>{keep ? 0x00400000U : 0U, keep ? 0x807FFFFFU : 0x80000000U,
                                          0x3F800000}));
  }
}

TEST_F(SimulatedGpu, RoundsToNearestWhateverTheHostDoes) {
  Build();
  for (const int mode : {FE_TONEAREST, FE_TOWARDZERO, FE_UPWARD}) {
    hostRounding = mode;
    std::fesetround(mode);
    EXPECT_EQ(Run("third_of", {0x3F800000, 0xBF800000, 0x40E00000}, true),
              (std::vector<std::uint32_t>{0x3EAAAAAB, 0xBEAAAAAB, 0x40155555}));
  }
  hostRounding = FE_TONEAREST;
  std::fesetround(FE_TONEAREST);
}

TEST_F(SimulatedGpu, LeavesTheHostItsRandomNumbers) {
  const auto draw = [](std::vector<int>& numbers, int count) {
    std::generate_n(std::back_inserter(numbers), count, [] { return std::rand(); });
  };
  std::vector<int> undisturbed;
  srandom(1);
  draw(undisturbed, 100);

  std::vector<int> numbers;
  srandom(1);
  draw(numbers, 40);
  Build();
  draw(numbers, 30);
  Check(clCompileProgram(program, 1, &device, nullptr, 0, nullptr, nullptr, nullptr, nullptr));
  cl_int code = CL_SUCCESS;
  cl_program linked =
      clLinkProgram(context, 1, &device, nullptr, 1, &program, nullptr, nullptr, &code);
  Check(code);
  clReleaseProgram(linked);
  Build();
  Run("twice", {0x3F800000}, true);
  draw(numbers, 30);
  EXPECT_EQ(numbers, undisturbed);
}

}  // namespace
