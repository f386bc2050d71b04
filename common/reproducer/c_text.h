#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "common/reproducer/reproducer.h"

// What all reproducers say in C.

namespace reproducer {

/// The comment that stands first.
std::string HeadOf(const std::vector<Remark>& head);

/// `lines`, `kernelName` and `buildOptions`.
std::string TextsOf(std::string_view source, std::string_view kernel,
                    std::string_view buildOptions);

}  // namespace reproducer
