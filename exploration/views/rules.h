#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace exploration {

/// What a standard says of something that programs use.
struct Rule {
  std::string_view feature;  ///< Empty: of every program.
  std::string_view says;     ///< A sentence.
  std::string_view source;   ///< "OpenCL C 1.2, 6.2.4.1".
};

/// Those that bear on a program of these features, each once.
std::vector<Rule> RulesFor(const std::vector<std::string>& features);

}  // namespace exploration
