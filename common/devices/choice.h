#pragma once

#include <string>
#include <vector>

#include "common/devices/listing.h"

namespace devices {

/// Which device is wanted, in the words of the caller.
struct Wanted {
  std::string platform;  // a part of its name, whatever the capitals; empty for any
  std::string device;    // a part of its name, or its index in the list; empty for the first
};

/// The index in the list of the one that is wanted. Throws text::BadUse, with the candidates, where
/// several are, and text::NothingToRunOn where none is or the one cannot be used.
std::size_t IndexOf(const Wanted& wanted, const std::vector<Listed>& listed);

/// The devices behind the loader, asked for in a process of their own. Throws text::NothingToRunOn
/// if the drivers do not let it come to its end.
std::vector<Listed> Ask();

/// The list for a person, a line each.
std::string TableOf(const std::vector<Listed>& listed);

/// Makes the device the only one that programs see which are started from now on, by the layer at
/// that path. This process must not have called OpenCL.
void ShowAlone(const Listed& device, const std::string& layer);

}  // namespace devices
