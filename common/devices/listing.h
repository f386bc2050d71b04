#pragma once

#include <CL/cl.h>

#include <cstddef>
#include <string>
#include <vector>

// The devices behind the loader, as their drivers tell of them.

namespace devices {

/// All texts are on one line.
struct Listed {
  std::size_t platformIndex = 0;  // the platform's among the loader's
  std::size_t deviceIndex = 0;    // the device's among all of its platform
  std::string type;               // "GPU", "CPU", "accelerator", "custom"
  std::string platform;
  std::string name;
  std::string version;
  std::string driverVersion;
  std::string obstacle;  // what keeps a run from it: "not a GPU", ...; empty if nothing does
};

inline constexpr char notAGpu[] = "not a GPU";

/// Asks the drivers, in this process, which a driver can end or hang.
std::vector<Listed> Here();

/// A text that a driver gives of a platform or of a device, on one line; "?" if it gives none.
std::string TextOf(cl_platform_id platform, cl_platform_info name);
std::string TextOf(cl_device_id device, cl_device_info name);

/// A device as a line without its end: its fields with tabs between, "-" for no obstacle.
std::string LineOf(const Listed& device);

/// And back; of lines that LineOf made.
std::vector<Listed> FromLines(const std::string& lines);

}  // namespace devices
