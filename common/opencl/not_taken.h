#pragma once

#include <dlfcn.h>

#include <sstream>
#include <string>

namespace opencl {

/// The first of the layers that `names` (OPENCL_LAYERS, before OpenCL was first called) asks for
/// and the loader, once it has answered a call, has not taken: it goes on in silence without one
/// that it cannot take, or any if it knows none. Empty if it has taken them all.
inline std::string NotTaken(const std::string& names) {
  std::istringstream layers(names);
  for (std::string layer; std::getline(layers, layer, ':');)
    if (!layer.empty() && dlopen(layer.c_str(), RTLD_LAZY | RTLD_NOLOAD) == nullptr) return layer;
  return "";
}

}  // namespace opencl
