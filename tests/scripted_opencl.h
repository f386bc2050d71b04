#pragma once

// An OpenCL that stands in the loader's place and does what the test says. It defines the entry
// points that the suite may call and no others, so a suite that calls another one does not link.
//
// The device is a function of the test's over the bytes of the kernel's buffers. Queues are lazy:
// a write reads the host's memory, and a launch runs, only when the blocking read comes. Every call
// is recorded, and any call can be told to fail. Misuse (a handle that is dead or of another kind,
// a transfer out of bounds) fails the test that is running.

#include <CL/cl.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <span>
#include <string>
#include <vector>

/// What the device sees of a launch.
struct Launch {
  std::string source;
  std::string kernel;
  std::size_t globalSize;
  std::vector<std::span<std::byte>> buffers;  // by argument index
  cl_int numElements;                         // the argument behind the last buffer
};
using Device = std::function<void(const Launch&)>;

/// One machine and what was done with it.
class ScriptedOpenCl {
 public:
  // The machine.
  cl_uint platforms = 1;
  std::string platformVersion = "OpenCL 1.2 scripted";
  cl_uint devices = 1;
  cl_device_fp_config singleFpConfig = CL_FP_ROUND_TO_NEAREST | CL_FP_DENORM;
  Device device = [](const Launch&) {};
  std::vector<std::string> buildLogs;  // by device; a device without one has an empty log

  /// Tells the `occurrence`th call of `entryPoint`, counted from 1, to fail with `code` and without
  /// effect. 0 stands for every call.
  void Fail(const std::string& entryPoint, cl_int code, int occurrence = 1);

  /// Tells every call of `entryPoint` to throw std::bad_alloc, as no OpenCL call does.
  void Throw(const std::string& entryPoint);

  // What was done.
  std::vector<std::string> calls;     // the name of each call and what matters of its arguments
  std::vector<std::string> sources;   // of each program created
  std::vector<Launch> launches;       // spans of buffers as they were; the bytes go with the buffer
  std::vector<const void*> hostEnds;  // of each write and read

  /// How often `entryPoint` was called.
  int Count(const std::string& entryPoint) const;

  /// The calls other than retains and releases.
  std::vector<std::string> WorkCalls() const;

  // For the entry points alone: counts and records a call, and gives the code that it must return.
  cl_int Enter(const std::string& entryPoint, const std::string& arguments = "");

 private:
  std::map<std::string, int> counts_;
  std::map<std::string, std::map<int, cl_int>> failures_;
  std::set<std::string> throwing_;
};

/// The machine that the entry points act on.
ScriptedOpenCl& Machine();

/// The references to OpenCL objects, of all kinds together, that nobody has released.
int LiveObjects();

/// Puts a fresh machine in the old one's place. Objects of the old one are gone.
void ResetMachine();
