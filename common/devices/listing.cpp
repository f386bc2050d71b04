#include "common/devices/listing.h"

#include <sstream>
#include <string_view>

namespace devices {
namespace {

template <class Handle>
std::string Text(cl_int(CL_API_CALL* query)(Handle, cl_uint, std::size_t, void*, std::size_t*),
                 Handle handle, cl_uint name) {
  std::size_t size = 0;
  if (query(handle, name, 0, nullptr, &size) != CL_SUCCESS) return "?";
  std::string text(size, '\0');
  if (query(handle, name, size, text.data(), nullptr) != CL_SUCCESS) return "?";
  text.resize(text.find_last_not_of(std::string_view(" \n\0", 3)) + 1);
  for (char& c : text)
    if (static_cast<unsigned char>(c) < ' ') c = ' ';
  return text.empty() ? "?" : text;
}

template <class Value>
Value Number(cl_device_id device, cl_device_info name) {
  Value value{};
  clGetDeviceInfo(device, name, sizeof value, &value, nullptr);
  return value;
}

struct Type {
  cl_device_type type;
  const char* name;
};
constexpr Type types[] = {{CL_DEVICE_TYPE_GPU, "GPU"},
                          {CL_DEVICE_TYPE_CPU, "CPU"},
                          {CL_DEVICE_TYPE_ACCELERATOR, "accelerator"},
                          {0, "custom"}};

const char* ObstacleOf(cl_device_id device) {
  if (Number<cl_bool>(device, CL_DEVICE_AVAILABLE) == CL_FALSE) return "not available";
  if (Number<cl_bool>(device, CL_DEVICE_COMPILER_AVAILABLE) == CL_FALSE) return "no compiler";
  const bool isGpu = (Number<cl_device_type>(device, CL_DEVICE_TYPE) & CL_DEVICE_TYPE_GPU) != 0;
  return isGpu ? "" : notAGpu;
}

Listed Told(cl_platform_id platform, cl_device_id device) {
  const auto type = Number<cl_device_type>(device, CL_DEVICE_TYPE);
  const Type* named = types;
  while (named->type != 0 && (named->type & type) == 0) ++named;
  Listed told;
  told.type = named->name;
  told.platform = TextOf(platform, CL_PLATFORM_NAME);
  told.name = TextOf(device, CL_DEVICE_NAME);
  told.version = TextOf(device, CL_DEVICE_VERSION);
  told.driverVersion = TextOf(device, CL_DRIVER_VERSION);
  told.obstacle = ObstacleOf(device);
  return told;
}

}  // namespace

std::string TextOf(cl_platform_id platform, cl_platform_info name) {
  return Text(clGetPlatformInfo, platform, name);
}

std::string TextOf(cl_device_id device, cl_device_info name) {
  return Text(clGetDeviceInfo, device, name);
}

std::vector<Listed> Here() {
  cl_uint count = 0;
  clGetPlatformIDs(0, nullptr, &count);
  std::vector<cl_platform_id> platforms(count);
  if (count > 0) clGetPlatformIDs(count, platforms.data(), nullptr);
  std::vector<Listed> listed;
  for (std::size_t i = 0; i < platforms.size(); ++i) {
    count = 0;
    if (clGetDeviceIDs(platforms[i], CL_DEVICE_TYPE_ALL, 0, nullptr, &count) != CL_SUCCESS)
      continue;
    std::vector<cl_device_id> devices(count);
    clGetDeviceIDs(platforms[i], CL_DEVICE_TYPE_ALL, count, devices.data(), nullptr);
    for (std::size_t j = 0; j < devices.size(); ++j) {
      listed.push_back(Told(platforms[i], devices[j]));
      listed.back().platformIndex = i;
      listed.back().deviceIndex = j;
    }
  }
  return listed;
}

std::string LineOf(const Listed& device) {
  std::string line =
      std::to_string(device.platformIndex) + '\t' + std::to_string(device.deviceIndex);
  for (const std::string* field :
       {&device.type, &device.platform, &device.name, &device.version, &device.driverVersion})
    line += '\t' + *field;
  return line + '\t' + (device.obstacle.empty() ? "-" : device.obstacle);
}

std::vector<Listed> FromLines(const std::string& lines) {
  std::vector<Listed> listed;
  std::istringstream stream(lines);
  for (std::string line; std::getline(stream, line);) {
    std::istringstream fields(line);
    Listed device;
    std::string number;
    std::getline(fields, number, '\t');
    device.platformIndex = std::stoul(number);
    std::getline(fields, number, '\t');
    device.deviceIndex = std::stoul(number);
    for (std::string* field : {&device.type, &device.platform, &device.name, &device.version,
                               &device.driverVersion, &device.obstacle})
      std::getline(fields, *field, '\t');
    if (device.obstacle == "-") device.obstacle.clear();
    listed.push_back(std::move(device));
  }
  return listed;
}

}  // namespace devices
