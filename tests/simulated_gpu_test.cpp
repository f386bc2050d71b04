// The simulated GPU by itself: what it does with denormals, and that the host keeps its own
// floating-point mode and random numbers. Runs behind the loader; whether the device was asked to
// keep denormals is read from the environment, as the device itself does.

#include <CL/cl_layer.h>
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cfenv>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>
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

TEST_F(SimulatedGpu, AnswersOtherQueriesAsTheDriverDoes) {
  cl_device_fp_config config = 0x5555;
  std::size_t size = 0;
  // The size alone, and into too small a place.
  Check(clGetDeviceInfo(device, CL_DEVICE_SINGLE_FP_CONFIG, 0, nullptr, &size));
  EXPECT_EQ(size, sizeof config);
  EXPECT_EQ(
      clGetDeviceInfo(device, CL_DEVICE_SINGLE_FP_CONFIG, sizeof config - 1, &config, nullptr),
      CL_INVALID_VALUE);
  EXPECT_EQ(config, 0x5555U);
  // Another property, whose lowest bit is the one for denormals.
  Check(clGetDeviceInfo(device, CL_DEVICE_DOUBLE_FP_CONFIG, sizeof config, &config, nullptr));
  EXPECT_NE(config & CL_FP_DENORM, 0U);
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

// As the loader asks, of the library that it was told to take.
TEST_F(SimulatedGpu, TellsTheLoaderWhatItIs) {
  void* layer = dlopen(std::getenv("OPENCL_LAYERS"), RTLD_NOW);
  ASSERT_NE(layer, nullptr) << dlerror();
  const auto getLayerInfo =
      reinterpret_cast<decltype(&clGetLayerInfo)>(dlsym(layer, "clGetLayerInfo"));
  ASSERT_NE(getLayerInfo, nullptr);

  constexpr cl_layer_api_version version = CL_LAYER_API_VERSION_100;
  constexpr char name[] = "simulated GPU";
  const struct {
    cl_layer_info info;
    std::string_view answer;
  } cases[] = {
      {CL_LAYER_API_VERSION, {reinterpret_cast<const char*>(&version), sizeof version}},
      {CL_LAYER_NAME, {name, sizeof name}},
  };
  for (const auto& [info, answer] : cases) {
    SCOPED_TRACE(info);
    std::size_t size = 0;
    Check(getLayerInfo(info, 0, nullptr, &size));
    EXPECT_EQ(size, answer.size());
    std::string value(answer.size(), '?');
    EXPECT_EQ(getLayerInfo(info, size - 1, value.data(), nullptr), CL_INVALID_VALUE);
    EXPECT_EQ(value, std::string(size, '?'));
    Check(getLayerInfo(info, size, value.data(), nullptr));
    EXPECT_EQ(value, answer);
  }
  EXPECT_EQ(getLayerInfo(CL_PLATFORM_VERSION, 0, nullptr, nullptr), CL_INVALID_VALUE);
  dlclose(layer);
}

// Each call that can wait for a queue, and so have the driver execute it, does that in the device's
// mode and gives the host its own mode back.
TEST_F(SimulatedGpu, ComputesInItsOwnModeWhoeverWaits) {
  Build();
  cl_int code = CL_SUCCESS;
  cl_mem buffer = clCreateBuffer(context, CL_MEM_READ_WRITE, 4, nullptr, &code);
  Check(code);
  std::uint32_t place = 0;
  using Wait = std::function<cl_int(cl_command_queue waiting, cl_event launch)>;
  const std::pair<const char*, Wait> waits[] = {
      {"clFinish", [](auto waiting, auto) { return clFinish(waiting); }},
      {"clWaitForEvents", [](auto, auto launch) { return clWaitForEvents(1, &launch); }},
      {"clEnqueueReadBuffer",
       [&](auto waiting, auto) {
         return clEnqueueReadBuffer(waiting, buffer, CL_TRUE, 0, 4, &place, 0, nullptr, nullptr);
       }},
      {"clEnqueueWriteBuffer",
       [&](auto waiting, auto) {
         return clEnqueueWriteBuffer(waiting, buffer, CL_TRUE, 0, 4, &place, 0, nullptr, nullptr);
       }},
      {"clEnqueueMapBuffer",
       [&](auto waiting, auto) {
         clEnqueueMapBuffer(waiting, buffer, CL_TRUE, CL_MAP_READ, 0, 4, 0, nullptr, nullptr,
                            &code);
         return code;
       }},
      // The last reference to the queue, now that its event has none.
      {"clReleaseCommandQueue",
       [](auto waiting, auto launch) {
         clReleaseEvent(launch);
         return clReleaseCommandQueue(waiting);
       }},
  };
  for (const auto& [name, wait] : waits) {
    SCOPED_TRACE(name);
    std::vector<std::uint32_t> bits = {0xBF800000, 0x40E00000};
    const std::size_t count = bits.size();
    const std::size_t size = count * sizeof bits[0];
    cl_mem in = clCreateBuffer(context, CL_MEM_COPY_HOST_PTR, size, bits.data(), &code);
    cl_mem out = clCreateBuffer(context, CL_MEM_READ_WRITE, size, nullptr, &code);
    cl_kernel kernel = clCreateKernel(program, "third_of", &code);
    Check(clSetKernelArg(kernel, 0, sizeof in, &in));
    Check(clSetKernelArg(kernel, 1, sizeof out, &out));
    cl_command_queue waiting = clCreateCommandQueue(context, device, 0, &code);
    cl_event launch = nullptr;
    Check(
        clEnqueueNDRangeKernel(waiting, kernel, 1, nullptr, &count, nullptr, 0, nullptr, &launch));
    std::fesetround(FE_UPWARD);
    EXPECT_EQ(wait(waiting, launch), CL_SUCCESS);
    EXPECT_EQ(std::fegetround(), FE_UPWARD);
    std::fesetround(FE_TONEAREST);
    // By another queue, which does not execute the first.
    Check(clEnqueueReadBuffer(queue, out, CL_TRUE, 0, size, bits.data(), 0, nullptr, nullptr));
    EXPECT_EQ(bits, (std::vector<std::uint32_t>{0xBEAAAAAB, 0x40155555}));
    if (name != std::string("clReleaseCommandQueue")) {
      clReleaseEvent(launch);
      clReleaseCommandQueue(waiting);
    }
    clReleaseKernel(kernel);
    clReleaseMemObject(in);
    clReleaseMemObject(out);
  }
  clReleaseMemObject(buffer);
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
