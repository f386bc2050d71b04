#pragma once

#include <optional>
#include <string>
#include <vector>

#include "exploration/program/program.h"

namespace exploration {

/// What is left of the program when all statements are out that use these features, and the
/// attributes that are. Nothing if some of the features cannot be taken out so, or if less than
/// half of the statements would be left, which would say nothing of the others. It need not be
/// valid.
std::optional<Program> WithoutFeatures(const Program& program,
                                       const std::vector<std::string>& features);

}  // namespace exploration
