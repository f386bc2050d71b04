// Asks the drivers behind the loader for their devices, with the drivers and layers that the
// environment names. The answer goes to standard output, on which no driver can write.
//
// probe: on which GPU device the suite would run, in one line.
//   status 0: platform, device and driver version
//   status 1: that the first platform has no GPU device, or that there is no platform
//   status 2: which layer of OPENCL_LAYERS the loader did not take
//   status 3: that the driver does not answer
// probe all: every device, a line each, with tabs between: the platform's index, the device's among
// all of its platform, type, platform, device, version, driver version, and what keeps a run from
// it: "-", "not a GPU", "no compiler" or "not available". Status 1 with a line if there is none, 3
// as above.
//
// A driver can end the process that loads it with any status. Then there is no line.

#include <CL/cl.h>
#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <string>
#include <string_view>

#include "common/devices/listing.h"
#include "common/opencl/not_taken.h"

namespace {

int answerChannel = -1;

constexpr unsigned patience = 60;  // Seconds, for what takes a driver a few.

// Where a driver hangs, nothing but this can be called.
void GiveUp(int /*signal*/) {
  constexpr char line[] = "does not answer\n";
  _exit(write(answerChannel, line, sizeof line - 1) > 0 ? 3 : 4);
}

// Leaves at once: what a driver does at the end of a process must not spoil the answer.
[[noreturn]] void Answer(int status, const std::string& lines) {
  std::string bytes = lines;
  bytes += '\n';
  const auto written = write(answerChannel, bytes.data(), bytes.size());
  _exit(written == static_cast<ssize_t>(bytes.size()) ? status : 3);
}

[[noreturn]] void AnswerAll() {
  std::string lines;
  for (const devices::Listed& device : devices::Here()) {
    if (!lines.empty()) lines += '\n';
    lines += devices::LineOf(device);
  }
  Answer(lines.empty() ? 1 : 0, lines.empty() ? "no device" : lines);
}

}  // namespace

int main(int argc, char** argv) {
  answerChannel = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3);
  const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
  dup2(nowhere, STDOUT_FILENO);
  dup2(nowhere, STDERR_FILENO);
  std::signal(SIGALRM, GiveUp);
  alarm(patience);

  if (argc == 2 && std::string_view(argv[1]) == "all") AnswerAll();

  // A copy: the loader takes the variable's own text to pieces.
  const char* names = std::getenv("OPENCL_LAYERS");
  const std::string layers(names != nullptr ? names : "");

  cl_platform_id platform = nullptr;
  if (clGetPlatformIDs(1, &platform, nullptr) != CL_SUCCESS) Answer(1, "no OpenCL platform");

  if (const std::string layer = opencl::NotTaken(layers); !layer.empty())
    Answer(2, "the OpenCL loader did not take the layer " + layer);

  cl_device_id device = nullptr;
  if (clGetDeviceIDs(platform, CL_DEVICE_TYPE_GPU, 1, &device, nullptr) != CL_SUCCESS)
    Answer(1, "no GPU device");
  Answer(0, devices::TextOf(platform, CL_PLATFORM_NAME) + ", " +
                devices::TextOf(device, CL_DEVICE_NAME) + ", driver version " +
                devices::TextOf(device, CL_DRIVER_VERSION));
}
