#include "harness/run_test.h"

#include <cstring>
#include <iostream>

namespace {

// The bindings' own build also asks for program information and for logs after a good build; a
// driver under test sees only what the test needs.
void Build(const cl::Program& program, const std::vector<cl::Device>& devices) {
  try {
    std::vector<cl_device_id> ids;
    ids.reserve(devices.size());
    for (const cl::Device& device : devices) ids.push_back(device());
    const cl_int code = ::clBuildProgram(program(), static_cast<cl_uint>(ids.size()), ids.data(),
                                         nullptr, nullptr, nullptr);
    if (code != CL_SUCCESS) throw cl::Error(code, "clBuildProgram");
  } catch (...) {
    for (const cl::Device& device : devices) {
      const std::string log = program.getBuildInfo<CL_PROGRAM_BUILD_LOG>(device);
      std::cerr << log.c_str() << std::endl << std::endl;
    }
    throw;
  }
}

void WriteRun(int repetition, bool passed) {
  std::cout << "RUN " << repetition << ": " << (passed ? "PASSED" : "FAILED!") << std::endl;
}

}  // namespace

void Repeat(TestCase& test, Repetitions repetitions, int& result) {
  test.Setup();
  switch (repetitions.form) {
    case Repetitions::Form::cumulative:
      for (int repetition = 1; repetition <= repetitions.count; ++repetition) {
        if (!test.Run()) result = 0;
        WriteRun(repetition, result == 1);
      }
      break;
    case Repetitions::Form::perRepetition:
      for (int repetition = 1; repetition <= repetitions.count; ++repetition) {
        const bool passed = test.Run();
        if (!passed) result = 0;
        WriteRun(repetition, passed);
      }
      break;
    case Repetitions::Form::oneRun: {
      const bool passed = test.Run();
      if (!passed) result = 0;
      for (int line = 1; line <= repetitions.count; ++line) WriteRun(line, passed);
      break;
    }
  }
  test.Cleanup();
}

int RunTestOf(void (*constructAndRepeat)(const BuiltTest&), const char* const& kernelSource,
              const char* announcement, Repetitions repetitions) {
  int result = 1;
  try {
    std::vector<cl::Platform> platforms;
    cl::Platform::get(&platforms);
    if (platforms.empty()) {
      std::cerr << "Failed to find any platforms." << std::endl;
      return 0;
    }
    const cl_context_properties properties[] = {
        CL_CONTEXT_PLATFORM, reinterpret_cast<cl_context_properties>(platforms.front()()), 0};
    const cl::Context context(CL_DEVICE_TYPE_GPU, properties);
    std::vector<cl::Device> devices = context.getInfo<CL_CONTEXT_DEVICES>();
    if (kernelSource == nullptr) {
      std::cerr << "OpenCL program not found." << std::endl;
      return 0;
    }
    const cl::Program::Sources sources(1, {kernelSource, std::strlen(kernelSource)});
    const cl::Program program(context, sources);
    Build(program, devices);
    std::cout << announcement << std::endl;
    constructAndRepeat({program, context, &devices, repetitions, result});
  } catch (const cl::Error& error) {
    // By now the scope above is gone, and every OpenCL object of the test with it.
    std::cerr << "ERROR: " << error.what() << "(" << error.err() << ")" << std::endl;
  }
  return result;
}
